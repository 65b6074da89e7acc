// The front panel and the general behaviour of the unit: display, status reports, fan, key lock,
// time, logging, SSH and the power state.
#include "device/lines.h"
#include "device/snapshot.h"
#include "device/unit.h"
#include "unitconf/members.h"
#include "unitconf/sections.h"
#include "unitconf/tables.h"

// --- "oled_display" ------------------------------------------------------------------------------

static constexpr Member oled_display_members[] = {
    pause(1),
    flag("always_on", mcu("oledkeep,on"), mcu("oledkeep,off"), pause_always(1)),
    number("lines_changing_time", mcu("oledrefresh,%d"), pause_always(1)),
    flag("device_name", "astparam s o_d_is_device_name 1;", "astparam s o_d_is_device_name 0;"),
    flag("ip_address", "astparam s o_d_is_ip 1;", "astparam s o_d_is_ip 0;"),
    flag("mac_address", "astparam s o_d_is_mac 1;", "astparam s o_d_is_mac 0;"),
    flag("firmware_version", "astparam s o_d_is_fwversion 1;", "astparam s o_d_is_fwversion 0;"),
    flag("serial_number", "astparam s o_d_is_serial_number 1;",
         "astparam s o_d_is_serial_number 0;"),
    flag("video_stream_number", "astparam s o_d_is_stream_number 1;",
         "astparam s o_d_is_stream_number 0;"),
    flag("resolution", "astparam s o_d_is_resolution 1;", "astparam s o_d_is_resolution 0;"),
    flag("custom_text", "astparam s o_d_is_custom 1;", "astparam s o_d_is_custom 0;"),
    text("custom_text_content", "astparam s o_d_is_custom_text \"%s\" > /dev/null 2>&1"),
    always("init_send_oled > /dev/null 2>&1", pause_always(1)),
};
static_assert(well_formed(oled_display_members));

void apply_oled_display_section(const cJSON* section) {
    apply_members(section, oled_display_members);
}

// --- "auto_status" -------------------------------------------------------------------------------

static constexpr Member auto_status_members[] = {
    flag("enable", "astparam s auto_status_enable 1;", "astparam s auto_status_enable 0;"),
    number("status_port", "astparam s auto_status_port %d > /dev/null 2>&1"),
    text("status_ip", "astparam s auto_status_ipaddr %s > /dev/null 2>&1"),
    number("status_interval", "astparam s auto_status_interval %d;"),
    always("e e_chg_auto_sta", pause_always(1)),
};
static_assert(well_formed(auto_status_members));

void apply_auto_status_section(const cJSON* section) {
    apply_members(section, auto_status_members);
}

// --- "fan_control" -------------------------------------------------------------------------------

static constexpr int fastest_fan_level = 6;

static constexpr Word fan_speed_words[] = {
    {"off", 0},  {"extra low", 1},  {"low", 2},  {"medium", 3},
    {"high", 4}, {"super high", 5}, {"auto", 6},
};

// A word's level, a number's own value, or -1.
static int parse_fan_speed(const cJSON* speed) {
    return choice_code(speed, fan_speed_words);
}

// A fan that is switched off stops, and the level to go back to later is kept as the document has
// it, -1 when it names none.
static bool switch_fan_off(const Section& section, const cJSON* enable) {
    if (!cJSON_IsFalse(enable)) {
        return false;
    }
    send_mcu_command("fanspeed,0");
    run_shell_format("astparam s fancontrol_bk %d;",
                     parse_fan_speed(find_member(section.object, "speed_setting")));
    return true;
}

// A fan that is switched on runs at its level; one that does not exist stops it.
static bool set_fan_speed(const Section& section, const cJSON* speed) {
    const int level = parse_fan_speed(speed);
    if (!cJSON_IsTrue(find_member(section.object, "enable", Case::exact)) || level < 0) {
        return false;
    }
    send_mcu_format("fanspeed,%d", level <= fastest_fan_level ? level : 0);
    return true;
}

