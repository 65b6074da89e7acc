#include <gtest/gtest.h>

#include <string>

#include "tests/support/applying.h"
#include "tests/support/json_values.h"
#include "tests/support/recorder.h"
#include "unitconf/sections.h"
#include "unitconf/tables.h"

namespace {

// Every section ends with one of these.
const std::string ava_line =
    "shell astparam s a_addon dante;astparam s dante_op_mode AV-A;"
    "lmparam s A_ADDON dante;lmparam s DANTE_OP_MODE AV-A;\n"
    "pause 1\n";
const std::string audio_only_line =
    "shell astparam s a_addon dante;astparam s dante_op_mode audio-only;"
    "lmparam s A_ADDON dante;lmparam s DANTE_OP_MODE audio-only;\n"
    "pause 1\n";
const std::string ava = ava_line + "pause 5\n";
const std::string audio_only = audio_only_line + "pause 5\n";
const std::string no_add_on =
    "shell astparam s v_eng_drv_option 0x80000000;\n"
    "shell astparam s a_addon none;astparam s dante_op_mode none;"
    "lmparam s A_ADDON none;lmparam s DANTE_OP_MODE none;\n"
    "pause 1\n"
    "pause 5\n";
const std::string marker = "shell echo 1 > /user_data2/no_dante_upgrade_config\n";

const std::string flags_read = "read astparam g device_name_sync_enable\n";

std::string flags_stored(const std::string& flags) {
    return "shell astparam s device_name_sync_enable " + flags + ";\n";
}

// A unit without the add-on whose flags are all off.
class Dante : public testing::Test {
  protected:
    Dante() {
        reset_recorder();
        set_rw_value("fm_version", "1");
        set_rw_value("deviceName", "Hall 1");
        answer_command("astparam g device_name_sync_enable", "000000");
    }
    static std::string apply(const std::string& json) {
        return trace_of(apply_dante_section, json);
    }
    // A section with this "dante_audio" and the audio-only add-on.
    static std::string apply_audio(const std::string& json) {
        return apply(with_value(R"({"dante_audio_only":true,"dante_audio":@})", json));
    }
};

// The whole trace of such a section that tells the unit `told`, with and without a channel name for
// the Dante device.
std::string audio_trace(const std::string& told) {
    return snapshot_trace + told + audio_only;
}
std::string audio_trace_with_name(const std::string& told) {
    return snapshot_trace + told + audio_only + marker;
}

// --- The order of a whole section
// -----------------------------------------------------------------

TEST_F(Dante, EverythingIsToldInItsOrder) {
    set_rw_value("a_addon", "dante");
    set_rw_value("dante_op_mode", "AV-A");
    EXPECT_EQ(apply(R"({
                  "information": {}, "rx_video_ch_name": "r", "tx_video_ch_name": "t",
                  "dante_audio_only": true, "dante_ava": false,
                  "dante_audio": {
                      "rx_enable": true, "tx_audio_mute": true, "tx_enable": true,
                      "zavo_audio_bridge": true, "rx_ch2_use_device_name": true,
                      "rx_ch1_use_device_name": true, "rx_ch2_name": "In R", "rx_ch1_name": "In L",
                      "tx_ch2_use_device_name": true, "tx_ch1_use_device_name": true,
                      "tx_ch2_name": "Out R", "tx_ch1_name": "Out L"
                  },
                  "rx_video_use_device_name": true, "tx_video_use_device_name": true,
                  "dante_use_device_name": true, "dante_name": "HALL-1"
              })"),
              "shell cp /dev/shm/rwparam /dev/shm/rwparam_temp\n"
              "shell astparam s dante_device_name \"HALL-1\" > /dev/null 2>&1\n"
              "pause 1\n"
              "shell reaload_dante_config.sh &\n"
              "read astparam g device_name_sync_enable\n"
              "shell astparam s device_name_sync_enable 000001;\n"
              "shell astparam s a_d_tx_video_use_dn 1;\n"
              "shell astparam s a_d_rx_video_use_dn 1;\n"
              "shell astparam s multicast_on y;\n"
              "shell astparam s a_d_tx_ch1_name \"Out L\"  > /dev/null 2>&1\n"
              "shell dapi --txch1_name \"Out L\" > /dev/null 2>&1\n"
              "pause 3\n"
              "shell astparam s a_d_tx_ch2_name \"Out R\" > /dev/null 2>&1\n"
              "shell dapi --txch2_name \"Out R\" > /dev/null 2>&1\n"
              "pause 3\n"
              "shell cp /dev/shm/rwparam /dev/shm/rwparam_temp\n"
              "read astparam g device_name_sync_enable\n"
              "shell astparam s device_name_sync_enable 100000;\n"
              "shell astparam s a_d_tx_ch1_name \"Hall 1-01\"\n"
              "shell dapi --txch1_name \"Hall 1-01\" > /dev/null 2>&1\n"
              "pause 3\n"
              "shell cp /dev/shm/rwparam /dev/shm/rwparam_temp\n"
              "read astparam g device_name_sync_enable\n"
              "shell astparam s device_name_sync_enable 010000;\n"
              "shell astparam s a_d_tx_ch2_name \"Hall 1-02\"\n"
              "shell dapi --txch2_name \"Hall 1-02\" > /dev/null 2>&1\n"
              "pause 3\n"
              "shell astparam s a_d_rx_ch1_name \"In L\"  > /dev/null 2>&1\n"
              "shell dapi --rxch1_name \"In L\" > /dev/null 2>&1\n"
              "pause 3\n"
              "shell astparam s a_d_rx_ch2_name \"In R\" > /dev/null 2>&1\n"
              "shell dapi --rxch2_name \"In R\" > /dev/null 2>&1\n"
              "pause 3\n"
              "shell cp /dev/shm/rwparam /dev/shm/rwparam_temp\n"
              "read astparam g device_name_sync_enable\n"
              "shell astparam s device_name_sync_enable 000100;\n"
              "shell astparam s a_d_rx_ch1_name \"Hall 1-01\"\n"
              "shell dapi --rxch1_name \"Hall 1-01\" > /dev/null 2>&1\n"
              "pause 3\n"
              "shell cp /dev/shm/rwparam /dev/shm/rwparam_temp\n"
              "read astparam g device_name_sync_enable\n"
              "shell astparam s device_name_sync_enable 000010;\n"
              "shell astparam s a_d_rx_ch2_name \"Hall 1-02\"\n"
              "shell dapi --rxch2_name \"Hall 1-02\" > /dev/null 2>&1\n"
              "pause 3\n"
              "mcu setzavostreama,1\n"
              "shell astparam s a_a_stream_source 1;astparam s a_bridge_en y\n"
              "shell astparam s a_d_tx_enable 1\n"
              "shell dapi --txonoff 1 > /dev/null 2>&1\n"
              "pause 3\n"
              "shell astparam s a_addon dante;astparam s dante_op_mode audio-only;"
              "lmparam s A_ADDON dante;lmparam s DANTE_OP_MODE audio-only;\n"
              "pause 1\n"
              "pause 5\n"
              "shell echo 1 > /user_data2/no_dante_upgrade_config\n");
}

