#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "device/answer.h"
#include "device/signals.h"
#include "device/unit.h"

static constexpr char relay_address[] = "127.0.0.1";
static constexpr uint16_t relay_port = 5449;
static constexpr time_t answer_timeout_seconds = 10;
static constexpr size_t longest_command = 1023;
static constexpr ssize_t longest_answer = INT32_MAX;

// A connection to the relay that hands on what the microcontroller answers, or -1.
static int connect_to_relay() {
    const int relay = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (relay < 0) {
        return -1;
    }
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(relay_port);
    if (inet_pton(AF_INET, relay_address, &address.sin_addr) != 1 ||
        connect(relay, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        close(relay);
        return -1;
    }
    return relay;
}

// Reads until the answer is complete, the relay closes, nothing comes within the time limit, or
// more has come than any answer can be.
static void wait_for_answer(int relay) {
    AnswerProgress answer = {};
    char piece[1023];
    ssize_t left = longest_answer;
    while (!answer.complete) {
        const ssize_t got = read(relay, piece, sizeof piece);
        if (got <= 0 || got > left) {
            return;
        }
        left -= got;
        follow_answer(&answer, piece, static_cast<size_t>(got));
    }
}

void send_mcu_command(const char* command) {
    // The command goes out only when its answer can be listened to.
    const int relay = connect_to_relay();
    if (relay < 0) {
        return;
    }
    char line[4096];
    snprintf(line, sizeof line, "echo \"%.*s\" > /dev/ttyS1 &", static_cast<int>(longest_command),
             command);
    run_shell_line(line);
    const timeval timeout = {answer_timeout_seconds, 0};
    setsockopt(relay, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    hold_signals();
    wait_for_answer(relay);
    release_signals();
    close(relay);
}
