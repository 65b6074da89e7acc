#include <gtest/gtest.h>

#include <string>

#include "tests/support/applying.h"
#include "tests/support/recorder.h"
#include "tests/support/table_checks.h"
#include "unitconf/sections.h"
#include "unitconf/tables.h"

namespace {

struct Case {
    const char* document;
    const char* trace;
};

class PanelSystem : public testing::Test {
  protected:
    void SetUp() override {
        reset_recorder();
    }
};

// --- oled_display
// ---------------------------------------------------------------------------------

using OledDisplay = PanelSystem;

TEST_F(OledDisplay, AWholeSectionIsAppliedInOrder) {
    EXPECT_EQ(trace_of(apply_oled_display_section, R"({
                  "custom_text_content": "ext. 4321 %d", "custom_text": true, "resolution": true,
                  "video_stream_number": true, "serial_number": true, "firmware_version": true,
                  "mac_address": true, "ip_address": true, "device_name": true,
                  "lines_changing_time": 5, "always_on": true})"),
              R"(pause 1
mcu oledkeep,on
pause 1
mcu oledrefresh,5
pause 1
shell astparam s o_d_is_device_name 1;
shell astparam s o_d_is_ip 1;
shell astparam s o_d_is_mac 1;
shell astparam s o_d_is_fwversion 1;
shell astparam s o_d_is_serial_number 1;
shell astparam s o_d_is_stream_number 1;
shell astparam s o_d_is_resolution 1;
shell astparam s o_d_is_custom 1;
shell astparam s o_d_is_custom_text "ext. 4321 %d" > /dev/null 2>&1
shell init_send_oled > /dev/null 2>&1
pause 1
)");
}

TEST_F(OledDisplay, EveryFlagHasItsOtherLine) {
    EXPECT_EQ(trace_of(apply_oled_display_section, R"({
                  "always_on": false, "lines_changing_time": -3.7, "device_name": false,
                  "ip_address": false, "mac_address": false, "firmware_version": false,
                  "serial_number": false, "video_stream_number": false, "resolution": false,
                  "custom_text": false, "custom_text_content": ""})"),
              R"(pause 1
mcu oledkeep,off
pause 1
mcu oledrefresh,-3
pause 1
shell astparam s o_d_is_device_name 0;
shell astparam s o_d_is_ip 0;
shell astparam s o_d_is_mac 0;
shell astparam s o_d_is_fwversion 0;
shell astparam s o_d_is_serial_number 0;
shell astparam s o_d_is_stream_number 0;
shell astparam s o_d_is_resolution 0;
shell astparam s o_d_is_custom 0;
shell init_send_oled > /dev/null 2>&1
pause 1
)");
}

TEST_F(OledDisplay, AnEmptySectionStillPausesAndRefreshesTheDisplay) {
    EXPECT_EQ(trace_of(apply_oled_display_section, "{}"),
              "pause 1\npause 1\npause 1\nshell init_send_oled > /dev/null 2>&1\npause 1\n");
}

// --- auto_status
// ----------------------------------------------------------------------------------

using AutoStatus = PanelSystem;

TEST_F(AutoStatus, AWholeSectionIsAppliedInOrder) {
    EXPECT_EQ(trace_of(apply_auto_status_section,
                       R"({"status_interval":60,"status_ip":"10.20.10.40","status_port":5200,
                           "enable":true})"),
              R"(shell astparam s auto_status_enable 1;
shell astparam s auto_status_port 5200 > /dev/null 2>&1
shell astparam s auto_status_ipaddr 10.20.10.40 > /dev/null 2>&1
shell astparam s auto_status_interval 60;
shell e e_chg_auto_sta
pause 1
)");
    EXPECT_EQ(trace_of(apply_auto_status_section,
                       R"({"enable":false,"status_port":-1,"status_interval":1e99})"),
              R"(shell astparam s auto_status_enable 0;
shell astparam s auto_status_port -1 > /dev/null 2>&1
shell astparam s auto_status_interval 2147483647;
shell e e_chg_auto_sta
pause 1
)");
}

TEST_F(AutoStatus, AnEmptySectionStillTellsTheServiceAndPauses) {
    EXPECT_EQ(trace_of(apply_auto_status_section, "{}"), "shell e e_chg_auto_sta\npause 1\n");
}

// --- fan_control
// ----------------------------------------------------------------------------------

using FanControl = PanelSystem;

struct SpeedCase {
    const char* setting;
    int sent;    // the level of a fan that is switched on; -1 sends nothing
    int stored;  // the level kept for a fan that is switched off
};