// --- The section's own members
// --------------------------------------------------------------------

TEST_F(Dante, ASectionThatOnlyNamesTheDeviceSwitchesTheAddOnOff) {
    EXPECT_EQ(apply(R"({"Dante_Name":"Hall \"1\" %s"})"),
              snapshot_trace +
                  "shell astparam s dante_device_name \"Hall \"1\" %s\" > /dev/null 2>&1\n"
                  "pause 1\n"
                  "shell reaload_dante_config.sh &\n" +
                  no_add_on);
}

TEST_F(Dante, NoDeviceNameIsNotApplied) {
    EXPECT_EQ(apply(R"({"dante_name":""})"), snapshot_trace + no_add_on);
    for (const std::string& value : not_texts) {
        EXPECT_EQ(apply(with_value(R"({"dante_name":@})", value)), snapshot_trace + no_add_on)
            << value;
    }
}

TEST_F(Dante, TheDeviceNamesFlagIsTheSixth) {
    answer_command("astparam g device_name_sync_enable", "101010");
    EXPECT_EQ(apply(R"({"dante_use_device_name":true})"),
              snapshot_trace + flags_read + flags_stored("101011") + no_add_on);
    answer_command("astparam g device_name_sync_enable", "111111");
    EXPECT_EQ(apply(R"({"Dante_Use_Device_Name":false})"),
              snapshot_trace + flags_read + flags_stored("111110") + no_add_on);
}

