#include "device/signals.h"

#include <csignal>

static constexpr int callers_signals[] = {SIGHUP, SIGTERM, SIGPIPE};

static void go_on(int /*signal*/) {}

void outlast_the_caller() {
    // Handlers, since an ignored signal would stay ignored in every child.
    struct sigaction action = {};
    action.sa_handler = go_on;
    action.sa_flags = SA_RESTART;
    for (const int signal : callers_signals) {
        sigaction(signal, &action, nullptr);
    }
}

static void change_mask(int how) {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : callers_signals) {
        sigaddset(&signals, signal);
    }
    sigprocmask(how, &signals, nullptr);
}

void hold_signals() {
    change_mask(SIG_BLOCK);
}

void release_signals() {
    change_mask(SIG_UNBLOCK);
}
