// Shell lines, command outputs and pauses, against the host's shell.
#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "device/unit.h"
#include "tests/support/folder.h"

// --- A clock of the test's own, so that no test waits --------------------------------------------

namespace {

std::vector<unsigned> waits;

// The signals that come during each wait, and those that were taken so far, before a wait ended and
// in all.
std::vector<int> coming_signals;
std::vector<int> taken_signals;
size_t taken_while_waiting = 0;

void take_signal(int signal) {
    taken_signals.push_back(signal);
}

}  // namespace

extern "C" unsigned sleep(unsigned seconds) {
    waits.push_back(seconds);
    for (const int signal : coming_signals) {
        raise(signal);
    }
    taken_while_waiting += taken_signals.size();
    // Some clocks that run fast under test hand back a rest although nothing came.
    return 4000000000U;
}

namespace {

class Shell : public FolderTest {
  protected:
    void SetUp() override {
        FolderTest::SetUp();
        waits.clear();
        coming_signals.clear();
        taken_signals.clear();
        taken_while_waiting = 0;
    }
};

// --- run_shell_line ------------------------------------------------------------------------------

TEST_F(Shell, ALineIsRunByTheShellAsItStands) {
    run_shell_line(("printf '%s' \"a  b\" > '" + path("a") + "';printf '%d;' 1 2 >> '" + path("a") +
                    "'  ; echo x > /dev/null 2>&1;")
                       .c_str());
    EXPECT_EQ(content("a"), "a  b1;2;");
    run_shell_line("");
    run_shell_line("exit 3");
    run_shell_line("no-such-tool > /dev/null 2>&1");
}

TEST_F(Shell, ALineIsOverWhenItReturns) {
    for (int i = 0; i < 20; i++) {
        run_shell_line(("echo " + std::to_string(i) + " >> '" + path("a") + "'").c_str());
    }
    EXPECT_EQ(content("a"),
              "0\n1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n12\n13\n14\n15\n16\n17\n18\n19\n");
}

TEST_F(Shell, WhatALineStartsInTheBackgroundGoesOnByItself) {
    ASSERT_EQ(mkfifo(path("gate").c_str(), 0600), 0);
    ASSERT_EQ(mkfifo(path("done").c_str(), 0600), 0);
    // Returns although the background reader still stands before the gate.
    run_shell_line(
        ("(read word < '" + path("gate") + "'; echo $word > '" + path("done") + "') &").c_str());
    std::ofstream(path("gate")) << "open\n";
    std::string word;
    std::ifstream(path("done")) >> word;
    EXPECT_EQ(word, "open");
}

TEST_F(Shell, ALineOfAnyLengthIsRunWhole) {
    const std::string begin = "printf '%s' '";
    const std::string end = "' > '" + path("a") + "';echo end >> '" + path("a") + "'";
    const size_t around = begin.size() + end.size();
    // The kernel takes 131072 bytes as one exec argument, the closing NUL included.
    for (const size_t length : {2048UL, 131070UL, 131071UL, 131072UL, 131073UL, 1000000UL}) {
        std::string value;
        while (value.size() < length - around) {
            value += "0123456789abcdef \n\t$(x)\"%s\\";
        }
        value.resize(length - around);
        const std::string line = begin + value + end;
        ASSERT_EQ(line.size(), length);
        run_shell_line(line.c_str());
        EXPECT_TRUE(content("a") == value + "end\n") << length << " bytes";
        std::filesystem::remove(path("a"));
    }
}

TEST_F(Shell, LinesLeaveNoDescriptorsOpen) {
    const auto open_descriptors = [] {
        int count = 0;
        DIR* all = opendir("/proc/self/fd");
        while (readdir(all) != nullptr) {
            count++;
        }
        closedir(all);
        return count;
    };
    const int before = open_descriptors();
    char out[output_text_size] = {};
    run_shell_line("true");
    run_shell_line((": '" + std::string(200000, 'x') + "'").c_str());
    read_command_output("echo a", out);
    EXPECT_EQ(open_descriptors(), before);
}

// --- read_command_output -------------------------------------------------------------------------

// What a command leaves in a buffer that was full of "#".
std::string output_of(const std::string& command) {
    char out[output_text_size];
    memset(out, '#', sizeof out);
    out[sizeof out - 1] = '\0';
    read_command_output(command.c_str(), out);
    return out;
}

const std::string untouched(output_text_size - 1, '#');

TEST_F(Shell, TheLastLineOfAnOutputCounts) {
    EXPECT_EQ(output_of("printf 'a\\nb\\n'"), "b");
    EXPECT_EQ(output_of("printf 'a\\nb'"), "b");
    EXPECT_EQ(output_of("printf 'a\\n\\n'"), "");
    EXPECT_EQ(output_of("printf 'a b \\n'"), "a b ");
    EXPECT_EQ(output_of("printf 'long line\\nx\\n'"), "x");
}

TEST_F(Shell, ACarriageReturnIsKept) {
    EXPECT_EQ(output_of("printf 'a\\r\\n'"), "a\r");
    EXPECT_EQ(output_of("printf '\\r'"), "\r");
}

TEST_F(Shell, NoOutputIsAnEmptyTextOfAllZeros) {
    char out[output_text_size];
    memset(out, '#', sizeof out);
    read_command_output("true", out);
    EXPECT_EQ(std::string(out, sizeof out), std::string(sizeof out, '\0'));
    EXPECT_EQ(output_of("(echo not seen 1>&2) 2> /dev/null"), "");
    EXPECT_EQ(output_of("no-such-tool 2> /dev/null"), "");
}

TEST_F(Shell, NotDefinedIsNoValue) {
    EXPECT_EQ(output_of("echo 'not defined'"), untouched);
    EXPECT_EQ(output_of("printf 'not defined'"), untouched);
    EXPECT_EQ(output_of("echo 'key not defined in store'"), untouched);
    EXPECT_EQ(output_of("printf 'value\\nkey not defined\\n'"), untouched);
    EXPECT_EQ(output_of("echo 'not define'"), "not define");
    EXPECT_EQ(output_of("echo 'Not defined!'"), "Not defined!");
    EXPECT_EQ(output_of("printf 'key not defined\\nvalue\\n'"), "value");
    EXPECT_EQ(output_of("printf 'not defined\\n\\n'"), "");
}

TEST_F(Shell, OfALineLongerThanTheBufferTheLastFragmentCounts) {
    const auto line_of = [](size_t length) {
        return "printf '%" + std::to_string(length) + "s' x";
    };
    const auto with_line_feed = [&](size_t length) { return line_of(length) + ";echo"; };
    EXPECT_EQ(output_of(with_line_feed(1022)), std::string(1021, ' ') + "x");
    EXPECT_EQ(output_of(line_of(1023)), std::string(1022, ' ') + "x");
    // The line feed is then a fragment of its own.
    EXPECT_EQ(output_of(with_line_feed(1023)), "");
    EXPECT_EQ(output_of(line_of(1024)), "x");
    EXPECT_EQ(output_of(with_line_feed(1024)), "x");
    EXPECT_EQ(output_of(line_of(1500)), std::string(476, ' ') + "x");
    EXPECT_EQ(output_of(with_line_feed(2046)), "");
    EXPECT_EQ(output_of("printf '%1018s' x; echo 'not defined'"), "efined");
}

TEST_F(Shell, ANulByteEndsTheText) {
    EXPECT_EQ(output_of("printf 'a\\000b\\n'"), "a");
    EXPECT_EQ(output_of("printf '\\000b\\n'"), "");
}

TEST_F(Shell, TheStatusOfTheCommandIsReturned) {
    char out[output_text_size] = {};
    EXPECT_EQ(read_command_output("true", out), 0);
    EXPECT_EQ(WEXITSTATUS(read_command_output("exit 3", out)), 3);
    EXPECT_EQ(WEXITSTATUS(read_command_output("echo 'not defined'; exit 4", out)), 4);
}

// --- pause_seconds -------------------------------------------------------------------------------

TEST_F(Shell, APauseIsItsSeconds) {
    pause_seconds(1);
    pause_seconds(3);
    EXPECT_EQ(waits, (std::vector<unsigned>{1, 3}));
}

TEST_F(Shell, SignalsNeitherShortenNorLengthenAPause) {
    coming_signals = {SIGHUP, SIGTERM, SIGPIPE, SIGTERM};
    for (const int signal : coming_signals) {
        struct sigaction action = {};
        action.sa_handler = take_signal;
        sigaction(signal, &action, nullptr);
    }
    pause_seconds(2);
    EXPECT_EQ(waits, (std::vector<unsigned>{2}));
    EXPECT_EQ(taken_while_waiting, 0U);
    std::sort(taken_signals.begin(), taken_signals.end());
    EXPECT_EQ(taken_signals, (std::vector<int>{SIGHUP, SIGPIPE, SIGTERM}));
    raise(SIGTERM);
    EXPECT_EQ(taken_signals.size(), 4U) << "the signals are still held";
    for (const int signal : coming_signals) {
        std::signal(signal, SIG_DFL);
    }
}

}  // namespace
