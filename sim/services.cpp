#include "services.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <termios.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "journal.h"

namespace sim {

static constexpr char serial_device[] = "/dev/ttyS1";
static constexpr int relay_port = 5449;
static constexpr int status_port = 4445;
static constexpr size_t edid_bytes = 256;

int open_serial_line() {
    const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    char name[64];
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0 ||
        ptsname_r(master, name, sizeof name) != 0) {
        return -1;
    }
    // The slave end stays open, or the line would hang up each time a shell closes it.
    const int slave = open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios settings = {};
    if (slave < 0 || tcgetattr(slave, &settings) != 0) {
        return -1;
    }
    cfmakeraw(&settings);
    if (tcsetattr(slave, TCSANOW, &settings) != 0 || symlink(name, serial_device) != 0) {
        return -1;
    }
    return master;
}

static int listen_on_loopback(int port) {
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener, 64) != 0) {
        perror("simulated unit: loopback service");
        _exit(1);
    }
    return listener;
}

static long now_ms() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000L + now.tv_nsec / 1000000L;
}

// An answer, or a piece of one, that is on its way to the relay's clients.
struct Piece {
    long due_ms;
    std::string bytes;
    bool hang_up;
};

struct Microcontroller {
    int serial = -1;
    int slave = -1;
    int relay = -1;
    std::vector<int> clients;
    std::string input;
    std::string reported_partial;
    std::string mode = "normal";
    long answer_ms = 0;
    bool edid_follows = false;
    std::deque<Piece> pieces;
};

// What the firmware's console prints behind a command: an echo with terminal bytes in it, the end
// mark and its line end, and a prompt.
static constexpr std::string_view end_mark = "printf \":mcu_end\" | nc -w 3 127.0.0.1 4445";
static constexpr std::string_view prompt = "\r\nmcu:~# ";

static void queue_answer(Microcontroller& mcu, const std::string& command) {
    const long due = now_ms() + mcu.answer_ms;
    const std::string echo = command + "\r\n\x1b[0m\xfe ok\r\n";
    if (mcu.mode == "hangup") {
        mcu.pieces.push_back({due, "", true});
    } else if (mcu.mode == "split") {
        // Cut inside the echo, inside the mark, between CR and LF and inside the prompt.
        const std::string answer = echo + std::string(end_mark) + std::string(prompt);
        const size_t mark = echo.size();
        const size_t cuts[] = {0, 1, mark + 20, mark + 43, mark + 46, answer.size()};
        for (size_t i = 0; i + 1 < std::size(cuts); i++) {
            mcu.pieces.push_back({due + 15 * static_cast<long>(i),
                                  answer.substr(cuts[i], cuts[i + 1] - cuts[i]), false});
        }
    } else if (mcu.mode != "silent") {
        mcu.pieces.push_back({due, echo + std::string(end_mark) + std::string(prompt), false});
    }
}

static void accept_clients(Microcontroller& mcu) {
    pollfd waiting = {mcu.relay, POLLIN, 0};
    while (mcu.relay >= 0 && poll(&waiting, 1, 0) > 0) {
        const int client = accept4(mcu.relay, nullptr, nullptr, SOCK_CLOEXEC);
        if (client < 0) {
            break;
        }
        mcu.clients.push_back(client);
    }
}

static void close_clients(Microcontroller& mcu) {
    for (const int client : mcu.clients) {
        close(client);
    }
    mcu.clients.clear();
}

static void send_due_pieces(Microcontroller& mcu) {
    while (!mcu.pieces.empty() && mcu.pieces.front().due_ms <= now_ms()) {
        const Piece piece = mcu.pieces.front();
        mcu.pieces.pop_front();
        accept_clients(mcu);
        if (piece.hang_up) {
            close_clients(mcu);
        }
        std::erase_if(mcu.clients, [&](int client) {
            const bool gone =
                send(client, piece.bytes.data(), piece.bytes.size(), MSG_NOSIGNAL) < 0;
            if (gone) {
                close(client);
            }
            return gone;
        });
    }
}

static void take_input(Microcontroller& mcu, std::string_view bytes) {
    mcu.input += bytes;
    for (;;) {
        if (mcu.edid_follows) {
            if (mcu.input.size() < edid_bytes) {
                return;
            }
            std::string digits;
            for (size_t i = 0; i < edid_bytes; i++) {
                char pair[3];
                snprintf(pair, sizeof pair, "%02x", static_cast<unsigned char>(mcu.input[i]));
                digits += pair;
            }
            append_entry("mcu-edid", digits);
            mcu.input.erase(0, edid_bytes);
            mcu.edid_follows = false;
            continue;
        }
        const size_t end = mcu.input.find('\n');
        if (end == mcu.input.npos) {
            return;
        }
        const std::string command = mcu.input.substr(0, end);
        mcu.input.erase(0, end + 1);
        append_entry("mcu", escape_bytes(command));
        mcu.edid_follows = command == "setuseredid";
        queue_answer(mcu, command);
    }
}

