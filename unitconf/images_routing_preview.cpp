// What a decoder shows when it has no stream and while it starts, which unit it receives from, and
// the preview stream of every model.
#include <climits>
#include <cstdio>

#include "device/lines.h"
#include "device/snapshot.h"
#include "device/unit.h"
#include "unitconf/fields.h"
#include "unitconf/members.h"
#include "unitconf/sections.h"
#include "unitconf/tables.h"

// --- Pictures
// -------------------------------------------------------------------------------------

static constexpr Member no_stream_image_members[] = {
    flag("enable", "astparam s ns_enable 1;e e_no_stream_image 1",
         "astparam s ns_enable 0;e e_no_stream_image 0", pause_always(1)),
    ignored("playlist_mode", JsonType::string),
};
static_assert(well_formed(no_stream_image_members));

static constexpr Member power_on_image_members[] = {
    flag("enable", "astparam s poi_enable 1;", "astparam s poi_enable 0;"),
    number("duration_time", "astparam s poi_time %d;"),
};
static_assert(well_formed(power_on_image_members));

// --- Routing
// --------------------------------------------------------------------------------------

// USB and keyboard/mouse are one route: with both given it is connected twice.
static constexpr Member routing_members[] = {
    within("video", text("stream_number", "e e_reconnect::%s::v", pause_when_sent(3))),
    within("audio", text("stream_number", "e e_reconnect::%s::a", pause_when_sent(3))),
    within("usb", text("ip_address", "e e_reconnect::%s::u", pause_when_sent(3))),
    within("km", text("ip_address", "e e_reconnect::%s::u", pause_when_sent(3))),
    ignored("serial", JsonType::object),
    ignored("ir", JsonType::object),
};
static_assert(well_formed(routing_members));

// --- Preview
// --------------------------------------------------------------------------------------

// The preview stream's option: width, height, frame rate and three fields that are kept.
static constexpr size_t option_fields = 6;

static void read_option(const ParameterSnapshot* present, SnapshotSlot slot, Field* option) {
    split_fields(field_of(present->value[slot], output_text_size), ',', option, option_fields);
}

// The snapshot's option follows the stream's.
static void store_option(const Field* option) {
    run_shell_format(
        "astparam s ss_stream_option %.*s,%.*s,%.*s,%.*s,%.*s,%.*s;"
        "astparam s ss_snapshot_option %.*s,%.*s,%.*s,0 ;",
        option[0].length, option[0].text, option[1].length, option[1].text, option[2].length,
        option[2].text, option[3].length, option[3].text, option[4].length, option[4].text,
        option[5].length, option[5].text, option[0].length, option[0].text, option[1].length,
        option[1].text, option[2].length, option[2].text);
}

// The rest of the option is the live store's, while the frame rate starts from the run-time
// store's: when both are given, the frame rate's line does not hold the resolution just stored.
static bool store_resolution(const Section&, const cJSON* item) {
    const char* resolution = nonempty_text(item);
    if (resolution == nullptr) {
        return false;
    }
    ParameterSnapshot present;
    take_snapshot(&present);
    Field option[option_fields];
    read_option(&present, slot_lm_ss_stream_option, option);
    split_fields(field_of(resolution, INT_MAX), 'x', option, 2);
    store_option(option);
    return true;
}

static bool store_frame_rate(const Section&, const cJSON* item) {
    if (!cJSON_IsNumber(item)) {
        return false;
    }
    ParameterSnapshot present;
    take_snapshot(&present);
    Field option[option_fields];
    read_option(&present, slot_rw_ss_stream_option, option);
    char rate[16];
    snprintf(rate, sizeof rate, "%d", item->valueint);
    option[2] = field_of(rate, sizeof rate);
    store_option(option);
    return true;
}

// Switching on takes a snapshot first, as the other two do, although it uses none of the values;
// switching off does not.
static bool switch_preview(const Section&, const cJSON* item) {
    if (!cJSON_IsBool(item)) {
        return false;
    }
    if (cJSON_IsFalse(item)) {
        run_shell_line("astparam s ss_en n;");
        return true;
    }
    ParameterSnapshot present;
    take_snapshot(&present);
    run_shell_line("astparam s ss_en y;");
    return true;
}

static constexpr Member preview_members[] = {
    handled("resolution", JsonType::string, store_resolution, pause_when_sent(1)),
    handled("fps", JsonType::number, store_frame_rate, pause_when_sent(1)),
    handled("enable", JsonType::boolean, switch_preview, pause_when_sent(1)),
};
static_assert(well_formed(preview_members));

// --- The sections
// ---------------------------------------------------------------------------------

const SectionTable no_stream_image_table = {"no_stream_image", decoder, no_stream_image_members};
const SectionTable power_on_image_table = {"power_on_image", decoder, power_on_image_members};
const SectionTable routing_table = {"routing", decoder, routing_members};
const SectionTable preview_table = {"stream.preview", every_model, preview_members};

void apply_no_stream_image_section(const cJSON* section) {
    apply_members(section, no_stream_image_members);
}

void apply_power_on_image_section(const cJSON* section) {
    apply_members(section, power_on_image_members);
}

void apply_routing_section(const cJSON* section) {
    apply_members(section, routing_members);
}

void apply_preview_section(const cJSON* section) {
    apply_members(section, preview_members);
}
