#include "device/lines.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/recorder.h"

namespace {

class Lines : public testing::Test {
  protected:
    void SetUp() override {
        reset_recorder();
    }
};

// Around the size of the usual line, and beyond what one exec argument takes.
constexpr size_t lengths[] = {0,    1,    2040, 2045,  2046,   2047,
                              2048, 2049, 4096, 16384, 131072, 300000};

TEST_F(Lines, ATextGoesWhereItsChannelLeads) {
    send_line(Channel::shell, "astparam s key %s;");
    send_line(Channel::mcu, "fplock,on");
    send_line(Channel::shell, "");
    send_line(Channel::mcu, "");
    EXPECT_EQ(recorded_trace(), "shell astparam s key %s;\nmcu fplock,on\nshell \nmcu \n");
}

TEST_F(Lines, TheValueStandsInEveryPlaceholder) {
    send_filled_line(Channel::shell, "a \"%s\";b %s;", "x y");
    send_filled_line(Channel::mcu, "%d,%d", "7");
    send_filled_line(Channel::shell, "none", "x");
    EXPECT_EQ(recorded_trace(), "shell a \"x y\";b x y;\nmcu 7,7\nshell none\n");
}

TEST_F(Lines, AValueIsNeverReadAsAFormat) {
    send_filled_line(Channel::shell, "a %s", "%s %d %n %%");
    EXPECT_EQ(recorded_trace(), "shell a %s %d %n %%\n");
}

TEST_F(Lines, AValueKeepsQuotesBackslashesAndLineEnds) {
    send_filled_line(Channel::shell, "a \"%s\"", "\"$(b)\" \\ ; \t&");
    EXPECT_EQ(recorded_trace(), "shell a \"\"$(b)\" \\ ; \t&\"\n");
}

TEST_F(Lines, FilledLinesOfAnyLengthAreWhole) {
    for (const size_t length : lengths) {
        const std::string value(length, 'v');
        reset_recorder();
        send_filled_line(Channel::shell, "%s;", value.c_str());
        send_filled_line(Channel::mcu, "a %s %s", value.c_str());
        EXPECT_EQ(recorded_trace(), "shell " + value + ";\nmcu a " + value + " " + value + "\n");
    }
}

TEST_F(Lines, FormattedLinesOfAnyLengthAreWhole) {
    for (const size_t length : lengths) {
        const std::string value(length, 'v');
        reset_recorder();
        run_shell_format("%s;%d", value.c_str(), -1);
        send_mcu_format("m,%d,%s", 2, value.c_str());
        EXPECT_EQ(recorded_trace(), "shell " + value + ";-1\nmcu m,2," + value + "\n");
    }
}

}  // namespace
