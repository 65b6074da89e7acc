// The decoder's on-screen display, and its place in a wall of displays.
#include <climits>
#include <cstring>

#include "device/lines.h"
#include "device/snapshot.h"
#include "device/unit.h"
#include "unitconf/members.h"
#include "unitconf/numbers.h"
#include "unitconf/sections.h"
#include "unitconf/tables.h"

// --- On-screen display ---------------------------------------------------------------------------

static constexpr Word osd_positions[] = {
    {"top-left", 1}, {"top", 2},         {"top-right", 3}, {"left", 4},         {"center", 5},
    {"right", 6},    {"bottom-left", 7}, {"bottom", 8},    {"bottom-right", 9},
};

static constexpr Member osd_members[] = {
    within("information",
           any_text("custom_text", "astparam s osd_cus_text \"%s\" > /dev/null 2>&1")),
    within("settings", word_or_minus_one("position", osd_positions, "astparam s osd_pos %d;")),
    within("settings", number("font_size", "astparam s osd_fs %d;")),
    within("settings", text("font_color_at", "astparam s osd_fc_at %s > /dev/null 2>&1")),
    within("settings", text("font_color", "astparam s osd_fc %s > /dev/null 2>&1")),
    within("settings", text("background_color", "astparam s osd_bgc %s > /dev/null 2>&1")),
    within("settings", number("background_transparency", "astparam s osd_bg_tran %d;")),
    within("settings", number("osd_off_time", "astparam s osd_off_time %d;")),
    within("settings", flag("background_color_enable", "astparam s osd_bgc_enable 2;",
                            "astparam s osd_bgc_enable 1;")),
};
static_assert(well_formed(osd_members));

// --- Video wall ----------------------------------------------------------------------------------

// The stored size of a wall is the largest row and column, counted from 0 as the positions are.
static constexpr int largest_wall = 19;

// The unit's row and column in the wall; either is stored without the other.
static bool store_unit_position(const Section&, const cJSON* item) {
    static constexpr const char* parameters[] = {"vw_row", "vw_column"};
    bool sent = false;
    for (int i = 0; i < 2; i++) {
        const cJSON* position = cJSON_GetArrayItem(item, i);
        if (cJSON_IsNumber(position) && position->valueint >= 0 &&
            position->valueint < largest_wall) {
            run_shell_format("astparam s %s %d;", parameters[i], position->valueint);
            sent = true;
        }
    }
    return sent;
}

static bool store_rotation(const Section&, const cJSON* item) {
    static constexpr const char* quarter_turns[] = {"0", "5", "3", "6"};
    if (!cJSON_IsNumber(item)) {
        return false;
    }
    const bool known = item->valueint >= 1 && item->valueint <= 3;
    run_shell_format("astparam s vw_rotate %s;", quarter_turns[known ? item->valueint : 0]);
    return true;
}

static bool store_stretch(const Section&, const cJSON* item) {
    if (!cJSON_IsNumber(item)) {
        return false;
    }
    run_shell_format("astparam s vw_stretch_type %s;", item->valueint == 1 ? "1" : "2");
    return true;
}

// A stored position counted from 1. One without a number counts as 0.
static int counted_from_one(const char* position) {
    const int counted_from_zero = decimal_value(position);
    return counted_from_zero == INT_MAX ? INT_MAX : counted_from_zero + 1;
}

// Places the picture on the displays. A mosaic is cut by its virtual coordinates, a symmetric wall
// by the unit's row and column.
static void place_picture(const ParameterSnapshot* present, bool mosaic) {
    const auto* value = present->value;
    run_shell_format(
        "e e_vw_pos_layout_%s_%s;e e_vw_enable_%s_%s_%s_%s%s;e e_vw_moninfo_%s_%s_%s_%s;"
        "e e_vw_refresh_pos_idx_%d_%d;e e_vw_rotate_%s;e e_vw_stretch_type_%s;",
        value[slot_vw_max_row], value[slot_vw_max_column],
        value[mosaic ? slot_vw_v2_x1 : slot_vw_max_row],
        value[mosaic ? slot_vw_v2_y1 : slot_vw_max_column],
        value[mosaic ? slot_vw_v2_x2 : slot_vw_row], value[mosaic ? slot_vw_v2_y2 : slot_vw_column],
        mosaic ? "_2" : "", value[slot_vw_moninfo_ha], value[slot_vw_moninfo_ht],
        value[slot_vw_moninfo_va], value[slot_vw_moninfo_vt], counted_from_one(value[slot_vw_row]),
        counted_from_one(value[slot_vw_column]), value[slot_vw_rotate],
        value[slot_vw_stretch_type]);
    pause_seconds(1);
}

static bool holds(const char* text, const char* word) {
    return text != nullptr && strstr(text, word) != nullptr;
}

// Joins the wall with the present values of the unit, read after it was switched on, or leaves it.
// A mode that names neither kind of wall only switches it on; one that names both is symmetric.
static bool switch_wall(const Section& section, const cJSON* item) {
    if (!cJSON_IsBool(item)) {
        return false;
    }
    if (cJSON_IsFalse(item)) {
        run_shell_line(
            "astparam s en_video_wall n;lmparam s EN_VIDEO_WALL n;e e_vw_reset_to_pos_0_0;");
        pause_seconds(1);
        return true;
    }
    run_shell_line("astparam s en_video_wall y;lmparam s EN_VIDEO_WALL y;");
    pause_seconds(1);
    ParameterSnapshot present;
    take_snapshot(&present);
    const char* mode = nonempty_text(find_member(section.object, "mode"));
    if (holds(mode, "symmetric")) {
        if (present.value[slot_vw_var_ver][0] == '2') {
            run_shell_line("e e_chg_video_wall_type;");
            pause_seconds(1);
        }
        place_picture(&present, false);
    } else if (holds(mode, "mosaic")) {
        place_picture(&present, true);
    }
    return true;
}

static constexpr Word wall_modes[] = {{"symmetric", 0}, {"mosaic", 1}};

static constexpr Member video_wall_members[] = {
    number_in_range("rows", 1, largest_wall, -1, "astparam s vw_max_row %d;"),
    number_in_range("columns", 1, largest_wall, -1, "astparam s vw_max_column %d;"),
    handled("unit_position", JsonType::array, store_unit_position),
    number("virtual_coordinates_x1", "astparam s vw_v2_x1 %d;"),
    number("virtual_coordinates_y1", "astparam s vw_v2_y1 %d;"),
    number("virtual_coordinates_x2", "astparam s vw_v2_x2 %d;"),
    number("virtual_coordinates_y2", "astparam s vw_v2_y2 %d;"),
    handled("rotation", JsonType::number, store_rotation),
    handled("stretch", JsonType::number, store_stretch),
    number("outside_width", "astparam s vw_moninfo_ht %d;"),
    number("outside_height", "astparam s vw_moninfo_vt %d;"),
    number("viewable_width", "astparam s vw_moninfo_ha %d;"),
    number("viewable_height", "astparam s vw_moninfo_va %d;"),
    handled("enable", JsonType::boolean, switch_wall),
    read_with("enable", Case::exact, "mode", JsonType::string, wall_modes),
};
static_assert(well_formed(video_wall_members));

// --- The sections --------------------------------------------------------------------------------

const SectionTable osd_table = {"osd", decoder, osd_members};
const SectionTable video_wall_table = {"video_wall", decoder, video_wall_members};

void apply_osd_section(const cJSON* section) {
    apply_members(section, osd_members);
}

void apply_video_wall_section(const cJSON* section) {
    apply_members(section, video_wall_members);
}
