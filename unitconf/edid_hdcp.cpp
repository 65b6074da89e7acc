// "edid" and "hdcp": what the inputs tell a source that they can show, and how copy protection is
// handled.
#include "device/lines.h"
#include "unitconf/members.h"
#include "unitconf/sections.h"
#include "unitconf/tables.h"

// --- EDID ----------------------------------------------------------------------------------------

// The displays that the unit can pretend to be, in the spellings that documents use.
static constexpr Word edid_descriptions[] = {
    {"1920x1080@60 8bit Stereo", 1},
    {"1920x1080@60Hz 8bit Stereo", 1},
    {"1920x1080@60 8bit stereo", 1},
    {"1920x1080@60hz 8bit stereo", 1},
    {"1920x1080@60 8bit High Definition Audio", 2},
    {"1920x1080@60Hz 8bit High Definition Audio", 2},
    {"1920x1080@60 8bit high definition audio", 2},
    {"1920x1080@60hz 8bit high definition audio", 2},
    {"3840x2160@30Hz 8bit Stereo Audio", 3},
    {"3840x2160@30hz 8bit stereo audio", 3},
    {"3840x2160@30Hz Deep Color High Definition Audio", 4},
    {"3840x2160@30hz deep color high definition audio", 4},
    {"3840x2160@60Hz 4:2:0 Deep Color Stereo Audio", 5},
    {"3840x2160@60hz 4:2:0 deep color stereo audio", 5},
    {"3840x2160@60Hz Deep Color Stereo Audio", 6},
    {"3840x2160@60hz deep color stereo audio", 6},
    {"3840x2160@60Hz Deep Color High Definition Audio", 7},
    {"3840x2160@60hz deep color high definition audio", 7},
    {"3840x2160@60Hz Deep Color HDR LPCM 6CH", 8},
    {"3840x2160@60hz deep color hdr lpcm 6ch", 8},
    {"User Defined", 9},
    {"user defined", 9},
};

// The decoder takes any text for a copy, also one that means none elsewhere.
static bool copy_edid_of_the_display(const Section&, const cJSON* item) {
    if (!cJSON_IsString(item)) {
        return false;
    }
    send_line(Channel::mcu, "setedidcopy");
    return true;
}

// "-" and what follows it is how a document says that no display is to be copied.
static bool names_a_display(const char* copied) {
    return copied[0] != '-';
}

// The empty text is sent as well.
static constexpr Member copy_edid(Line line) {
    Member row = any_text("copy_edid", line, pause_always(1));
    row.own.test = names_a_display;
    return row;
}

static constexpr Member predefined(Line line) {
    return word("predefined", edid_descriptions, line, pause_always(1));
}

static constexpr Member upload_edid_name(Line line, Pauses pauses = {}) {
    return text("upload_edid_name", line, pauses);
}

static constexpr Member decoder_edid_members[] = {
    pause(1),
    handled("copy_edid", JsonType::string, copy_edid_of_the_display, pause_always(1)),
    predefined(mcu("setedid,%d")),
    upload_edid_name("astparam s edid_user_defined2 \"%s\""),
};
static_assert(well_formed(decoder_edid_members));

static constexpr Member hdmi_encoder_input_members[] = {
    pause(1),
    copy_edid(mcu("setedidcopy,%s")),
    predefined(mcu("setedid,%d")),
    upload_edid_name("astparam s edid_user_defined2 \"%s\"", pause_always(1)),
};
static_assert(well_formed(hdmi_encoder_input_members));

static constexpr Member hdmi_encoder_edid_members[] = {
    object("hdmi", hdmi_encoder_input_members),
};
static_assert(well_formed(hdmi_encoder_edid_members));

// Both inputs keep the name of an uploaded EDID in one parameter.
static constexpr Member usbc_encoder_upload_edid_name =
    upload_edid_name("astparam s edid_user_defined1 \"%s\"", pause_always(1));

