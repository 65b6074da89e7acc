// "stream"."audio": which sound goes where, how loud, and the analog port.
//
// The three models differ in their sources, in the numbers of the analog port, in what they do with
// a volume whose source is not given and in where the analog port's "auto" stands; each difference
// is a value of AudioModel.
#include <cstring>

#include "device/lines.h"
#include "unitconf/members.h"
#include "unitconf/sections.h"
#include "unitconf/tables.h"

// --- The models ----------------------------------------------------------------------------------

struct AudioModel {
    Vocabulary sources;         // of the paths: the stream and the Dante transmitter
    Vocabulary analog_sources;  // of the analog output
    int analog_input;           // the port numbers of the analog port, by its direction
    int analog_output;
    // Whether a volume without a source goes to the present one; otherwise an empty command goes
    // out.
    bool volume_without_source;
    bool auto_in_stream_audio;  // the analog port's "auto" stands in "stream_audio"
};

static constexpr Word decoder_transmit_sources[] = {
    {"", 0}, {"local hdmi", 1}, {"analog in", 2}, {"zavo stream audio output", 3}};
static constexpr Word decoder_analog_sources[] = {
    {"afv", 0}, {"stream audio", 1}, {"local hdmi", 2}, {"dante/aes67 rx", 3}};

static constexpr Word hdmi_encoder_sources[] = {{"", 0}, {"hdmi", 1}, {"analog in", 2}};
static constexpr Word hdmi_encoder_analog_sources[] = {{"hdmi", 0}, {"dante/aes67 rx", 1}};

static constexpr Word usbc_encoder_sources[] = {
    {"afv", 0}, {"usb-c", 1}, {"hdmi", 2}, {"analog in", 3}};
static constexpr Word usbc_encoder_analog_sources[] = {
    {"afv", 0}, {"usb-c", 1}, {"hdmi", 2}, {"dante/aes67 rx", 3}};

static constexpr AudioModel decoder_audio = {
    .sources = decoder_transmit_sources,
    .analog_sources = decoder_analog_sources,
    .analog_input = 2,
    .analog_output = 3,
    .volume_without_source = false,
    .auto_in_stream_audio = false,
};

static constexpr AudioModel hdmi_encoder_audio = {
    .sources = hdmi_encoder_sources,
    .analog_sources = hdmi_encoder_analog_sources,
    .analog_input = 2,
    .analog_output = 3,
    .volume_without_source = true,
    .auto_in_stream_audio = true,
};

static constexpr AudioModel usbc_encoder_audio = {
    .sources = usbc_encoder_sources,
    .analog_sources = usbc_encoder_analog_sources,
    .analog_input = 3,
    .analog_output = 4,
    .volume_without_source = true,
    .auto_in_stream_audio = true,
};

// --- A path: source, volume and mute -------------------------------------------------------------

// The source that the path's object asks for, or -1.
template <const AudioModel& model>
static int wanted_source(const Section& section) {
    return choice_code(find_member(section.object, "source"), model.sources);
}

template <const AudioModel& model>
static bool apply_path_volume(const Section& section, const cJSON* item) {
    if (!cJSON_IsNumber(item)) {
        return false;
    }
    const int source = wanted_source<model>(section);
    if (source >= 0) {
        send_mcu_format("livol,%d:%d", source, item->valueint);
    } else if (model.volume_without_source) {
        send_mcu_format("livol,%s:%d", section.present->value[slot_as_source], item->valueint);
    } else {
        send_line(Channel::mcu, "");
    }
    return true;
}

// A mute that is no boolean sends an empty command.
template <const AudioModel& model>
static bool apply_path_mute(const Section& section, const cJSON* item) {
    const int source = wanted_source<model>(section);
    if (!cJSON_IsBool(item)) {
        send_line(Channel::mcu, "");
    } else if (source >= 0) {
        send_mcu_format(cJSON_IsTrue(item) ? "mute,%d" : "unmute,%d", source);
    } else {
        send_mcu_format(cJSON_IsTrue(item) ? "mute,%s" : "unmute,%s",
                        section.present->value[slot_as_source]);
    }
    return true;
}

template <const AudioModel& model>
static constexpr Member path_source = choice("source", model.sources, mcu("seta,%d"),
                                             pause_always(1));