constexpr SpeedCase speed_cases[] = {
    {"\"off\"", 0, 0},
    {"\"extra low\"", 1, 1},
    {"\"low\"", 2, 2},
    {"\"medium\"", 3, 3},
    {"\"high\"", 4, 4},
    {"\"super high\"", 5, 5},
    {"\"auto\"", 6, 6},
    {"0", 0, 0},
    {"1", 1, 1},
    {"2", 2, 2},
    {"3", 3, 3},
    {"4", 4, 4},
    {"5", 5, 5},
    {"6", 6, 6},
    {"6.9", 6, 6},
    {"-0.9", 0, 0},
    // A level that does not exist stops the fan, and is kept as it came.
    {"7", 0, 7},
    {"9", 0, 9},
    {"1e99", 0, 2147483647},
    // No level.
    {"-1", -1, -1},
    {"-2", -1, -2},
    {"-1e99", -1, -2147483647 - 1},
    {"\"Auto\"", -1, -1},
    {"\"AUTO\"", -1, -1},
    {"\"extra  low\"", -1, -1},
    {"\"\"", -1, -1},
    {"\"3\"", -1, -1},
    {"null", -1, -1},
    {"true", -1, -1},
    {"[3]", -1, -1},
    {"{}", -1, -1},
};

TEST_F(FanControl, AFanThatIsSwitchedOnRunsAtItsLevel) {
    for (const SpeedCase& each : speed_cases) {
        const std::string command =
            each.sent < 0 ? "" : "mcu fanspeed," + std::to_string(each.sent) + "\n";
        EXPECT_EQ(trace_of(apply_fan_control_section,
                           std::string(R"({"enable":true,"speed_setting":)") + each.setting + "}"),
                  "pause 1\n" + command + "pause 1\n")
            << each.setting;
    }
}

TEST_F(FanControl, AFanThatIsSwitchedOffStopsAndKeepsTheLevelForLater) {
    for (const SpeedCase& each : speed_cases) {
        EXPECT_EQ(trace_of(apply_fan_control_section, std::string(R"({"speed_setting":)") +
                                                          each.setting + R"(,"enable":false})"),
                  "pause 1\nmcu fanspeed,0\nshell astparam s fancontrol_bk " +
                      std::to_string(each.stored) + ";\npause 1\n")
            << each.setting;
    }
}

TEST_F(FanControl, TheSpeedIsFoundInAnyCaseAndTheSwitchByItsOwn) {
    static constexpr Case cases[] = {
        {R"({"enable":true,"Speed_Setting":"low"})", "pause 1\nmcu fanspeed,2\npause 1\n"},
        {R"({"enable":false,"SPEED_SETTING":"low"})",
         "pause 1\nmcu fanspeed,0\nshell astparam s fancontrol_bk 2;\npause 1\n"},
        {R"({"Enable":true,"speed_setting":"low"})", "pause 1\npause 1\n"},
        {R"({"Enable":false,"speed_setting":"low"})", "pause 1\npause 1\n"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(trace_of(apply_fan_control_section, each.document), each.trace) << each.document;
    }
}

TEST_F(FanControl, WithoutASpeedOnlyAStopIsSent) {
    EXPECT_EQ(trace_of(apply_fan_control_section, R"({"enable":true})"), "pause 1\npause 1\n");
    EXPECT_EQ(trace_of(apply_fan_control_section, R"({"enable":false})"),
              "pause 1\nmcu fanspeed,0\nshell astparam s fancontrol_bk -1;\npause 1\n");
}

TEST_F(FanControl, ASwitchThatIsNoBooleanOnlyPauses) {
    for (const char* other : {"1", "0", "\"true\"", "null", "[]", "{}"}) {
        EXPECT_EQ(trace_of(apply_fan_control_section,
                           std::string(R"({"enable":)") + other + R"(,"speed_setting":"auto"})"),
                  "pause 1\npause 1\n")
            << other;
    }
    EXPECT_EQ(trace_of(apply_fan_control_section, R"({"speed_setting":3})"), "pause 1\npause 1\n");
    EXPECT_EQ(trace_of(apply_fan_control_section, "{}"), "pause 1\npause 1\n");
}

// --- front_panel_lock
// -----------------------------------------------------------------------------

using FrontPanelLock = PanelSystem;

TEST_F(FrontPanelLock, TheSectionItselfIsTheSwitch) {
    EXPECT_EQ(trace_of(apply_front_panel_lock_section, "true"),
              "pause 1\nmcu fplock,on\npause 1\n");
    EXPECT_EQ(trace_of(apply_front_panel_lock_section, "false"),
              "pause 1\nmcu fplock,off\npause 1\n");
}

TEST_F(FrontPanelLock, AnotherTypeOnlyPauses) {
    for (const char* other :
         {"{}", R"({"enable":true})", "[]", "[true]", "null", "1", "0", "\"on\"", "\"\""}) {
        EXPECT_EQ(trace_of(apply_front_panel_lock_section, other), "pause 1\npause 1\n") << other;
    }
}

// --- aes67
// ----------------------------------------------------------------------------------------

using Aes67 = PanelSystem;

TEST_F(Aes67, NothingIsDoneWhateverItHolds) {
    for (const char* section : {"{}", R"({"enable":true})", "true", "null", "[]", "3", "\"x\""}) {
        EXPECT_EQ(trace_of(apply_aes67_section, section), "") << section;
    }
}

// --- date_and_time
// --------------------------------------------------------------------------------

using DateAndTime = PanelSystem;

TEST_F(DateAndTime, AWholeSectionIsAppliedInOrder) {
    EXPECT_EQ(trace_of(apply_date_and_time_section, R"({
                  "clock_format": 24, "daylight_save_time": true, "time_zone": "Europe/Berlin",
                  "secondary_ntp_server": "10.20.10.2", "primary_ntp_server": "ntp1.example.com",
                  "enable": true})"),
              R"(shell astparam s ntp_enable 1;
shell astparam s primary_ntp_server ntp1.example.com > /dev/null 2>&1
shell astparam s secondary_ntp_server 10.20.10.2 > /dev/null 2>&1
shell astparam s ntp_time_zone Europe/Berlin > /dev/null 2>&1
shell astparam s ntp_daylight_save_time 1;
shell astparam s ntp_clock_format 24 > /dev/null 2>&1
)");
    EXPECT_EQ(trace_of(apply_date_and_time_section,
                       R"({"enable":false,"daylight_save_time":false,"clock_format":-1})"),
              "shell astparam s ntp_enable 0;\n"
              "shell astparam s ntp_daylight_save_time 0;\n"
              "shell astparam s ntp_clock_format -1 > /dev/null 2>&1\n");
    EXPECT_EQ(trace_of(apply_date_and_time_section, "{}"), "");
}

