// Commands to the front-panel microcontroller, against an answer relay in a unit of the test's own:
// a process with its own loopback network, where nothing else listens on the relay's port, and its
// own /dev, where the serial line is a pipe.
#include <arpa/inet.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <net/if.h>
#include <netinet/in.h>
#include <poll.h>
#include <pthread.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>

#include "device/signals.h"
#include "device/unit.h"

namespace {

timeval wanted_timeout = {};
bool shorten_timeout = false;

}  // namespace

// Writes down how long an answer is waited for, and has a test that waits in vain wait far shorter.
extern "C" int setsockopt(int socket, int level, int option, const void* value,
                          socklen_t size) noexcept {
    using SetOption = int (*)(int, int, int, const void*, socklen_t);
    static const auto set_option = reinterpret_cast<SetOption>(dlsym(RTLD_NEXT, "setsockopt"));
    static const timeval soon = {0, 200000};
    if (level == SOL_SOCKET && option == SO_RCVTIMEO && size == sizeof soon) {
        memcpy(&wanted_timeout, value, sizeof wanted_timeout);
        value = shorten_timeout ? &soon : value;
    }
    return set_option(socket, level, option, value, size);
}

namespace {

const std::string mark = "printf \":mcu_end\" | nc -w 3 127.0.0.1 4445";
const std::string whole_answer = "ok\r\n" + mark + "\r\n12345";

// --- The unit of the test's own: all of this runs in its process ---------------------------------

int transcript = -1;   // where the process writes down what happens
int serial_line = -1;  // the reading end of /dev/ttyS1

void note(const std::string& entry) {
    const std::string line = entry + "\n";
    if (write(transcript, line.data(), line.size()) < 0) {
        _exit(2);
    }
}

bool write_text(const char* path, const std::string& text) {
    std::ofstream file(path);
    file << text;
    file.flush();
    return file.good();
}

bool leave_the_host() {
    const std::string uid = std::to_string(getuid());
    const std::string gid = std::to_string(getgid());
    if (unshare(CLONE_NEWNS | CLONE_NEWNET) == 0) {
        return true;
    }
    return unshare(CLONE_NEWUSER | CLONE_NEWNS | CLONE_NEWNET) == 0 &&
           write_text("/proc/self/setgroups", "deny") &&
           write_text("/proc/self/uid_map", "0 " + uid + " 1") &&
           write_text("/proc/self/gid_map", "0 " + gid + " 1");
}

bool raise_loopback() {
    const int any = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ifreq request = {};
    strcpy(request.ifr_name, "lo");
    bool up = ioctl(any, SIOCGIFFLAGS, &request) == 0;
    request.ifr_flags = static_cast<short>(request.ifr_flags | IFF_UP);
    up = up && ioctl(any, SIOCSIFFLAGS, &request) == 0;
    close(any);
    return up;
}

bool make_devices(const std::string& folder) {
    const std::string null = folder + "/null";
    return mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           write_text(null.c_str(), "") &&
           mount("/dev/null", null.c_str(), nullptr, MS_BIND, nullptr) == 0 &&
           mkfifo((folder + "/ttyS1").c_str(), 0600) == 0 &&
           mount(folder.c_str(), "/dev", nullptr, MS_BIND | MS_REC, nullptr) == 0;
}

// The next line that reaches the serial line, or "(nothing)" when none comes within the time.
std::string next_command(int milliseconds) {
    std::string command;
    for (;;) {
        pollfd wait = {serial_line, POLLIN, 0};
        char byte = '\0';
        if (poll(&wait, 1, milliseconds) <= 0 || read(serial_line, &byte, 1) != 1) {
            return "(nothing)";
        }
        if (byte == '\n') {
            return command;
        }
        command += byte;
    }
}

// The relay: takes one connection for each command and hands it to `serve`.
class Relay {
  public:
    explicit Relay(std::function<void(int connection)> serve, int commands = 1) {
        listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const int on = 1;
        setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(5449);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
            listen(listener, 5) != 0) {
            note(std::string("no relay: ") + strerror(errno));
            _exit(2);
        }
        server = std::thread([this, serve, commands] {
            for (int i = 0; i < commands; i++) {
                const int connection = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
                serve(connection);
                close(connection);
            }
        });
    }

    Relay(const Relay&) = delete;
    Relay& operator=(const Relay&) = delete;

    ~Relay() {
        server.join();
        close(listener);
    }

  private:
    int listener = -1;
    std::thread server;
};