template <const AudioModel& model>
static constexpr Member path_volume = handled("volume", JsonType::number, apply_path_volume<model>,
                                              pause_always(1));

template <const AudioModel& model>
static constexpr Member path_mute = handled("mute", JsonType::boolean, apply_path_mute<model>);

template <const AudioModel& model>
static constexpr Member transmit_members[] = {
    path_source<model>,
    path_volume<model>,
    path_mute<model>,
};
static_assert(well_formed(transmit_members<decoder_audio>));
static_assert(well_formed(transmit_members<hdmi_encoder_audio>));
static_assert(well_formed(transmit_members<usbc_encoder_audio>));

// --- The analog port -----------------------------------------------------------------------------

enum Direction : int { unknown_direction = -1, analog_in = 0, analog_out = 1 };

// Texts count by how they begin, so that "input" and "output" are directions as well.
static constexpr Word directions[] = {{"in", analog_in}, {"out", analog_out}};
static constexpr Word signal_types[] = {{"balanced", 1}, {"unbalanced", 0}};

// The code of the first word that the text begins with, or -1.
static int code_of_beginning(const char* text, Vocabulary words) {
    for (size_t i = 0; i < words.count; i++) {
        if (strncmp(text, words.words[i].word, strlen(words.words[i].word)) == 0) {
            return words.words[i].code;
        }
    }
    return -1;
}

// The direction that the port will have: the wanted one, also when it is none that is known, and
// the present one where the document gives no text.
static int direction_of_port(const Section& section) {
    const cJSON* wanted = find_member(section.object, "direction");
    if (cJSON_IsString(wanted)) {
        return code_of_beginning(wanted->valuestring, directions);
    }
    switch (section.present->value[slot_a_a_audio_direction][0]) {
        case '0':
            return analog_in;
        case '1':
            return analog_out;
        default:
            return unknown_direction;
    }
}

static bool apply_analog_direction(const Section&, const cJSON* item) {
    const int direction =
        cJSON_IsString(item) ? code_of_beginning(item->valuestring, directions) : -1;
    if (direction < 0) {
        return false;
    }
    send_mcu_format("setanalogmode,%d", direction);
    return true;
}

static bool apply_analog_type(const Section& section, const cJSON* item) {
    const int type = cJSON_IsString(item) ? code_of_beginning(item->valuestring, signal_types) : -1;
    const int direction = direction_of_port(section);
    if (type < 0 || direction == unknown_direction) {
        return false;
    }
    send_mcu_format(direction == analog_in ? "libal,%d" : "lobal,%d", type);
    return true;
}

template <const AudioModel& model>
static bool apply_analog_volume(const Section& section, const cJSON* item) {
    const int direction = direction_of_port(section);
    if (!cJSON_IsNumber(item) || direction == unknown_direction) {
        return false;
    }
    if (direction == analog_in) {
        send_mcu_format("livol,%d:%d", model.analog_input, item->valueint);
    } else {
        send_mcu_format("lovol,%d", item->valueint);
    }
    return true;
}

template <const AudioModel& model>
static bool apply_analog_mute(const Section& section, const cJSON* item) {
    const int direction = direction_of_port(section);
    if (direction == unknown_direction) {
        return false;
    }
    if (cJSON_IsBool(item)) {
        send_mcu_format(cJSON_IsTrue(item) ? "mute,%d" : "unmute,%d",
                        direction == analog_in ? model.analog_input : model.analog_output);
    } else {
        send_line(Channel::mcu, "");
    }
    return true;
}

static constexpr Member analog_auto(bool in_stream_audio) {
    const Member row = flag("auto", mcu("setaauto,on"), mcu("setaauto,off"), pause_always(1));
    return in_stream_audio ? of_section(within("stream_audio", row)) : row;
}