// Takes everything that was written to the line before this call. What is written to a terminal
// becomes readable at its far end only a little later, so a mark is sent through the line itself.
static void drain(Microcontroller& mcu) {
    static unsigned count = 0;
    char code[48];
    const int size = snprintf(code, sizeof code, "\x7f\xff|drain %u|\xff\x7f", count++);
    const std::string_view mark(code, static_cast<size_t>(size));
    std::string received;
    size_t written = 0;
    for (size_t found = received.npos; found == received.npos;) {
        if (written < mark.size()) {
            const ssize_t sent = write(mcu.slave, mark.data() + written, mark.size() - written);
            written += sent > 0 ? static_cast<size_t>(sent) : 0;
        }
        pollfd line = {mcu.serial, POLLIN, 0};
        if (poll(&line, 1, 2000) <= 0) {
            break;
        }
        char piece[4096];
        const ssize_t got = read(mcu.serial, piece, sizeof piece);
        if (got <= 0) {
            break;
        }
        received.append(piece, static_cast<size_t>(got));
        found = received.find(mark);
        if (found != received.npos) {
            received.erase(found, mark.size());
        }
    }
    take_input(mcu, received);
}

static void set_mode(Microcontroller& mcu, const std::string& mode, long answer_ms) {
    mcu.mode = mode;
    mcu.answer_ms = answer_ms;
    if (mode == "absent" && mcu.relay >= 0) {
        close(mcu.relay);
        mcu.relay = -1;
        close_clients(mcu);
    } else if (mode != "absent" && mcu.relay < 0) {
        mcu.relay = listen_on_loopback(relay_port);
    }
}

static void obey(Microcontroller& mcu, const std::string& request) {
    char mode[16];
    long answer_ms = 0;
    if (request.starts_with("drain")) {
        drain(mcu);
    } else if (request.starts_with("settle")) {
        drain(mcu);
        if (!mcu.input.empty() && mcu.input != mcu.reported_partial) {
            append_entry("mcu-partial", escape_bytes(mcu.input));
        }
        mcu.reported_partial = mcu.input;
    } else if (request.starts_with("reset")) {
        drain(mcu);
        mcu.input.clear();
        mcu.reported_partial.clear();
        mcu.edid_follows = false;
        mcu.pieces.clear();
        set_mode(mcu, "normal", 0);
    } else if (sscanf(request.c_str(), "mode %15s %ld", mode, &answer_ms) == 2) {
        set_mode(mcu, mode, answer_ms);
    }
}

static int open_command_socket() {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    snprintf(address.sun_path, sizeof address.sun_path, "%s/mcu.sock", state_folder);
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener, 64) != 0) {
        perror("simulated unit: mcu.sock");
        _exit(1);
    }
    return listener;
}

void run_microcontroller(int serial) {
    Microcontroller mcu;
    mcu.serial = serial;
    mcu.slave = open(serial_device, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    mcu.relay = listen_on_loopback(relay_port);
    const int commands = open_command_socket();
    for (;;) {
        int wait_ms = -1;
        if (!mcu.pieces.empty()) {
            wait_ms = static_cast<int>(std::max(0L, mcu.pieces.front().due_ms - now_ms()));
        }
        pollfd events[] = {{mcu.serial, POLLIN, 0}, {mcu.relay, POLLIN, 0}, {commands, POLLIN, 0}};
        if (poll(events, std::size(events), wait_ms) < 0 && errno != EINTR) {
            _exit(1);
        }
        if (events[0].revents & POLLIN) {
            char piece[4096];
            const ssize_t got = read(mcu.serial, piece, sizeof piece);
            take_input(mcu, {piece, static_cast<size_t>(std::max<ssize_t>(got, 0))});
        }
        accept_clients(mcu);
        if (events[2].revents & POLLIN) {
            const int peer = accept4(commands, nullptr, nullptr, SOCK_CLOEXEC);
            char request[64];
            const ssize_t got = read(peer, request, sizeof request - 1);
            obey(mcu, std::string(request, static_cast<size_t>(std::max<ssize_t>(got, 0))));
            close(peer);
        }
        send_due_pieces(mcu);
    }
}

void run_status_service() {
    const int listener = listen_on_loopback(status_port);
    for (;;) {
        const int client = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (client < 0) {
            continue;
        }
        std::string line;
        char piece[512];
        ssize_t got = 0;
        while (line.find('\n') == line.npos && (got = read(client, piece, sizeof piece)) > 0) {
            line.append(piece, static_cast<size_t>(got));
        }
        if (!line.empty()) {
            append_entry("status", escape_bytes(line.substr(0, line.find('\n'))));
        }
        close(client);
    }
}

}  // namespace sim
