#include "cgi/streams.h"

#include <fcntl.h>
#include <unistd.h>

ReplyStream put_reply_aside() {
    const ReplyStream reply = {fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)};
    // The request has been read: its descriptor is free for what follows.
    close(STDIN_FILENO);
    int nowhere = open("/dev/null", O_RDWR);
    if (nowhere < 0) {
        nowhere = open("/", O_RDONLY);
    }
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
    // A caller who reads slowly is waited for.
    const int flags = fcntl(STDOUT_FILENO, F_GETFL);
    if (flags >= 0 && (flags & O_NONBLOCK) != 0) {
        fcntl(STDOUT_FILENO, F_SETFL, flags & ~O_NONBLOCK);
    }
}