void answer(int connection, const std::string& piece) {
    // A sender that does not wait would be seen to return before this.
    usleep(20000);
    note("piece of " + std::to_string(piece.size()));
    if (send(connection, piece.data(), piece.size(), MSG_NOSIGNAL) < 0) {
        note("the sender is gone");
    }
}

void send_and_note(const std::string& command) {
    send_mcu_command(command.c_str());
    note("returned");
}

// --- The test's side -----------------------------------------------------------------------------

// Runs the scenario in a unit of its own and returns what was written down there.
std::string transcript_of(void (*scenario)()) {
    std::string folder = testing::TempDir() + "front-panel-test-XXXXXX";
    int ends[2];
    if (mkdtemp(folder.data()) == nullptr || pipe2(ends, O_CLOEXEC) != 0) {
        return "no folder or pipe";
    }
    const pid_t unit = fork();
    if (unit == 0) {
        close(ends[0]);
        transcript = ends[1];
        signal(SIGALRM, SIG_DFL);
        alarm(60);
        if (!leave_the_host() || !raise_loopback() || !make_devices(folder)) {
            note(std::string("no unit of its own: ") + strerror(errno));
            _exit(1);
        }
        serial_line = open("/dev/ttyS1", O_RDWR | O_CLOEXEC);
        scenario();
        note("then on the line: " + next_command(0));
        _exit(0);
    }
    close(ends[1]);
    std::string text;
    char piece[4096];
    for (ssize_t got = 0; (got = read(ends[0], piece, sizeof piece)) > 0;) {
        text.append(piece, static_cast<size_t>(got));
    }
    close(ends[0]);
    int status = 0;
    waitpid(unit, &status, 0);
    if (WIFSIGNALED(status)) {
        text += "ended by signal " + std::to_string(WTERMSIG(status)) + "\n";
    }
    std::filesystem::remove_all(folder);
    return text;
}

class FrontPanel : public testing::Test {
  protected:
    void SetUp() override {
        const std::string nothing = transcript_of([] {});
        if (nothing.starts_with("no unit of its own")) {
            GTEST_SKIP() << "NOT TESTED: the host allows no namespaces (" << nothing << ")";
        }
        ASSERT_EQ(nothing, "then on the line: (nothing)\n");
    }
};

TEST_F(FrontPanel, ACommandReachesTheSerialLineAndIsWaitedFor) {
    EXPECT_EQ(transcript_of([] {
                  Relay relay([](int connection) {
                      note("told " + next_command(10000));
                      answer(connection, whole_answer);
                  });
                  send_and_note("setzavostreama,1");
              }),
              "told setzavostreama,1\n"
              "piece of 53\n"
              "returned\n"
              "then on the line: (nothing)\n");
}

TEST_F(FrontPanel, NothingIsSentWhenNobodyCanListenToTheAnswer) {
    EXPECT_EQ(transcript_of([] {
                  send_and_note("first");
                  Relay relay([](int connection) {
                      note("told " + next_command(10000));
                      answer(connection, whole_answer);
                  });
                  send_and_note("second");
              }),
              "returned\n"
              "told second\n"
              "piece of 53\n"
              "returned\n"
              "then on the line: (nothing)\n");
}

TEST_F(FrontPanel, CommandsReachTheUnitOneAtATime) {
    EXPECT_EQ(transcript_of([] {
                  Relay relay(
                      [](int connection) {
                          note("told " + next_command(10000));
                          note("meanwhile " + next_command(30));
                          answer(connection, whole_answer);
                      },
                      2);
                  send_and_note("oledkeep,on");
                  send_and_note("oledrefresh,5");
              }),
              "told oledkeep,on\n"
              "meanwhile (nothing)\n"
              "piece of 53\n"
              "returned\n"
              "told oledrefresh,5\n"
              "meanwhile (nothing)\n"
              "piece of 53\n"
              "returned\n"
              "then on the line: (nothing)\n");
}

TEST_F(FrontPanel, AnAnswerInPiecesIsWaitedForToItsEnd) {
    EXPECT_EQ(transcript_of([] {
                  Relay relay([](int connection) {
                      note("told " + next_command(10000));
                      answer(connection, "ok\r\n" + mark.substr(0, 20));
                      answer(connection, mark.substr(20) + "\r");
                      answer(connection, "\n1234");
                      answer(connection, "5");
                  });
                  send_and_note("fplock,on");
              }),
              "told fplock,on\n"
              "piece of 24\n"
              "piece of 23\n"
              "piece of 5\n"
              "piece of 1\n"
              "returned\n"
              "then on the line: (nothing)\n");
}

