// "stream"."video": what a unit sends or shows, how late, in which colours, and to whom.
#include <cstring>

#include "device/lines.h"
#include "unitconf/members.h"
#include "unitconf/sections.h"
#include "unitconf/tables.h"
#include "unitconf/video_engine.h"

// --- What a row alone cannot say -----------------------------------------------------------------

enum Latency : int { ultra_low_latency = 0, normal_latency = 1 };

static constexpr Word latency_modes[] = {{"ull", ultra_low_latency}, {"normal", normal_latency}};

// The latency flag is one digit of the video engine option, which is stored together with the
// switch of the running video engine.
static void store_latency(const ParameterSnapshot& present, bool ultra_low) {
    static constexpr size_t latency_digit = 4;
    char option[output_text_size];
    change_video_engine_option(option, present.value[slot_v_eng_drv_option], latency_digit,
                               ultra_low ? '0' : '1');
    send_filled_line(
        Channel::shell,
        ultra_low ? "astparam s v_eng_drv_option %s;echo 1 > /sys/devices/platform/videoip/ull"
                  : "astparam s v_eng_drv_option %s;echo 0 > /sys/devices/platform/videoip/ull",
        option);
}

// A number of 0 or more that is no latency runs an empty line.
static bool apply_latency_mode(const Section& section, const cJSON* item) {
    const int mode = choice_code(item, latency_modes);
    if (mode < 0) {
        return false;
    }
    if (mode == ultra_low_latency || mode == normal_latency) {
        store_latency(*section.present, mode == ultra_low_latency);
    } else {
        send_line(Channel::shell, "");
    }
    return true;
}

// Runs the line of the first mode whose name stands anywhere in the text, so that a text with both
// names casts to one.
static bool apply_cast_mode(const Section& section, const cJSON* item) {
    if (!cJSON_IsString(item)) {
        return false;
    }
    const Vocabulary& modes = section.row->words;
    for (size_t i = 0; i < modes.count; i++) {
        if (strstr(item->valuestring, modes.words[i].word) != nullptr) {
            send_line(Channel::shell, modes.words[i].text);
            return true;
        }
    }
    return false;
}

// Only digits name a channel here. The line holds at most 25 characters, which leaves room for four
// of them; what is longer is cut.
static bool apply_channel_digits(const Section&, const cJSON* item) {
    const char* channel = nonempty_text(item);
    if (channel == nullptr || channel[strspn(channel, "0123456789")] != '\0') {
        return false;
    }
    run_shell_format("astparam s ch_select %.4s", channel);
    return true;
}

// --- The words -----------------------------------------------------------------------------------

// Each output scaling with its number and its timing code, in which 50 Hz comes before 60 Hz at
// 3840 and 4096 pixels. A picture that is passed through keeps its timing: nothing is set.
static constexpr Word output_scalings[] = {
    {"pass through", 0},
    {"pass through(strict)", 1, "10000000"},
    {"720p50", 2, "81000025"},
    {"720p60", 3, "81000026"},
    {"1080p24", 4, "8100001D"},
    {"1080p30", 5, "8100002D"},
    {"1080p50", 6, "8100002E"},
    {"1080p60", 7, "8100002F"},
    {"1366x768p60", 8, "81004049"},
    {"1440x900p60", 9, "81004021"},
    {"1400x1050p60", 10, "8100401D"},
    {"1600x900p60", 11, "8100404E"},
    {"1600x1200p60", 12, "81004025"},
    {"1920x1200p60", 13, "81004033"},
    {"2560x1440p60", 14, "810040A5"},
    {"3840x2160p24", 15, "81000067"},
    {"3840x2160p25", 16, "81000069"},
    {"3840x2160p30", 17, "8100006B"},
    {"3840x2160p50", 18, "81000068"},
    {"3840x2160p60", 19, "8100006A"},
    {"4096x2160p24", 20, "8100006C"},
    {"4096x2160p25", 21, "8100006E"},
    {"4096x2160p30", 22, "81000070"},
    {"4096x2160p50", 23, "8100006D"},
    {"4096x2160p60", 24, "8100006F"},
};

static constexpr Word output_selections[] = {{"", 0}, {"enc stream", 1}, {"hdmi", 2}};
static constexpr Word source_selections[] = {{"", 0}, {"usb-c", 1}, {"hdmi", 2}};

static constexpr Word decoder_priorities[] = {{"last connect", 0}, {"prio hdmi, stream", 1}};
static constexpr Word usbc_encoder_priorities[] = {
    {"last connect", 0}, {"prio usb-c, hdmi", 1}, {"prio hdmi, usb-c", 2}};

static constexpr Word color_spaces[] = {{"auto", 0}, {"rgb", 1}, {"ycbcr", 2}};

// A decoder changes over at once; the encoders do so with the restart that ends a configuration.
static constexpr Word decoder_cast_modes[] = {
    {"unicast", "astparam s multicast_on n;lmparam s MULTICAST_ON n;e e_chg_multicast_mode 0;"},
    {"multicast", "astparam s multicast_on y;lmparam s MULTICAST_ON y;e e_chg_multicast_mode 1;"},
};
static constexpr Word encoder_cast_modes[] = {
    {"unicast", "astparam s multicast_on n;"},
    {"multicast", "astparam s multicast_on y;"},
};