static constexpr Member usbc_encoder_usbc_members[] = {
    copy_edid(mcu("setedidcopy,1:%s")),
    predefined(mcu("setedid,1:%d")),
    usbc_encoder_upload_edid_name,
};
static_assert(well_formed(usbc_encoder_usbc_members));

static constexpr Member usbc_encoder_hdmi_members[] = {
    copy_edid(mcu("setedidcopy,2:%s")),
    predefined(mcu("setedid,2:%d")),
    usbc_encoder_upload_edid_name,
};
static_assert(well_formed(usbc_encoder_hdmi_members));

static constexpr Member usbc_encoder_edid_members[] = {
    pause(1),
    object("usbc", usbc_encoder_usbc_members),
    pause(1),
    object("hdmi", usbc_encoder_hdmi_members),
};
static_assert(well_formed(usbc_encoder_edid_members));

const SectionTable decoder_edid_table = {"edid", decoder, decoder_edid_members};
const SectionTable hdmi_encoder_edid_table = {"edid", hdmi_encoder, hdmi_encoder_edid_members};
const SectionTable usbc_encoder_edid_table = {"edid", usbc_encoder, usbc_encoder_edid_members};

void apply_decoder_edid_section(const cJSON* section) {
    apply_members(section, decoder_edid_members);
}

void apply_hdmi_encoder_edid_section(const cJSON* section) {
    apply_members(section, hdmi_encoder_edid_members);
}

void apply_usbc_encoder_edid_section(const cJSON* section) {
    apply_members(section, usbc_encoder_edid_members);
}

// --- HDCP ----------------------------------------------------------------------------------------

// Each mode with the command that sets it; the empty text leaves the mode as it is.
static constexpr Word hdcp_modes[] = {
    {"", 0},
    {"follow display", 1, "hdcpfollowdisplay"},
    {"hdcp 1.4", 2, "hdcp1x,on"},
    {"hdcp 2.2", 3, "hdcp2x,on"},
};

static constexpr Member output_hdcp_mode =
    chosen_text("output_hdcp_mode", hdcp_modes, mcu("%s"), pause_when_sent(1));

static constexpr Member decoder_hdcp_members[] = {
    pause(1),
    flag_or_empty("local_hdmi_compatibility", mcu("hdcpadvertising,on"), mcu("hdcpadvertising,off"),
                  pause_always(1)),
    output_hdcp_mode,
};
static_assert(well_formed(decoder_hdcp_members));

static constexpr Member hdmi_encoder_hdcp_members[] = {
    pause(1),
    flag_or_empty("hdmi_compatibility", mcu("hdcpadvertising,on"), mcu("hdcpadvertising,off"),
                  pause_always(1)),
    output_hdcp_mode,
};
static_assert(well_formed(hdmi_encoder_hdcp_members));

static constexpr Member usbc_encoder_hdcp_members[] = {
    pause(1),
    flag_or_empty("hdmi_compatibility", mcu("hdcpadvertising,2:on"), mcu("hdcpadvertising,2:off"),
                  pause_always(1)),
    flag_or_empty("usbc_compatibility", mcu("hdcpadvertising,1:on"), mcu("hdcpadvertising,1:off"),
                  pause_always(1)),
    output_hdcp_mode,
};
static_assert(well_formed(usbc_encoder_hdcp_members));

const SectionTable decoder_hdcp_table = {"hdcp", decoder, decoder_hdcp_members};
const SectionTable hdmi_encoder_hdcp_table = {"hdcp", hdmi_encoder, hdmi_encoder_hdcp_members};
const SectionTable usbc_encoder_hdcp_table = {"hdcp", usbc_encoder, usbc_encoder_hdcp_members};

void apply_decoder_hdcp_section(const cJSON* section) {
    apply_members(section, decoder_hdcp_members);
}

void apply_hdmi_encoder_hdcp_section(const cJSON* section) {
    apply_members(section, hdmi_encoder_hdcp_members);
}

void apply_usbc_encoder_hdcp_section(const cJSON* section) {
    apply_members(section, usbc_encoder_hdcp_members);
}