TEST_F(FrontPanel, AnAnswerLongerThanOneReadIsWaitedForToItsEnd) {
    EXPECT_EQ(transcript_of([] {
                  Relay relay([](int connection) {
                      note("told " + next_command(10000));
                      answer(connection, std::string(100000, '\xFF'));
                      answer(connection, whole_answer);
                  });
                  send_and_note("fplock,on");
              }),
              "told fplock,on\n"
              "piece of 100000\n"
              "piece of 53\n"
              "returned\n"
              "then on the line: (nothing)\n");
}

TEST_F(FrontPanel, ARelayThatClosesEndsTheWait) {
    EXPECT_EQ(transcript_of([] {
                  Relay relay([](int connection) {
                      note("told " + next_command(10000));
                      answer(connection, mark);
                  });
                  send_and_note("fplock,on");
              }),
              "told fplock,on\n"
              "piece of 42\n"
              "returned\n"
              "then on the line: (nothing)\n");
}

TEST_F(FrontPanel, ASilentMicrocontrollerIsWaitedForTenSeconds) {
    EXPECT_EQ(transcript_of([] {
                  shorten_timeout = true;
                  int held = -1;
                  {
                      Relay relay([&](int connection) {
                          held = dup(connection);
                          send(connection, "ok\r\n", 4, MSG_NOSIGNAL);
                      });
                      send_and_note("fplock,on");
                  }
                  close(held);
                  note("told " + next_command(10000));
                  note("timeout " + std::to_string(wanted_timeout.tv_sec) + " s " +
                       std::to_string(wanted_timeout.tv_usec) + " us");
              }),
              "returned\n"
              "told fplock,on\n"
              "timeout 10 s 0 us\n"
              "then on the line: (nothing)\n");
}

TEST_F(FrontPanel, TheCallersLeavingDoesNotEndTheWait) {
    EXPECT_EQ(transcript_of([] {
                  outlast_the_caller();
                  const pthread_t sender = pthread_self();
                  Relay relay([sender](int connection) {
                      note("told " + next_command(10000));
                      usleep(50000);
                      for (const int signal : {SIGTERM, SIGHUP, SIGPIPE, SIGTERM}) {
                          pthread_kill(sender, signal);
                      }
                      answer(connection, whole_answer);
                  });
                  send_and_note("fplock,on");
              }),
              "told fplock,on\n"
              "piece of 53\n"
              "returned\n"
              "then on the line: (nothing)\n");
}

// A relay that never stops sending must not keep a unit from being restarted.
TEST_F(FrontPanel, AnAnswerBeyondTwoGigabytesIsGivenUp) {
#ifndef NDEBUG
    GTEST_SKIP() << "two gigabytes take minutes under sanitizers; the optimised build takes them";
#endif
    EXPECT_EQ(transcript_of([] {
                  Relay relay([](int connection) {
                      note("told " + next_command(10000));
                      const std::string block(1 << 20, 'x');
                      long long sent = 0;
                      for (ssize_t now = 1; now > 0; sent += now) {
                          now = send(connection, block.data(), block.size(), MSG_NOSIGNAL);
                      }
                      if (sent < INT32_MAX) {
                          note("given up too early");
                      }
                  });
                  send_and_note("fplock,on");
              }),
              "told fplock,on\n"
              "returned\n"
              "then on the line: (nothing)\n");
}

TEST_F(FrontPanel, OfALongCommand1023BytesAreSentAndAnEmptyOneIsSentToo) {
    EXPECT_EQ(transcript_of([] {
                  Relay relay(
                      [](int connection) {
                          const std::string command = next_command(10000);
                          note("told " + std::to_string(command.size()) + " bytes");
                          answer(connection, whole_answer);
                      },
                      5);
                  for (const size_t length : {0UL, 1022UL, 1023UL, 1024UL, 3000UL}) {
                      send_and_note(std::string(length, 'c'));
                  }
              }),
              "told 0 bytes\npiece of 53\nreturned\n"
              "told 1022 bytes\npiece of 53\nreturned\n"
              "told 1023 bytes\npiece of 53\nreturned\n"
              "told 1023 bytes\npiece of 53\nreturned\n"
              "told 1023 bytes\npiece of 53\nreturned\n"
              "then on the line: (nothing)\n");
}

}  // namespace