template <const AudioModel& model>
static constexpr Member analog_members[] = {
    analog_auto(model.auto_in_stream_audio),
    handled("direction", JsonType::string, apply_analog_direction, pause_always(1), directions),
    choice("source", model.analog_sources, mcu("setanalog,%d"), pause_always(1)),
    handled("type", JsonType::string, apply_analog_type, pause_always(1), signal_types),
    handled("volume", JsonType::number, apply_analog_volume<model>, pause_always(1)),
    handled("mute", JsonType::boolean, apply_analog_mute<model>, pause_always(1)),
    number("output_delay", mcu("setanalogdelay,%d"), pause_always(1)),
};
static_assert(well_formed(analog_members<decoder_audio>));
static_assert(well_formed(analog_members<hdmi_encoder_audio>));
static_assert(well_formed(analog_members<usbc_encoder_audio>));

// --- The decoder ---------------------------------------------------------------------------------

static constexpr Word decoder_stream_sources[] = {{"zavo stream audio", 0}, {"dante/aes67 rx", 1}};
static constexpr Word decoder_hdmi_sources[] = {{"afv", 0}, {"stream audio", 1}};

static constexpr Member decoder_hdmi_members[] = {
    choice("source", decoder_hdmi_sources, mcu("sethdmia,%d"), pause_always(1)),
    flag_or_empty("mute", mcu("mute,4"), mcu("unmute,4")),
};
static_assert(well_formed(decoder_hdmi_members));

// Streams are known by their number, USB and keyboard and mouse by the unit that they come from;
// the last two go the same way.
static constexpr Member decoder_routing_members[] = {
    within("video", text("number", "e e_reconnect::%s::v", pause_when_sent(3))),
    within("audio", text("number", "e e_reconnect::%s::a", pause_when_sent(3))),
    within("usb", text("ip_address", "e e_reconnect::%s::u", pause_when_sent(3))),
    within("km", text("ip_address", "e e_reconnect::%s::u", pause_when_sent(3))),
};
static_assert(well_formed(decoder_routing_members));

// Documents carry "audio_stream_number" as a number, which has no text to reconnect to.
static constexpr Member decoder_members[] = {
    pause(1),
    flag("audio_follow_video", "astparam s audioFlv 1", "astparam s audioFlv 0"),
    choice("stream_audio", decoder_stream_sources, mcu("setstreama,%d"), pause_always(1)),
    object("hdmi_audio", decoder_hdmi_members),
    ignored("audio_stream_number", JsonType::number, pause_always(1)),
    object("analog_audio", analog_members<decoder_audio>),
    object("dante_aes67_tx", transmit_members<decoder_audio>),
    object("routing", decoder_routing_members),
};
static_assert(well_formed(decoder_members));

// --- The encoders --------------------------------------------------------------------------------

template <const AudioModel& model>
static constexpr Member encoder_stream_members[] = {
    flag("analog_priority", mcu("setaauto,on"), mcu("setaauto,off"), pause_always(1)),
    path_source<model>,
    path_volume<model>,
    path_mute<model>,
};
static_assert(well_formed(encoder_stream_members<hdmi_encoder_audio>));
static_assert(well_formed(encoder_stream_members<usbc_encoder_audio>));

template <const AudioModel& model>
static constexpr Member encoder_members[] = {
    pause(1),
    object("stream_audio", encoder_stream_members<model>, pause_always(1)),
    object("analog_audio", analog_members<model>, pause_always(1)),
    object("dante_aes67_tx", transmit_members<model>, pause_always(1)),
};
static_assert(well_formed(encoder_members<hdmi_encoder_audio>));
static_assert(well_formed(encoder_members<usbc_encoder_audio>));

// --- The sections --------------------------------------------------------------------------------

const SectionTable decoder_audio_table = {"stream.audio", decoder, decoder_members};
const SectionTable hdmi_encoder_audio_table = {"stream.audio", hdmi_encoder,
                                               encoder_members<hdmi_encoder_audio>};
const SectionTable usbc_encoder_audio_table = {"stream.audio", usbc_encoder,
                                               encoder_members<usbc_encoder_audio>};

void apply_decoder_audio_section(const cJSON* section) {
    apply_members_with_snapshot(section, decoder_members);
}

void apply_hdmi_encoder_audio_section(const cJSON* section) {
    apply_members_with_snapshot(section, encoder_members<hdmi_encoder_audio>);
}

void apply_usbc_encoder_audio_section(const cJSON* section) {
    apply_members_with_snapshot(section, encoder_members<usbc_encoder_audio>);
}
