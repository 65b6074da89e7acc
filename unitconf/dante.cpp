// Dante: the device's and the channels' names, transmitting, the bridge to the stream audio, and
// whether the unit runs the Dante add-on at all.
#include <cstdlib>
#include <cstring>

#include "device/lines.h"
#include "device/parameters.h"
#include "device/snapshot.h"
#include "device/unit.h"
#include "unitconf/members.h"
#include "unitconf/names.h"
#include "unitconf/sections.h"
#include "unitconf/tables.h"
#include "unitconf/video_engine.h"

// What the members leave behind for the steps that follow them.
struct DanteRequest {
    bool ava;           // audio and video over Dante is wanted
    bool audio_only;    // the audio-only add-on is wanted
    bool channel_sent;  // a channel name went to the Dante device
};

static DanteRequest request;

static bool has_dante_add_on(const ParameterSnapshot* present) {
    return strncmp(present->value[slot_a_addon], "dante", 5) == 0;
}

// --- Channel names -------------------------------------------------------------------------------

// How a channel is named: the line that stores the name and the one that hands it to the Dante
// device, which takes names up to a length.
struct ChannelNaming {
    const char* store;
    const char* send;
    size_t longest_sent;  // bytes, without what the line adds
};

static constexpr ChannelNaming tx_channel_1 = {
    "astparam s a_d_tx_ch1_name \"%s\"  > /dev/null 2>&1",
    "dapi --txch1_name \"%s\" > /dev/null 2>&1", 32};
static constexpr ChannelNaming tx_channel_2 = {"astparam s a_d_tx_ch2_name \"%s\" > /dev/null 2>&1",
                                               "dapi --txch2_name \"%s\" > /dev/null 2>&1", 31};
static constexpr ChannelNaming rx_channel_1 = {
    "astparam s a_d_rx_ch1_name \"%s\"  > /dev/null 2>&1",
    "dapi --rxch1_name \"%s\" > /dev/null 2>&1", 32};
static constexpr ChannelNaming rx_channel_2 = {"astparam s a_d_rx_ch2_name \"%s\" > /dev/null 2>&1",
                                               "dapi --rxch2_name \"%s\" > /dev/null 2>&1", 31};

// The same where a channel follows the device name, while its flag says so.
struct SyncedChannel {
    NameSyncFlag flag;
    ChannelNaming naming;
};

static constexpr SyncedChannel following_tx_channel_1 = {
    sync_tx_channel_1,
    {"astparam s a_d_tx_ch1_name \"%s-01\"", "dapi --txch1_name \"%s-01\" > /dev/null 2>&1", 31}};
static constexpr SyncedChannel following_tx_channel_2 = {
    sync_tx_channel_2,
    {"astparam s a_d_tx_ch2_name \"%s-02\"", "dapi --txch2_name \"%s-02\" > /dev/null 2>&1", 31}};
static constexpr SyncedChannel following_rx_channel_1 = {
    sync_rx_channel_1,
    {"astparam s a_d_rx_ch1_name \"%s-01\"", "dapi --rxch1_name \"%s-01\" > /dev/null 2>&1", 31}};
static constexpr SyncedChannel following_rx_channel_2 = {
    sync_rx_channel_2,
    {"astparam s a_d_rx_ch2_name \"%s-02\"", "dapi --rxch2_name \"%s-02\" > /dev/null 2>&1", 31}};

// A channel has a plain form of the name, in which blanks stay. It is made of as many bytes as the
// name has characters, so a multi-byte name loses its tail.
static void set_channel_name(const ChannelNaming& naming, const char* name) {
    char* plain = plain_name(name, utf8_characters(name), ' ');
    if (plain == nullptr) {
        return;
    }
    send_filled_line(Channel::shell, naming.store, plain);
    if (strlen(plain) <= naming.longest_sent) {
        send_filled_line(Channel::shell, naming.send, plain);
        pause_seconds(3);
        request.channel_sent = true;
    }
    free(plain);
}

template <const ChannelNaming& naming>
static bool name_channel(const Section& /*section*/, const cJSON* item) {
    const char* name = nonempty_text(item);
    if (name == nullptr) {
        return false;
    }
    set_channel_name(naming, name);
    return true;
}

// The device name is read again for each channel: it may have been set a moment ago.
static bool follow_device_name(const SyncedChannel& channel, const cJSON* item) {
    if (!cJSON_IsBool(item)) {
        return false;
    }
    const bool on = cJSON_IsTrue(item);
    ParameterSnapshot present;
    take_snapshot(&present);
    store_name_sync_flag(channel.flag, on);
    if (on) {
        set_channel_name(channel.naming, present.value[slot_device_name]);
    }
    return true;
}

template <const SyncedChannel& channel>
static bool follow_device_name(const Section& /*section*/, const cJSON* item) {
    return follow_device_name(channel, item);
}

// --- Transmitting and the bridge -----------------------------------------------------------------

// The front panel is told only on a unit that has the add-on.
static bool bridge_stream_audio(const Section& section, const cJSON* item) {
    if (!cJSON_IsBool(item)) {
        return false;
    }
    const bool on = cJSON_IsTrue(item);
    if (has_dante_add_on(section.present)) {
        send_mcu_command(on ? "setzavostreama,1" : "setzavostreama,0");
    }
    run_shell_line(on ? "astparam s a_a_stream_source 1;astparam s a_bridge_en y"
                      : "astparam s a_a_stream_source 0;astparam s a_bridge_en n");
    return true;
}

static bool switch_transmitting(const Section&, const cJSON* item) {
    if (!cJSON_IsBool(item)) {
        return false;
    }
    const int on = cJSON_IsTrue(item);
    run_shell_format("astparam s a_d_tx_enable %d", on);
    run_shell_format("dapi --txonoff %d > /dev/null 2>&1", on);
    return true;
}

