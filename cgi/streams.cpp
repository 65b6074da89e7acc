#include "cgi/streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

ReplyStream put_reply_aside() {
    const ReplyStream reply = {fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)};
    const int nowhere = open("/dev/null", O_RDWR);
    if (nowhere >= 0) {
        dup2(nowhere, STDIN_FILENO);
        dup2(nowhere, STDOUT_FILENO);
        dup2(nowhere, STDERR_FILENO);
    }
    if (nowhere > STDERR_FILENO) {
        close(nowhere);
    }
    return reply;
}

void take_reply_up(ReplyStream reply) {
    if (reply.descriptor >= 0) {
        dup2(reply.descriptor, STDOUT_FILENO);
        close(reply.descriptor);
    }
}

static void go_on(int) {}

void outlast_the_caller() {
    // Handlers, since an ignored signal would stay ignored in every child.
    struct sigaction action = {};
    action.sa_handler = go_on;
    action.sa_flags = SA_RESTART;
    sigaction(SIGHUP, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGPIPE, &action, nullptr);
}
