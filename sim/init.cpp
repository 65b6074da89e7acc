#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "journal.h"
#include "services.h"
#include "settle.h"
#include "store.h"
#include "tools.h"

namespace sim {

static constexpr char unit_tool[] = "/sim/unit_tool";

// First descriptor that a web server takes a listening socket from.
static constexpr int first_handed_descriptor = 3;

static void run_and_wait(const std::vector<const char*>& command) {
    const pid_t child = fork();
    if (child == 0) {
        execv(command[0], const_cast<char* const*>(command.data()));
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
}

// BusyBox's applets, with the journaling shell in the place of its own, and the appliance's tools.
static void install_programs() {
    run_and_wait({"/bin/busybox", "--install", "-s", "/bin", nullptr});
    unlink("/bin/sh");
    if (symlink(unit_tool, "/bin/sh") != 0) {
        perror("simulated unit: /bin/sh");
        _exit(1);
    }
    link_tools("/unit/bin", unit_tool);
}

static bool prepare_files(const char* parameters) {
    write_file("/run/sim/journal", "");
    write_file("/sys/devices/platform/videoip/ull", "0\n");
    if (!load_initial_parameters(parameters)) {
        return false;
    }
    note_files(true);
    return true;
}

static constexpr uint16_t status_port = 4445;

static bool is_listening(uint16_t port) {
    const int channel = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const bool answers =
        connect(channel, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    close(channel);
    return answers;
}

// Starts the web server, which takes the listening socket that is handed to it. Without one
// (listener is negative) it opens a port of its own.
static pid_t start_web_server(int listener, char** command) {
    const pid_t child = fork();
    if (child == 0) {
        if (listener >= 0) {
            dup2(listener, first_handed_descriptor);
            setenv("LISTEN_FDS", "1", 1);
            setenv("LISTEN_PID", std::to_string(getpid()).c_str(), 1);
        }
        execv(command[0], command);
        perror(command[0]);
        _exit(127);
    }
    return child;
}

// Says over the control socket that the unit is up, by the name of the namespace that its processes
// are in, and hands over its root folder, through which the launcher reads and writes its files.
static bool report_ready(int control) {
    const int root = open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    char text[64];
    const ssize_t size = readlink("/proc/self/ns/pid", text, sizeof text);
    if (root < 0 || size < 0) {
        return false;
    }
    iovec part = {text, static_cast<size_t>(size)};
    alignas(cmsghdr) char space[CMSG_SPACE(sizeof root)] = {};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = space;
    message.msg_controllen = sizeof space;
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof root);
    memcpy(CMSG_DATA(header), &root, sizeof root);
    const bool sent = sendmsg(control, &message, MSG_NOSIGNAL) > 0;
    close(root);
    return sent;
}

// A program that the launcher asked for: its arguments and environment, and the descriptors for its
// input, output and error and for the text that tells how it ended.
static constexpr int request_descriptors = 4;

struct Request {
    std::vector<char*> arguments;
    std::vector<char*> environment;
    int descriptors[request_descriptors];
};

[[noreturn]] static void run_request(const Request& request) {
    const int status_pipe = request.descriptors[3];
    const pid_t child = fork();
    if (child == 0) {
        for (int i = 0; i < 3; i++) {
            dup2(request.descriptors[i], i);
        }
        execve(request.arguments[0], request.arguments.data(), request.environment.data());
        _exit(127);
    }
    for (int i = 0; i < 3; i++) {
        close(request.descriptors[i]);
    }
    int status = 0;
    waitpid(child, &status, 0);
    char text[32];
    const int size = WIFSIGNALED(status) ? snprintf(text, sizeof text, "-%d", WTERMSIG(status))
                                         : snprintf(text, sizeof text, "%d", WEXITSTATUS(status));
    const ssize_t told = write(status_pipe, text, static_cast<size_t>(size));
    _exit(told == size ? 0 : 1);
}

// Takes one request: the count of arguments, the arguments and the environment, each ended by NUL.
// False when the launcher is gone.
static bool serve_request(int control) {
    static char text[1 << 18];
    iovec part = {text, sizeof text - 1};
    Request request = {};
    alignas(cmsghdr) char space[CMSG_SPACE(sizeof request.descriptors)] = {};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = space;
    message.msg_controllen = sizeof space;
    const ssize_t size = recvmsg(control, &message, MSG_CMSG_CLOEXEC);
    const cmsghdr* header = CMSG_FIRSTHDR(&message);
    if (size <= 0) {
        return false;
    }
    if (header == nullptr || header->cmsg_len != CMSG_LEN(sizeof request.descriptors)) {
        return true;
    }
    memcpy(request.descriptors, CMSG_DATA(header), sizeof request.descriptors);
    text[size] = '\0';
    const size_t argument_count = static_cast<size_t>(atoi(text));
    for (char* at = text + strlen(text) + 1; at < text + size; at += strlen(at) + 1) {
        const bool is_argument = request.arguments.size() < argument_count;
        (is_argument ? request.arguments : request.environment).push_back(at);
    }
    request.arguments.push_back(nullptr);
    request.environment.push_back(nullptr);
    if (fork() == 0) {
        run_request(request);
    }
    for (const int descriptor : request.descriptors) {
        close(descriptor);
    }
    return true;
}

// Kills whatever still runs in the unit and waits for its end, so that with the launcher's wait for
// this program the web server's port is free again.
static void end_everything() {
    kill(-1, SIGKILL);
    while (waitpid(-1, nullptr, 0) > 0) {
    }
}

int run_unit_init(int argc, char** argv) {
    if (argc < 6) {
        fprintf(stderr, "usage: unit_init PARAMETERS CONTROL LISTENER PORT SERVER [ARGUMENT]...\n");
        return 2;
    }
    const int control = atoi(argv[2]);
    const int listener = atoi(argv[3]);
    const uint16_t port = static_cast<uint16_t>(atoi(argv[4]));
    fcntl(control, F_SETFD, FD_CLOEXEC);
    fcntl(listener, F_SETFD, FD_CLOEXEC);
    // Programs whose parent has ended are this one's to wait for.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    umask(0);
    install_programs();
    const int serial = open_serial_line();
    if (serial < 0 || !prepare_files(argv[1])) {
        perror("simulated unit");
        return 1;
    }
    const pid_t microcontroller = fork();
    if (microcontroller == 0) {
        run_microcontroller(serial);
    }
    const pid_t status_service = fork();
    if (status_service == 0) {
        run_status_service();
    }
    close(serial);
    const pid_t server = start_web_server(listener, argv + 5);
    close(listener);
    for (int tries = 0; !tell_microcontroller("drain") || !is_listening(status_port) ||
                        (listener < 0 && !is_listening(port));
         tries++) {
        if (tries == 5000) {
            return 1;
        }
        usleep(1000);
    }
    if (!report_ready(control)) {
        return 1;
    }
    for (;;) {
        pollfd request = {control, POLLIN, 0};
        if (poll(&request, 1, 200) > 0 && !serve_request(control)) {
            end_everything();
            return 0;
        }
        int status = 0;
        for (pid_t ended = 0; (ended = waitpid(-1, &status, WNOHANG)) > 0;) {
            if (ended == server || ended == microcontroller || ended == status_service) {
                fprintf(stderr, "simulated unit: a service has ended (status %d)\n", status);
                return 1;
            }
        }
    }
}

}  // namespace sim
