#include <gtest/gtest.h>

#include <string>

#include "tests/support/applying.h"
#include "tests/support/recorder.h"
#include "unitconf/sections.h"

namespace {

class Identity : public testing::Test {
  protected:
    void SetUp() override {
        reset_recorder();
    }
};

std::string quoted(const std::string& text) {
    return std::string("\"").append(text).append("\"");
}

// What the unit is told for a device name while it holds these synchronisation flags.
std::string named(const std::string& flags, const std::string& name) {
    reset_recorder();
    set_rw_value("device_name_sync_enable", flags);
    return trace_of(apply_device_name, quoted(name));
}

std::string stored(const std::string& name) {
    return "shell astparam s deviceName \"" + name + "\" > /dev/null 2>&1\n";
}

std::string channel_1(const std::string& name, const std::string& plain) {
    return "shell astparam s a_d_tx_ch1_name \"" + name + "-01\"\n" + "shell dapi --txch1_name \"" +
           plain + "-01\" > /dev/null 2>&1\n";
}

std::string channel_2(const std::string& name, const std::string& plain) {
    return "shell astparam s a_d_tx_ch2_name \"" + name + "-02\"\n" + "shell dapi --txch2_name \"" +
           plain + "-02\" > /dev/null 2>&1\n";
}

TEST_F(Identity, TheNameIsStoredWhateverFollowsIt) {
    EXPECT_EQ(trace_of(apply_device_name, quoted("Hall 1")),
              "shell cp /dev/shm/rwparam /dev/shm/rwparam_temp\n"
              "shell astparam s deviceName \"Hall 1\" > /dev/null 2>&1\n");
}

TEST_F(Identity, TheChannelsWhoseFlagIsOneFollowTheName) {
    const std::string name = stored("Room");
    const std::string first = channel_1("Room", "Room");
    const std::string second = channel_2("Room", "Room");
    EXPECT_EQ(named("111", "Room"), snapshot_trace + name + first + second);
    EXPECT_EQ(named("110", "Room"), snapshot_trace + name + first + second);
    EXPECT_EQ(named("11", "Room"), snapshot_trace + name + first + second);
    EXPECT_EQ(named("100", "Room"), snapshot_trace + name + first);
    EXPECT_EQ(named("1", "Room"), snapshot_trace + name + first);
    EXPECT_EQ(named("010", "Room"), snapshot_trace + name + second);
    EXPECT_EQ(named("x1", "Room"), snapshot_trace + name + second);
    for (const char* none : {"", "0", "00", "000", "22", "yy", " 1x"}) {
        EXPECT_EQ(named(none, "Room"),
                  snapshot_trace + name + (none[0] == ' ' ? second : std::string()))
            << none;
    }
}

TEST_F(Identity, TheHostNamesFlagLeadsToNoLine) {
    EXPECT_EQ(named("001", "Room"), snapshot_trace + stored("Room"));
    EXPECT_EQ(named("001111", "Room"), snapshot_trace + stored("Room"));
}

TEST_F(Identity, TheWholeLinesOfAFollowingChannelAreThese) {
    EXPECT_EQ(named("11", "Room 1_A"),
              R"(shell cp /dev/shm/rwparam /dev/shm/rwparam_temp
shell astparam s deviceName "Room 1_A" > /dev/null 2>&1
shell astparam s a_d_tx_ch1_name "Room 1_A-01"
shell dapi --txch1_name "Room-1OA-01" > /dev/null 2>&1
shell astparam s a_d_tx_ch2_name "Room 1_A-02"
shell dapi --txch2_name "Room-1OA-02" > /dev/null 2>&1
)");
}

TEST_F(Identity, ANameOfMoreThan32BytesIsNotStoredButStillFollowed) {
    const std::string longest(32, 'n');
    const std::string longer(33, 'n');
    EXPECT_EQ(named("0", longest), snapshot_trace + stored(longest));
    EXPECT_EQ(named("0", longer), snapshot_trace);
    EXPECT_EQ(named("1", longer),
              snapshot_trace + "shell astparam s a_d_tx_ch1_name \"" + longer + "-01\"\n");
    const std::string very_long(5000, 'n');
    EXPECT_EQ(named("11", very_long),
              snapshot_trace + "shell astparam s a_d_tx_ch1_name \"" + very_long + "-01\"\n" +
                  "shell astparam s a_d_tx_ch2_name \"" + very_long + "-02\"\n");
}

TEST_F(Identity, DanteTakesNamesOfAtMost29Bytes) {
    const std::string longest(29, 'n');
    const std::string longer(30, 'n');
    EXPECT_EQ(named("11", longest), snapshot_trace + stored(longest) + channel_1(longest, longest) +
                                        channel_2(longest, longest));
    EXPECT_EQ(named("11", longer), snapshot_trace + stored(longer) +
                                       "shell astparam s a_d_tx_ch1_name \"" + longer + "-01\"\n" +
                                       "shell astparam s a_d_tx_ch2_name \"" + longer + "-02\"\n");
}

TEST_F(Identity, TheLimitsCountBytesNotCharacters) {
    std::string accents;  // 11 characters, 22 bytes
    for (int i = 0; i < 11; i++) {
        accents += "\xC3\xA9";
    }
    EXPECT_EQ(named("0", accents + "12345678901"), snapshot_trace);
    EXPECT_EQ(named("0", accents + "1234567890"), snapshot_trace + stored(accents + "1234567890"));
    EXPECT_EQ(named("1", accents + "1234567"),
              snapshot_trace + stored(accents + "1234567") +
                  channel_1(accents + "1234567", std::string(18, 'O')));
    EXPECT_EQ(named("1", accents + "12345678"), snapshot_trace + stored(accents + "12345678") +
                                                    "shell astparam s a_d_tx_ch1_name \"" +
                                                    accents + "12345678-01\"\n");
}

TEST_F(Identity, AMultiByteNameLosesTheTailOfItsChannelName) {
    EXPECT_EQ(named("1",
                    "\xC3\xA9"
                    "1"),
              snapshot_trace +
                  stored("\xC3\xA9"
                         "1") +
                  channel_1("\xC3\xA9"
                            "1",
                            "OO"));
    EXPECT_EQ(named("1",
                    "ab\xE2\x82\xAC"
                    "cd"),
              snapshot_trace +
                  stored("ab\xE2\x82\xAC"
                         "cd") +
                  channel_1("ab\xE2\x82\xAC"
                            "cd",
                            "abOOO"));
}

TEST_F(Identity, ChannelNamesHoldOnlyDigitsLettersAndHyphens) {
    EXPECT_EQ(named("1", "09azAZ-"),
              snapshot_trace + stored("09azAZ-") + channel_1("09azAZ-", "09azAZ-"));
    EXPECT_EQ(named("1", "/:@[`{. _%s$"),
              snapshot_trace + stored("/:@[`{. _%s$") + channel_1("/:@[`{. _%s$", "OOOOOOO-OOsO"));
}

TEST_F(Identity, AnEmptyNameLeavesOnlyTheEndings) {
    EXPECT_EQ(named("11", ""), snapshot_trace + stored("") + channel_1("", "") + channel_2("", ""));
}

TEST_F(Identity, ADeviceNameThatIsNoTextChangesNothing) {
    set_rw_value("device_name_sync_enable", "111");
    for (const char* item : {"null", "true", "5", "[\"a\"]", "{}"}) {
        EXPECT_EQ(trace_of(apply_device_name, item), "") << item;
        EXPECT_EQ(trace_of(apply_serial_number, item), "") << item;
    }
    apply_device_name(nullptr);
    apply_serial_number(nullptr);
    EXPECT_EQ(recorded_trace(), "");
}

TEST_F(Identity, TheSerialNumberGoesToBothStoresAndPauses) {
    EXPECT_EQ(trace_of(apply_serial_number, quoted("ZA 2024-%d")),
              "shell astparam s serialNumber \"ZA 2024-%d\"  > /dev/null 2>&1;"
              "lmparam s SERIALNUMBER \"ZA 2024-%d\";\npause 1\n");
    EXPECT_EQ(trace_of(apply_serial_number, quoted("")),
              "shell astparam s serialNumber \"\"  > /dev/null 2>&1;"
              "lmparam s SERIALNUMBER \"\";\npause 1\n");
}

TEST_F(Identity, ASerialNumberOfAnyLengthIsWritten) {
    const std::string number(3000, '7');
    EXPECT_EQ(trace_of(apply_serial_number, quoted(number)),
              "shell astparam s serialNumber \"" + number + "\"  > /dev/null 2>&1;" +
                  "lmparam s SERIALNUMBER \"" + number + "\";\npause 1\n");
}

}  // namespace