static constexpr Member dante_audio_members[] = {
    handled("tx_ch1_name", JsonType::string, name_channel<tx_channel_1>),
    handled("tx_ch2_name", JsonType::string, name_channel<tx_channel_2>),
    any_case(handled("tx_ch1_use_device_name", JsonType::boolean,
                     follow_device_name<following_tx_channel_1>)),
    any_case(handled("tx_ch2_use_device_name", JsonType::boolean,
                     follow_device_name<following_tx_channel_2>)),
    handled("rx_ch1_name", JsonType::string, name_channel<rx_channel_1>),
    handled("rx_ch2_name", JsonType::string, name_channel<rx_channel_2>),
    any_case(handled("rx_ch1_use_device_name", JsonType::boolean,
                     follow_device_name<following_rx_channel_1>)),
    any_case(handled("rx_ch2_use_device_name", JsonType::boolean,
                     follow_device_name<following_rx_channel_2>)),
    handled("zavo_audio_bridge", JsonType::boolean, bridge_stream_audio),
    handled("tx_enable", JsonType::boolean, switch_transmitting, pause_when_sent(3)),
    ignored("tx_audio_mute", JsonType::boolean),
    ignored("rx_enable", JsonType::boolean),
};
static_assert(well_formed(dante_audio_members));

// --- The section's own members -------------------------------------------------------------------

// The script's name is spelled like that on the unit.
static bool name_dante_device(const Section&, const cJSON* item) {
    const char* name = nonempty_text(item);
    if (name == nullptr) {
        return false;
    }
    send_filled_line(Channel::shell, "astparam s dante_device_name \"%s\" > /dev/null 2>&1", name);
    pause_seconds(1);
    run_shell_line("reaload_dante_config.sh &");
    return true;
}

static bool follow_with_dante_device_name(const Section&, const cJSON* item) {
    if (!cJSON_IsBool(item)) {
        return false;
    }
    store_name_sync_flag(sync_dante_device_name, cJSON_IsTrue(item));
    return true;
}

// A unit that leaves AV-A goes back to multicast.
static bool want_ava(const Section& section, const cJSON* item) {
    request.ava = cJSON_IsTrue(item);
    if (!cJSON_IsFalse(item) || !has_dante_add_on(section.present) ||
        strncmp(section.present->value[slot_dante_op_mode], "AV-A", 4) != 0) {
        return false;
    }
    run_shell_line("astparam s multicast_on y;");
    return true;
}

static bool want_audio_only(const Section&, const cJSON* item) {
    request.audio_only = cJSON_IsTrue(item);
    return false;
}

static constexpr Member dante_members[] = {
    handled("dante_name", JsonType::string, name_dante_device),
    any_case(handled("dante_use_device_name", JsonType::boolean, follow_with_dante_device_name)),
    any_case(flag("tx_video_use_device_name", "astparam s a_d_tx_video_use_dn 1;",
                  "astparam s a_d_tx_video_use_dn 0;")),
    any_case(flag("rx_video_use_device_name", "astparam s a_d_rx_video_use_dn 1;",
                  "astparam s a_d_rx_video_use_dn 0;")),
    any_case(handled("dante_ava", JsonType::boolean, want_ava)),
    object("dante_audio", dante_audio_members),
    handled("dante_audio_only", JsonType::boolean, want_audio_only),
    ignored("tx_video_ch_name", JsonType::string),
    ignored("rx_video_ch_name", JsonType::string),
    ignored("information", JsonType::object),
};
static_assert(well_formed(dante_members));

// --- The add-on ----------------------------------------------------------------------------------

// Without the add-on the video engine runs with its topmost bit set: the first digit becomes "8".
static void set_video_engine_for_no_add_on() {
    char option[output_text_size] = {};
    rw_get_value("v_eng_drv_option=", option);
    normalise_video_engine_option(option);
    const char* digits = find_after(option, "0x");
    if (digits != nullptr) {
        run_shell_format("astparam s v_eng_drv_option 0x8%s;", digits[0] == '\0' ? "" : digits + 1);
    }
}

// A section that wants neither kind of add-on switches it off, whatever else it holds. Of both
// kinds the audio-only one is stored last and stays.
static void choose_add_on() {
    if (request.ava) {
        run_shell_line(
            "astparam s a_addon dante;astparam s dante_op_mode AV-A;"
            "lmparam s A_ADDON dante;lmparam s DANTE_OP_MODE AV-A;");
        pause_seconds(1);
    }
    if (request.audio_only) {
        run_shell_line(
            "astparam s a_addon dante;astparam s dante_op_mode audio-only;"
            "lmparam s A_ADDON dante;lmparam s DANTE_OP_MODE audio-only;");
        pause_seconds(1);
    }
    if (!request.ava && !request.audio_only) {
        set_video_engine_for_no_add_on();
        run_shell_line(
            "astparam s a_addon none;astparam s dante_op_mode none;"
            "lmparam s A_ADDON none;lmparam s DANTE_OP_MODE none;");
        pause_seconds(1);
    }
    pause_seconds(5);
}

// --- The section ---------------------------------------------------------------------------------

const SectionTable dante_table = {"dante", every_model, dante_members};

void apply_dante_section(const cJSON* section) {
    ParameterSnapshot present;
    take_snapshot(&present);
    request = {};
    apply_members(section, dante_members, &present);
    choose_add_on();
    if (has_dante_add_on(&present) || request.channel_sent) {
        run_shell_line("echo 1 > /user_data2/no_dante_upgrade_config");
    }
}