// --- Rows that several models have ---------------------------------------------------------------

// Pauses in seconds: the video engine reconnects in three, then the unit settles.
static constexpr Pauses reconnecting = pause_when_sent_then_always(3, 1);

static constexpr Member latency_mode(Pauses pauses) {
    return handled("latency_mode", JsonType::number_or_string, apply_latency_mode, pauses,
                   latency_modes);
}

static constexpr Member color_space =
    choice("color_space", color_spaces, mcu("setcolorspace,%d"), pause_always(1));

static constexpr Member auto_switching_enable =
    flag("auto_switching_enable", mcu("autoswitch,on"), mcu("autoswitch,off"), pause_always(1));

static constexpr Member auto_switching_prio(Vocabulary priorities) {
    return choice("auto_switching_prio", priorities, mcu("autoswitchprio,%d"), pause_always(1));
}

static constexpr Member video_mute_stream =
    flag("video_mute_stream", mcu("videomute,on"), mcu("videomute,off"), pause_always(1));

static constexpr Member hdmi_loopout =
    flag("hdmi_loopout", mcu("hdmiloop,on"), mcu("hdmiloop,off"), pause_always(1));

static constexpr Member stream_enable(Pauses pauses) {
    return flag("enable", "astparam s streamEnable 1;", "astparam s streamEnable 0;", pauses);
}

static constexpr Member encoder_cast_mode =
    handled("cast_mode", JsonType::string, apply_cast_mode, pause_when_sent(3), encoder_cast_modes);

// A multicast address of one's own counts only together with its switch, and the other way round.
static constexpr Member custom_multicast_address(Case switch_case) {
    return together_with(
        "custom_multicast", switch_case,
        any_text("custom_multicast_address", "astparam s cus_multicast_address %s > /dev/null 2>&1",
                 pause_always(1)));
}

static constexpr Member custom_multicast =
    together_with("custom_multicast_address", Case::ignored,
                  flag("custom_multicast", "astparam s cus_multicast_enable 1;",
                       "astparam s cus_multicast_enable 0;"));

// --- The sections --------------------------------------------------------------------------------

static constexpr Member decoder_members[] = {
    text("stream_number", "e e_reconnect::%s::v", reconnecting),
    flag("video_mute", mcu("videomute,on"), mcu("videomute,off"), pause_always(1)),
    latency_mode(pause_when_sent(1)),
    chosen_text("output_scaling", output_scalings,
                "astparam s v_output_timing_convert %s;lmparam s V_OUTPUT_TIMING_CONVERT %s;",
                pause_when_sent_then_always(1, 1)),
    choice("output_selection", output_selections, mcu("set,%d"), pause_always(1)),
    auto_switching_enable,
    auto_switching_prio(decoder_priorities),
    color_space,
    handled("cast_mode", JsonType::string, apply_cast_mode, pause_when_sent(1), decoder_cast_modes),
    flag("hdmi_out_enable", mcu("hdmiout,on"), mcu("hdmiout,off"), pause_always(1)),
    ignored("no_stream_setting", JsonType::string, pause_always(1)),
};
static_assert(well_formed(decoder_members));

static constexpr Member hdmi_encoder_members[] = {
    handled("stream_number", JsonType::string, apply_channel_digits, reconnecting),
    video_mute_stream,
    latency_mode(pause_always(1)),
    color_space,
    hdmi_loopout,
    stream_enable(pause_always(1)),
    encoder_cast_mode,
    custom_multicast_address(Case::exact),
    custom_multicast,
};
static_assert(well_formed(hdmi_encoder_members));

// On this model alone the switch of the multicast address is looked up in any case.
static constexpr Member usbc_encoder_members[] = {
    text("stream_number", "astparam s ch_select %s", reconnecting),
    video_mute_stream,
    latency_mode(pause_always(1)),
    color_space,
    hdmi_loopout,
    flag("usbc_charging_enable", mcu("usbcpower,on"), mcu("usbcpower,off"), pause_always(1)),
    auto_switching_enable,
    auto_switching_prio(usbc_encoder_priorities),
    choice("source_selection", source_selections, mcu("set,%d"), pause_always(1)),
    stream_enable(pause_always(3)),
    encoder_cast_mode,
    custom_multicast_address(Case::ignored),
    any_case(custom_multicast),
};
static_assert(well_formed(usbc_encoder_members));

const SectionTable decoder_video_table = {"stream.video", decoder, decoder_members};
const SectionTable hdmi_encoder_video_table = {"stream.video", hdmi_encoder, hdmi_encoder_members};
const SectionTable usbc_encoder_video_table = {"stream.video", usbc_encoder, usbc_encoder_members};

void apply_decoder_video_section(const cJSON* section) {
    apply_members_with_snapshot(section, decoder_members);
}

void apply_hdmi_encoder_video_section(const cJSON* section) {
    apply_members_with_snapshot(section, hdmi_encoder_members);
}

void apply_usbc_encoder_video_section(const cJSON* section) {
    apply_members_with_snapshot(section, usbc_encoder_members);
}