// --- debug
// ----------------------------------------------------------------------------------------

using Debug = PanelSystem;

TEST_F(Debug, TheLogsAreSwitchedInOrderBehindASnapshot) {
    EXPECT_EQ(
        trace_of(apply_debug_section, R"({"debug_log_enable":true,"command_log_enable":true})"),
        snapshot_trace + "shell astparam s dm_log 1;\nshell astparam s logEnable 1;\n");
    EXPECT_EQ(
        trace_of(apply_debug_section, R"({"command_log_enable":false,"debug_log_enable":false})"),
        snapshot_trace + "shell astparam s dm_log 0;\nshell astparam s logEnable 0;\n");
    EXPECT_EQ(trace_of(apply_debug_section, "{}"), snapshot_trace);
}

// --- ssh
// ------------------------------------------------------------------------------------------

using Ssh = PanelSystem;

TEST_F(Ssh, AWholeSectionIsAppliedInOrder) {
    EXPECT_EQ(trace_of(apply_ssh_section,
                       R"({"port":22,"password":"p %s $w","username":"av admin","enable":true})"),
              R"(shell astparam s ssh_enable 1;
shell astparam s ssh_username "av admin";
shell astparam s ssh_password "p %s $w";
shell astparam s ssh_port 22;
)");
    EXPECT_EQ(
        trace_of(apply_ssh_section, R"({"enable":false,"username":"","password":"","port":0})"),
        "shell astparam s ssh_enable 0;\nshell astparam s ssh_port 0;\n");
    EXPECT_EQ(trace_of(apply_ssh_section, "{}"), "");
}

// --- power
// ----------------------------------------------------------------------------------------

using Power = PanelSystem;

TEST_F(Power, TheThreeStatesAreSentAsTheyStand) {
    for (const std::string state : {"poweron", "poweroff", "powerlow"}) {
        EXPECT_EQ(trace_of(apply_power_section, R"({"power_status":")" + state + R"("})"),
                  "pause 1\nmcu " + state + "\npause 1\n");
    }
}

TEST_F(Power, AnotherStateOnlyPauses) {
    for (const char* other : {"\"standby\"", "\"PowerOn\"", "\"poweron \"", "\"power\"", "\"\"",
                              "\"%s\"", "true", "1", "null", "[\"poweron\"]", "{}"}) {
        EXPECT_EQ(trace_of(apply_power_section, std::string(R"({"power_status":)") + other + "}"),
                  "pause 1\npause 1\n")
            << other;
    }
    EXPECT_EQ(trace_of(apply_power_section, "{}"), "pause 1\npause 1\n");
    EXPECT_EQ(trace_of(apply_power_section, "\"poweron\""), "pause 1\npause 1\n");
}

// --- All of them
// ----------------------------------------------------------------------------------

struct SectionUnderTest {
    Applier apply;
    const SectionTable* table;
};

constexpr SectionUnderTest sections[] = {
    {apply_oled_display_section, &oled_display_table},
    {apply_auto_status_section, &auto_status_table},
    {apply_fan_control_section, &fan_control_table},
    {apply_date_and_time_section, &date_and_time_table},
    {apply_debug_section, &debug_table},
    {apply_ssh_section, &ssh_table},
    {apply_power_section, &power_table},
};

TEST_F(PanelSystem, AMemberOfAnotherTypeCountsAsAbsent) {
    for (const SectionUnderTest& section : sections) {
        expect_wrong_types_to_count_as_absent(section.apply, *section.table);
    }
}

TEST_F(PanelSystem, OnlyBooleansNeedTheirExactCase) {
    for (const SectionUnderTest& section : sections) {
        expect_only_booleans_to_need_exact_case(section.apply, *section.table);
    }
}

TEST_F(PanelSystem, ASectionThatIsNoObjectIsTakenAsEmpty) {
    for (const SectionUnderTest& section : sections) {
        expect_other_sections_to_be_taken_as_empty(section.apply);
    }
}

}  // namespace