TEST_F(Dante, AFlagBehindTheTextDoesNotShowAndAtItsEndLengthensIt) {
    const struct {
        const char* present;
        const char* stored;
    } cases[] = {
        {"00000", "000001"}, {"0000", "0000"}, {"0", "0"}, {"", ""}, {"0000000", "0000010"}};
    for (const auto& each : cases) {
        answer_command("astparam g device_name_sync_enable", each.present);
        EXPECT_EQ(apply(R"({"dante_use_device_name":true})"),
                  snapshot_trace + flags_read + flags_stored(each.stored) + no_add_on)
            << each.present;
    }
}

TEST_F(Dante, FlagsThatAreNotDefinedAreStoredEmpty) {
    reset_recorder();
    set_rw_value("fm_version", "1");
    EXPECT_EQ(apply(R"({"dante_use_device_name":false})"),
              snapshot_trace + flags_read + flags_stored("") + no_add_on);
}

TEST_F(Dante, TheVideoChannelsFollowTheDeviceName) {
    EXPECT_EQ(apply(R"({"tx_video_use_device_name":true,"rx_video_use_device_name":false})"),
              snapshot_trace +
                  "shell astparam s a_d_tx_video_use_dn 1;\n"
                  "shell astparam s a_d_rx_video_use_dn 0;\n" +
                  no_add_on);
    EXPECT_EQ(apply(R"({"RX_video_use_device_name":true,"TX_video_use_device_name":false})"),
              snapshot_trace +
                  "shell astparam s a_d_tx_video_use_dn 0;\n"
                  "shell astparam s a_d_rx_video_use_dn 1;\n" +
                  no_add_on);
}

TEST_F(Dante, BooleansOfOtherTypesChangeNothing) {
    for (const char* document :
         {R"({"dante_use_device_name":@})", R"({"tx_video_use_device_name":@})",
          R"({"rx_video_use_device_name":@})", R"({"dante_ava":@})", R"({"dante_audio_only":@})"}) {
        for (const std::string& value : not_booleans) {
            EXPECT_EQ(apply(with_value(document, value)), snapshot_trace + no_add_on)
                << document << value;
        }
    }
}

TEST_F(Dante, VideoChannelNamesAndInformationChangeNothing) {
    EXPECT_EQ(apply(R"({"tx_video_ch_name":"a","rx_video_ch_name":"b","information":{"a":1}})"),
              snapshot_trace + no_add_on);
}

TEST_F(Dante, LeavingAvaGoesBackToMulticast) {
    const std::string back = "shell astparam s multicast_on y;\n";
    set_rw_value("a_addon", "dante");
    set_rw_value("dante_op_mode", "AV-A");
    EXPECT_EQ(apply(R"({"dante_ava":false})"), snapshot_trace + back + no_add_on + marker);
    EXPECT_EQ(apply(R"({"Dante_AVA":false,"dante_audio_only":true})"),
              snapshot_trace + back + audio_only + marker);
    EXPECT_EQ(apply(R"({"dante_ava":true})"), snapshot_trace + ava + marker);
    EXPECT_EQ(apply(R"({})"), snapshot_trace + no_add_on + marker);
    for (const std::string& value : not_booleans) {
        EXPECT_EQ(apply(with_value(R"({"dante_ava":@})", value)),
                  snapshot_trace + no_add_on + marker)
            << value;
    }
}

