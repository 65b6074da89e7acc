// The unit's place in a video wall, applied at once by the unit's events.
#include <cjson/cJSON.h>

#include <climits>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "cgi/uploads.h"
#include "device/lines.h"
#include "device/parameters.h"
#include "device/unit.h"
#include "unitconf/document.h"
#include "unitconf/members.h"
#include "unitconf/numbers.h"

// --- The members ---------------------------------------------------------------------------------

// What every document holds.
struct Screen {
    const char* source;
    const char* outer_width;
    const char* outer_height;
    const char* view_width;
    const char* view_height;
    const char* stretch;
    const char* rotation;
};

static constexpr size_t place_fields = 4;

// Where the screen is: its row and column in a grid, or its rectangle in the wall's coordinates.
struct Place {
    bool in_grid;
    const char* field[place_fields];
};

static constexpr const char* grid_keys[place_fields] = {
    "max_row_count",
    "max_column_count",
    "position_row",
    "position_column",
};

static constexpr const char* coordinate_keys[place_fields] = {
    "virtual_coordinates_x1",
    "virtual_coordinates_y1",
    "virtual_coordinates_x2",
    "virtual_coordinates_y2",
};

// A member of another type is as good as missing: null.
static const char* member_text(const cJSON* document, const char* key) {
    return cJSON_GetStringValue(find_member(document, key));
}

static Screen read_screen(const cJSON* document) {
    return {
        .source = member_text(document, "connect"),
        .outer_width = member_text(document, "outer_width"),
        .outer_height = member_text(document, "outer_height"),
        .view_width = member_text(document, "view_width"),
        .view_height = member_text(document, "view_height"),
        .stretch = member_text(document, "stretch"),
        .rotation = member_text(document, "rotation"),
    };
}

static bool is_complete(const Screen& screen) {
    return screen.source != nullptr && screen.outer_width != nullptr &&
           screen.outer_height != nullptr && screen.view_width != nullptr &&
           screen.view_height != nullptr && screen.stretch != nullptr && screen.rotation != nullptr;
}

// Reads the texts of four keys and returns how many there are.
static size_t read_fields(const cJSON* document, const char* const (&keys)[place_fields],
                          const char* (&fields)[place_fields]) {
    size_t found = 0;
    for (size_t i = 0; i < place_fields; i++) {
        fields[i] = member_text(document, keys[i]);
        found += fields[i] == nullptr ? 0 : 1;
    }
    return found;
}

// False unless one way of placing the screen is there whole and nothing of the other.
static bool read_place(const cJSON* document, Place* place) {
    Place by_coordinates = {.in_grid = false, .field = {}};
    *place = {.in_grid = true, .field = {}};
    const size_t grid_found = read_fields(document, grid_keys, place->field);
    const size_t found = read_fields(document, coordinate_keys, by_coordinates.field);
    if (grid_found == 0 && found == place_fields) {
        *place = by_coordinates;
        return true;
    }
    return grid_found == place_fields && found == 0;
}

// --- The values ----------------------------------------------------------------------------------

// The codes that the events take for a document's 0 to 9. The rest have none.
static constexpr int code_count = 10;
static constexpr const char* rotation_codes[code_count] = {"0", "5", "3", "6", "",
                                                           "",  "",  "",  "",  ""};
static constexpr const char* stretch_codes[code_count] = {"2", "1", "", "", "", "", "", "", "", ""};

// Null outside 0 to 9.
static const char* code_of(const char* text, const char* const (&codes)[code_count]) {
    const int index = decimal_value(text);
    return index < 0 || index >= code_count ? nullptr : codes[index];
}

// The unit counts rows and columns from 0.
static int highest_index(const char* count) {
    const int number = decimal_value(count);
    return number == INT_MIN ? INT_MIN : number - 1;
}

static bool is_wall_size(const char* count) {
    const int number = decimal_value(count);
    return number >= 1 && number <= 16;
}

// --- The events ----------------------------------------------------------------------------------

// The event that places the screen. A wall of the kind '2' takes the grid as the document counts
// it. Allocated; null when memory runs out.
static char* placing_event(const Place& place, char variant) {
    const auto& field = place.field;
    char* event = nullptr;
    int length;
    if (!place.in_grid) {
        length = asprintf(&event, "e e_vw_enable_%s_%s_%s_%s_2;", field[0], field[1], field[2],
                          field[3]);
    } else if (variant == '2') {
        length = asprintf(&event, "e e_chg_video_wall_type;e e_vw_enable_%s_%s_%s_%s;", field[0],
                          field[1], field[2], field[3]);
    } else {
        length = asprintf(&event, "e e_vw_enable_%d_%d_%s_%s;", highest_index(field[0]),
                          highest_index(field[1]), field[2], field[3]);
    }
    return length < 0 ? nullptr : event;
}

static void raise_events(const Screen& screen, const Place& place, char variant,
                         const char* rotation, const char* stretch) {
    char* placing = placing_event(place, variant);
    if (placing == nullptr) {
        return;
    }
    run_shell_format("%se e_vw_moninfo_%s_%s_%s_%s;e e_vw_rotate_%s;e e_vw_stretch_type_%s;",
                     placing, screen.view_width, screen.outer_width, screen.view_height,
                     screen.outer_height, rotation, stretch);
    free(placing);
}

// The unit is told to take its source again where it has no audio add-on, or one for audio alone.
static bool may_reconnect(const char* audio_addon, const char* dante_mode) {
    return strcmp(audio_addon, "none") == 0 ||
           (strcmp(audio_addon, "dante") == 0 && strcmp(dante_mode, "audio-only") == 0);
}

static UploadResult apply_document(const cJSON* document) {
    const Screen screen = read_screen(document);
    Place place;
    if (!is_complete(screen) || !read_place(document, &place)) {
        return upload_member_missing;
    }
    char variant[output_text_size] = {};
    char audio_addon[output_text_size] = {};
    char dante_mode[output_text_size] = {};
    lm_get_value("VW_VAR_VER=", variant);
    lm_get_value("A_ADDON=", audio_addon);
    lm_get_value("DANTE_OP_MODE=", dante_mode);

    const char* rotation = code_of(screen.rotation, rotation_codes);
    const char* stretch = code_of(screen.stretch, stretch_codes);
    const bool limited = place.in_grid && variant[0] == '1';
    if (rotation == nullptr || stretch == nullptr ||
        (limited && !(is_wall_size(place.field[0]) && is_wall_size(place.field[1])))) {
        return upload_out_of_range;
    }
    raise_events(screen, place, variant[0], rotation, stretch);
    if (may_reconnect(audio_addon, dante_mode)) {
        send_filled_line(Channel::shell, "e e_reconnect::%s::v", screen.source);
    }
    return upload_done;
}

int apply_video_wall_upload(const char* content) {
    const cJSON* document = parse_document(content);
    return document == nullptr ? upload_not_json : apply_document(document);
}
