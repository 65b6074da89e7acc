// The standard streams and signal actions of a test, which the dispatcher puts aside.
#pragma once

#include <unistd.h>

#include <array>
#include <csignal>

// Gives the process back what it had when this was made.
class HeldProcess {
  public:
    HeldProcess() {
        for (size_t i = 0; i < streams.size(); i++) {
            streams[i] = dup(static_cast<int>(i));
        }
        for (size_t i = 0; i < signals.size(); i++) {
            sigaction(signals[i], nullptr, &actions[i]);
        }
    }

    HeldProcess(const HeldProcess&) = delete;
    HeldProcess& operator=(const HeldProcess&) = delete;

    ~HeldProcess() {
        for (size_t i = 0; i < streams.size(); i++) {
            dup2(streams[i], static_cast<int>(i));
            close(streams[i]);
        }
        for (size_t i = 0; i < signals.size(); i++) {
            sigaction(signals[i], &actions[i], nullptr);
        }
    }

  private:
    std::array<int, 3> streams = {};
    static constexpr std::array<int, 3> signals = {SIGHUP, SIGTERM, SIGPIPE};
    std::array<struct sigaction, 3> actions = {};
};