TEST_F(Dante, OnlyAUnitWithTheAddOnInThatModeGoesBackToMulticast) {
    const struct {
        const char* add_on;
        const char* mode;
        bool back;
    } cases[] = {{"dante", "AV-A", true},  {"dante2", "AV-A2", true},
                 {"dante", "AV-", false},  {"dante", "audio-only", false},
                 {"dante", "av-a", false}, {"dante", "", false},
                 {"dant", "AV-A", false},  {"none", "AV-A", false},
                 {"Dante", "AV-A", false}, {" dante", "AV-A", false}};
    for (const auto& each : cases) {
        reset_recorder();
        set_rw_value("fm_version", "1");
        set_rw_value("a_addon", each.add_on);
        set_rw_value("dante_op_mode", each.mode);
        const bool marked = std::string(each.add_on).starts_with("dante");
        EXPECT_EQ(apply(R"({"dante_ava":false})"),
                  snapshot_trace + (each.back ? "shell astparam s multicast_on y;\n" : "") +
                      no_add_on + (marked ? marker : ""))
            << each.add_on << " " << each.mode;
    }
}

// --- The add-on
// -----------------------------------------------------------------------------------

TEST_F(Dante, BothKindsOfAddOnAreStoredTheAudioOnlyOneLast) {
    EXPECT_EQ(apply(R"({"dante_ava":true,"dante_audio_only":true})"),
              snapshot_trace + ava_line + audio_only_line + "pause 5\n");
    EXPECT_EQ(apply(R"({"dante_ava":true,"dante_audio_only":false})"), snapshot_trace + ava);
    EXPECT_EQ(apply(R"({"dante_ava":true})"), snapshot_trace + ava);
    EXPECT_EQ(apply(R"({"DANTE_AVA":true})"), snapshot_trace + ava);
    EXPECT_EQ(apply(R"({"dante_ava":false,"dante_audio_only":true})"), snapshot_trace + audio_only);
    EXPECT_EQ(apply(R"({"dante_ava":3,"dante_audio_only":true})"), snapshot_trace + audio_only);
    EXPECT_EQ(apply(R"({"dante_audio_only":true})"), snapshot_trace + audio_only);
    EXPECT_EQ(apply(R"({"dante_audio_only":false})"), snapshot_trace + no_add_on);
    EXPECT_EQ(apply(R"({"Dante_Audio_Only":true})"), snapshot_trace + no_add_on);
}

TEST_F(Dante, ASectionWithoutMembersSwitchesTheAddOnOff) {
    for (const std::string& section : without_members) {
        EXPECT_EQ(apply(section), snapshot_trace + no_add_on) << section;
    }
}

TEST_F(Dante, NothingIsKeptFromOneSectionToTheNext) {
    apply(R"({"dante_ava":true,"dante_audio_only":true,"dante_audio":{"tx_ch1_name":"a"}})");
    EXPECT_EQ(apply("{}"), snapshot_trace + no_add_on);
}

TEST_F(Dante, WithoutTheAddOnTheVideoEnginesFirstDigitBecomesEight) {
    const struct {
        const char* present;
        const char* stored;  // empty: no line
    } cases[] = {
        {"0x80000000", "0x80000000"},
        {"0x80100000", "0x80100000"},
        {"0x00100000", "0x80100000"},
        {"0x00000000", "0x80000000"},
        {"0x0", "0x80000000"},
        {"0x8", "0x80000000"},
        {"", "0x80000000"},
        {"0x12345678", "0x82345678"},
        {"0x7", "0x8"},
        {"0x", "0x8"},
        {"12 0xF0x1", "0x80x1"},
        {"0X80000000", ""},
        {"8", ""},
        {"0x1%s%n", "0x8%s%n"},
    };
    for (const auto& each : cases) {
        reset_recorder();
        set_rw_value("fm_version", "1");
        set_rw_value("v_eng_drv_option", each.present);
        const std::string stored = each.stored;
        EXPECT_EQ(
            apply("{}"),
            snapshot_trace +
                (stored.empty() ? "" : "shell astparam s v_eng_drv_option " + stored + ";\n") +
                "shell astparam s a_addon none;astparam s dante_op_mode none;"
                "lmparam s A_ADDON none;lmparam s DANTE_OP_MODE none;\n"
                "pause 1\n"
                "pause 5\n")
            << each.present;
    }
}

TEST_F(Dante, AnUnreadableRunTimeStoreCountsAsAnEmptyOption) {
    reset_recorder();
    EXPECT_EQ(apply("{}"), snapshot_trace + no_add_on);
}

