// As much of a unit as a measurement needs, and as cheap as it can be, so that what is measured is
// the gateway: one static program that is every tool of the appliance, by the name it is called by.
// Tools do nothing, but for `astparam g`, which answers. As bench_unit it is what listens: the
// microcontroller behind /dev/ttyS1 and its answer relay (TCP 5449), and the status service (TCP
// 4445); it says so by creating the file that it is given, and serves until it is ended.
#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <vector>

static constexpr char serial_device[] = "/dev/ttyS1";
static constexpr char answer[] = "ok\r\nprintf \":mcu_end\" | nc -w 3 127.0.0.1 4445\r\nmcu:~# ";

static int listen_on(uint16_t port) {
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener, 64) != 0) {
        perror("bench_unit");
        _exit(1);
    }
    return listener;
}

// Reads what has come; false at its end.
static bool take(int from, char* bytes, size_t size, ssize_t* got) {
    *got = read(from, bytes, size);
    return *got > 0;
}

static void answer_lines(const char* bytes, ssize_t size, const std::vector<pollfd>& all) {
    for (ssize_t i = 0; i < size; i++) {
        if (bytes[i] != '\n') {
            continue;
        }
        // A client that has gone is noticed by its end of file.
        for (size_t client = 3; client < all.size(); client++) {
            send(all[client].fd, answer, sizeof answer - 1, MSG_NOSIGNAL);
        }
    }
}

static int serve(const char* ready) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int serial = open(serial_device, O_RDWR | O_CLOEXEC);
    // First what is listened to, then the connections. Whoever connects to either service is sent
    // the answers; the senders of progress messages do not read them.
    std::vector<pollfd> all = {
        {serial, POLLIN, 0}, {listen_on(5449), POLLIN, 0}, {listen_on(4445), POLLIN, 0}};
    close(open(ready, O_WRONLY | O_CREAT, 0666));
    while (poll(all.data(), all.size(), -1) > 0) {
        char bytes[4096];
        ssize_t got = 0;
        // Connections first, so that a command's sender is there when its answer goes out.
        for (size_t i = 1; i < 3; i++) {
            if (all[i].revents != 0) {
                all.push_back({accept(all[i].fd, nullptr, nullptr), POLLIN, 0});
            }
        }
        if (all[0].revents != 0 && take(serial, bytes, sizeof bytes, &got)) {
            answer_lines(bytes, got, all);
        }
        for (size_t i = all.size() - 1; i >= 3; i--) {
            if (all[i].revents != 0 && !take(all[i].fd, bytes, sizeof bytes, &got)) {
                close(all[i].fd);
                all.erase(all.begin() + static_cast<ptrdiff_t>(i));
            }
        }
    }
    return 1;
}

int main(int count, char** arguments) {
    const char* slash = strrchr(arguments[0], '/');
    const char* name = slash == nullptr ? arguments[0] : slash + 1;
    if (strcmp(name, "bench_unit") == 0) {
        return count == 2 ? serve(arguments[1]) : 2;
    }
    if (strcmp(name, "astparam") == 0 && count > 2 && strcmp(arguments[1], "g") == 0) {
        const bool is_mac = strcmp(arguments[2], "ethaddr") == 0;
        const char* line = is_mac ? "00:11:22:33:44:55\n" : "parameter not defined\n";
        return write(STDOUT_FILENO, line, strlen(line)) > 0 ? 0 : 1;
    }
    // As the shell: a script that comes on standard input is read, as its writer expects.
    char script[65536];
    while (strcmp(name, "sh") == 0 && count == 1 && read(STDIN_FILENO, script, sizeof script) > 0) {
    }
    return 0;
}