static constexpr Member fan_control_members[] = {
    pause(1),
    handled("enable", JsonType::boolean, switch_fan_off),
    handled("speed_setting", JsonType::number_or_string, set_fan_speed, {}, fan_speed_words),
    pause(1),
};
static_assert(well_formed(fan_control_members));

void apply_fan_control_section(const cJSON* section) {
    apply_members(section, fan_control_members);
}

// --- "front_panel_lock": a boolean and no members ------------------------------------------------

void apply_front_panel_lock_section(const cJSON* section) {
    pause_seconds(1);
    if (cJSON_IsBool(section)) {
        send_mcu_command(cJSON_IsTrue(section) ? "fplock,on" : "fplock,off");
    }
    pause_seconds(1);
}

// --- "aes67": reserved ---------------------------------------------------------------------------

void apply_aes67_section(const cJSON* /*section*/) {}

// --- "date_and_time" -----------------------------------------------------------------------------

static constexpr Member date_and_time_members[] = {
    flag("enable", "astparam s ntp_enable 1;", "astparam s ntp_enable 0;"),
    text("primary_ntp_server", "astparam s primary_ntp_server %s > /dev/null 2>&1"),
    text("secondary_ntp_server", "astparam s secondary_ntp_server %s > /dev/null 2>&1"),
    text("time_zone", "astparam s ntp_time_zone %s > /dev/null 2>&1"),
    flag("daylight_save_time", "astparam s ntp_daylight_save_time 1;",
         "astparam s ntp_daylight_save_time 0;"),
    number("clock_format", "astparam s ntp_clock_format %d > /dev/null 2>&1"),
};
static_assert(well_formed(date_and_time_members));

void apply_date_and_time_section(const cJSON* section) {
    apply_members(section, date_and_time_members);
}

// --- "debug" -------------------------------------------------------------------------------------

static constexpr Member debug_members[] = {
    flag("command_log_enable", "astparam s dm_log 1;", "astparam s dm_log 0;"),
    flag("debug_log_enable", "astparam s logEnable 1;", "astparam s logEnable 0;"),
};
static_assert(well_formed(debug_members));

void apply_debug_section(const cJSON* section) {
    // No row looks at the present values; taking them is part of what the unit sees.
    apply_members_with_snapshot(section, debug_members);
}

// --- "ssh" ---------------------------------------------------------------------------------------

static constexpr Member ssh_members[] = {
    flag("enable", "astparam s ssh_enable 1;", "astparam s ssh_enable 0;"),
    text("username", "astparam s ssh_username \"%s\";"),
    text("password", "astparam s ssh_password \"%s\";"),
    number("port", "astparam s ssh_port %d;"),
};
static_assert(well_formed(ssh_members));

void apply_ssh_section(const cJSON* section) {
    apply_members(section, ssh_members);
}

// --- "power" -------------------------------------------------------------------------------------

// The microcontroller's commands are the document's words.
static constexpr Word power_words[] = {
    {"poweron", "poweron"},
    {"poweroff", "poweroff"},
    {"powerlow", "powerlow"},
};

static constexpr Member power_members[] = {
    pause(1),
    translated("power_status", power_words, mcu("%s"), pause_always(1)),
};
static_assert(well_formed(power_members));

void apply_power_section(const cJSON* section) {
    apply_members(section, power_members);
}

// --- The tables as others see them ---------------------------------------------------------------

const SectionTable oled_display_table = {"oled_display", every_model, oled_display_members};
const SectionTable auto_status_table = {"auto_status", every_model, auto_status_members};
const SectionTable fan_control_table = {"fan_control", every_model, fan_control_members};
const SectionTable date_and_time_table = {"date_and_time", every_model, date_and_time_members};
const SectionTable debug_table = {"debug", every_model, debug_members};
const SectionTable ssh_table = {"ssh", every_model, ssh_members};
const SectionTable power_table = {"power", every_model, power_members};