TEST_F(Dante, TheMarkerIsWrittenForAUnitThatHadTheAddOn) {
    set_rw_value("a_addon", "dante");
    EXPECT_EQ(apply("{}"), snapshot_trace + no_add_on + marker);
    EXPECT_EQ(apply(R"({"dante_ava":true})"), snapshot_trace + ava + marker);
    EXPECT_EQ(apply("[]"), snapshot_trace + no_add_on + marker);
}

// --- "dante_audio"
// --------------------------------------------------------------------------------

struct Channel {
    const char* key;        // "tx_ch1"
    const char* dapi;       // "txch1"
    const char* store_end;  // what stands behind the stored name
    size_t longest;         // bytes of a name that Dante takes
    const char* suffix;     // of a device name
    size_t flag;
};

const Channel channels[] = {
    {"tx_ch1", "txch1", "  > /dev/null 2>&1", 32, "-01", 0},
    {"tx_ch2", "txch2", " > /dev/null 2>&1", 31, "-02", 1},
    {"rx_ch1", "rxch1", "  > /dev/null 2>&1", 32, "-01", 3},
    {"rx_ch2", "rxch2", " > /dev/null 2>&1", 31, "-02", 4},
};

std::string name_stored(const Channel& channel, const std::string& name) {
    return std::string("shell astparam s a_d_") + channel.key + "_name \"" + name + "\"" +
           channel.store_end + "\n";
}

std::string name_sent(const Channel& channel, const std::string& name) {
    return std::string("shell dapi --") + channel.dapi + "_name \"" + name +
           "\" > /dev/null 2>&1\npause 3\n";
}

std::string device_name_stored(const Channel& channel, const std::string& name) {
    return std::string("shell astparam s a_d_") + channel.key + "_name \"" + name + channel.suffix +
           "\"\n";
}

std::string named(const Channel& channel, const std::string& name) {
    return std::string("{\"") + channel.key + "_name\":\"" + name + "\"}";
}

std::string following(const Channel& channel, const std::string& value) {
    return std::string("{\"") + channel.key + "_use_device_name\":" + value + "}";
}

std::string flags_with(const Channel& channel, char flag, std::string flags) {
    flags[channel.flag] = flag;
    return flags;
}

TEST_F(Dante, ChannelNamesAreMadePlain) {
    const struct {
        const char* name;
        const char* plain;
    } cases[] = {
        {"Hall 1/A", "Hall 1OA"},
        {"az AZ-09", "az AZ-09"},
        {"a_b.c%s", "aObOcOs"},
        {"a\\\"b\\tc", "aObOc"},
        {"S\xC3\xA4"
         "al",
         "SOOa"},
        {"\xE2\x82\xAC", "O"},
        {"\xE2\x82\xAC 1", "OOO"},
        {" ", " "},
    };
    for (const Channel& channel : channels) {
        for (const auto& each : cases) {
            EXPECT_EQ(apply_audio(named(channel, each.name)),
                      audio_trace_with_name(name_stored(channel, each.plain) +
                                            name_sent(channel, each.plain)))
                << channel.key << each.name;
        }
    }
}

TEST_F(Dante, ALongChannelNameIsStoredAndNotSent) {
    for (const Channel& channel : channels) {
        const std::string longest(channel.longest, 'n');
        EXPECT_EQ(
            apply_audio(named(channel, longest)),
            audio_trace_with_name(name_stored(channel, longest) + name_sent(channel, longest)))
            << channel.key;
        EXPECT_EQ(apply_audio(named(channel, longest + "n")),
                  audio_trace(name_stored(channel, longest + "n")))
            << channel.key;
        const std::string very_long(5000, 'n');
        EXPECT_EQ(apply_audio(named(channel, very_long)),
                  audio_trace(name_stored(channel, very_long)))
            << channel.key;
    }
}

// 17 letters of two bytes: 34 bytes, of which as many remain as the name has letters.
TEST_F(Dante, TheLimitIsThatOfThePlainName) {
    std::string name;
    for (int i = 0; i < 17; i++) {
        name += "\xC3\xA4";
    }
    const std::string plain(17, 'O');
    EXPECT_EQ(
        apply_audio(named(channels[0], name)),
        audio_trace_with_name(name_stored(channels[0], plain) + name_sent(channels[0], plain)));
}

TEST_F(Dante, ALongNameDoesNotTakeBackThatAnotherWasSent) {
    const std::string longer(33, 'n');
    EXPECT_EQ(apply_audio(R"({"tx_ch1_name":"a","rx_ch1_name":")" + longer + R"("})"),
              audio_trace_with_name(name_stored(channels[0], "a") + name_sent(channels[0], "a") +
                                    name_stored(channels[2], longer)));
    EXPECT_EQ(apply_audio(R"({"tx_ch1_name":")" + longer + R"(","tx_ch2_name":"a"})"),
              audio_trace_with_name(name_stored(channels[0], longer) +
                                    name_stored(channels[1], "a") + name_sent(channels[1], "a")));
}

TEST_F(Dante, ChannelNamesOfOtherTypesChangeNothing) {
    for (const Channel& channel : channels) {
        EXPECT_EQ(apply_audio(named(channel, "")), audio_trace("")) << channel.key;
        for (const std::string& value : not_texts) {
            EXPECT_EQ(apply_audio(std::string("{\"") + channel.key + "_name\":" + value + "}"),
                      audio_trace(""))
                << channel.key << value;
        }
    }
}

TEST_F(Dante, AChannelThatFollowsTakesTheDeviceName) {
    for (const Channel& channel : channels) {
        EXPECT_EQ(apply_audio(following(channel, "true")),
                  audio_trace_with_name(snapshot_trace + flags_read +
                                        flags_stored(flags_with(channel, '1', "000000")) +
                                        device_name_stored(channel, "Hall 1") +
                                        name_sent(channel, std::string("Hall 1") + channel.suffix)))
            << channel.key;
    }
}

TEST_F(Dante, AChannelThatNoLongerFollowsKeepsItsName) {
    answer_command("astparam g device_name_sync_enable", "111111");
    for (const Channel& channel : channels) {
        EXPECT_EQ(apply_audio(following(channel, "false")),
                  audio_trace(snapshot_trace + flags_read +
                              flags_stored(flags_with(channel, '0', "111111"))))
            << channel.key;
        for (const std::string& value : not_booleans) {
            EXPECT_EQ(apply_audio(following(channel, value)), audio_trace(""))
                << channel.key << value;
        }
    }
}

TEST_F(Dante, ALongDeviceNameIsStoredAndNotSent) {
    for (const Channel& channel : channels) {
        for (const size_t length : {31UL, 32UL}) {
            const std::string name(length, 'n');
            reset_recorder();
            set_rw_value("fm_version", "1");
            set_rw_value("deviceName", name);
            answer_command("astparam g device_name_sync_enable", "000000");
            const std::string told = snapshot_trace + flags_read +
                                     flags_stored(flags_with(channel, '1', "000000")) +
                                     device_name_stored(channel, name);
            EXPECT_EQ(apply_audio(following(channel, "true")),
                      length == 31
                          ? audio_trace_with_name(told + name_sent(channel, name + channel.suffix))
                          : audio_trace(told))
                << channel.key << length;
        }
    }
}

TEST_F(Dante, TheDeviceNameIsMadePlainToo) {
    reset_recorder();
    set_rw_value("fm_version", "1");
    set_rw_value("deviceName",
                 "H\xC3\xB6"
                 "rsaal 1/2");
    answer_command("astparam g device_name_sync_enable", "000000");
    EXPECT_EQ(apply_audio(following(channels[3], "true")),
              audio_trace_with_name(snapshot_trace + flags_read + flags_stored("000010") +
                                    device_name_stored(channels[3], "HOOrsaal 1O") +
                                    name_sent(channels[3], "HOOrsaal 1O-02")));
}

TEST_F(Dante, AnEmptyDeviceNameLeavesTheSuffix) {
    reset_recorder();
    set_rw_value("fm_version", "1");
    answer_command("astparam g device_name_sync_enable", "000000");
    EXPECT_EQ(
        apply_audio(following(channels[0], "true")),
        audio_trace_with_name(snapshot_trace + flags_read + flags_stored("100000") +
                              device_name_stored(channels[0], "") + name_sent(channels[0], "-01")));
}

TEST_F(Dante, AChannelsFlagAtTheEndLengthensTheText) {
    const struct {
        size_t channel;
        const char* present;
        const char* stored;
    } cases[] = {{0, "", "0"},    {1, "1", "10"},       {1, "", ""},  {2, "111", "1110"},
                 {2, "11", "11"}, {3, "1111", "11110"}, {3, "1", "1"}};
    for (const auto& each : cases) {
        answer_command("astparam g device_name_sync_enable", each.present);
        EXPECT_EQ(apply_audio(following(channels[each.channel], "false")),
                  audio_trace(snapshot_trace + flags_read + flags_stored(each.stored)))
            << each.channel << each.present;
    }
}

TEST_F(Dante, ChannelMembersIgnoreCase) {
    EXPECT_EQ(apply(R"({"dante_audio_only":true,
                        "Dante_Audio":{"TX_CH1_NAME":"a","Tx_Ch1_Use_Device_Name":false}})"),
              audio_trace_with_name(name_stored(channels[0], "a") + name_sent(channels[0], "a") +
                                    snapshot_trace + flags_read + flags_stored("000000")));
}

TEST_F(Dante, TheBridgeIsToldToTheFrontPanelOnlyWithTheAddOn) {
    const std::string on = "shell astparam s a_a_stream_source 1;astparam s a_bridge_en y\n";
    const std::string off = "shell astparam s a_a_stream_source 0;astparam s a_bridge_en n\n";
    EXPECT_EQ(apply_audio(R"({"zavo_audio_bridge":true})"), audio_trace(on));
    EXPECT_EQ(apply_audio(R"({"zavo_audio_bridge":false})"), audio_trace(off));
    set_rw_value("a_addon", "dante");
    EXPECT_EQ(apply_audio(R"({"zavo_audio_bridge":true})"),
              audio_trace("mcu setzavostreama,1\n" + on) + marker);
    EXPECT_EQ(apply_audio(R"({"zavo_audio_bridge":false})"),
              audio_trace("mcu setzavostreama,0\n" + off) + marker);
}

TEST_F(Dante, TransmittingIsStoredAndSwitched) {
    EXPECT_EQ(apply_audio(R"({"tx_enable":true})"),
              audio_trace("shell astparam s a_d_tx_enable 1\n"
                          "shell dapi --txonoff 1 > /dev/null 2>&1\n"
                          "pause 3\n"));
    EXPECT_EQ(apply_audio(R"({"tx_enable":false})"),
              audio_trace("shell astparam s a_d_tx_enable 0\n"
                          "shell dapi --txonoff 0 > /dev/null 2>&1\n"
                          "pause 3\n"));
}

TEST_F(Dante, SwitchesOfOtherTypesOrCaseChangeNothing) {
    set_rw_value("a_addon", "dante");
    for (const char* key : {"zavo_audio_bridge", "tx_enable", "tx_audio_mute", "rx_enable"}) {
        for (const std::string& value : not_booleans) {
            EXPECT_EQ(apply_audio(std::string("{\"") + key + "\":" + value + "}"),
                      audio_trace_with_name(""))
                << key << value;
        }
    }
    EXPECT_EQ(apply_audio(R"({"Zavo_Audio_Bridge":true,"TX_enable":true})"),
              audio_trace_with_name(""));
    EXPECT_EQ(apply_audio(R"({"tx_audio_mute":true,"rx_enable":false})"),
              audio_trace_with_name(""));
}

TEST_F(Dante, AnAudioObjectWithoutMembersChangesNothing) {
    for (const std::string& value : without_members) {
        EXPECT_EQ(apply_audio(value), audio_trace("")) << value;
        EXPECT_EQ(apply(with_value(R"({"dante_audio":@,"dante_ava":true})", value)),
                  snapshot_trace + ava)
            << value;
        EXPECT_EQ(apply(with_value(R"({"dante_audio":@})", value)), snapshot_trace + no_add_on)
            << value;
    }
}

// --- The table
// ------------------------------------------------------------------------------------

TEST(DanteTable, NamesItsSectionAndModels) {
    EXPECT_STREQ(dante_table.section, "dante");
    EXPECT_EQ(dante_table.models, every_model);
}

}  // namespace
