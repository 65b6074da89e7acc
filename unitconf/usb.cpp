// USB: power, the units it may connect to, the input the host port follows, and mouse roaming over
// a grid of units.
#include "unitconf/usb.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "device/lines.h"
#include "device/parameters.h"
#include "device/unit.h"
#include "unitconf/fields.h"
#include "unitconf/members.h"
#include "unitconf/sections.h"
#include "unitconf/tables.h"

// A text that grows in a buffer of fixed size; what does not fit is cut at its end.
struct BoundedText {
    char* bytes;  // NUL-terminated
    size_t size;
    size_t used;
};

static void append_bytes(BoundedText* text, const char* bytes, size_t length) {
    const size_t room = text->size - text->used - 1;
    const size_t taken = length < room ? length : room;
    memcpy(text->bytes + text->used, bytes, taken);
    text->used += taken;
    text->bytes[text->used] = '\0';
}

static void append_text(BoundedText* text, const char* addition) {
    append_bytes(text, addition, strlen(addition));
}

static BoundedText allocate_text(size_t size) {
    BoundedText text = {static_cast<char*>(malloc(size)), size, 0};
    if (text.bytes != nullptr) {
        text.bytes[0] = '\0';
    }
    return text;
}

// --- The green list ------------------------------------------------------------------------------

// Bytes of the list's text for each element and for its first line, the closing NUL included.
static constexpr size_t green_list_element_size = 30;

// Shorter texts are identifiers, the others addresses.
static constexpr size_t shortest_address = 5;

// The line breaks are escapes that the unit's echo turns into bytes.
static void append_green_list_unit(BoundedText* list, const char* unit) {
    append_text(list, strlen(unit) < shortest_address ? "\\x0aID:" : "\\x0aIP:");
    append_text(list, unit);
}

// Stores the green list; switching it off also stops the USB link. The list's text has a size for
// its number of elements, and one that is longer ends there, wherever that is.
static bool store_green_list(const Section& section, const cJSON* enable) {
    if (!cJSON_IsBool(enable)) {
        return false;
    }
    const cJSON* units = find_member(section.object, "lists");
    const size_t count = static_cast<size_t>(cJSON_GetArraySize(units));
    BoundedText list = allocate_text((count + 1) * green_list_element_size);
    if (list.bytes == nullptr) {
        return false;
    }
    const bool on = cJSON_IsTrue(enable);
    append_text(&list, on ? "USB_GREENLIST=y" : "USB_GREENLIST=n");
    const cJSON* element = nullptr;
    cJSON_ArrayForEach(element, units) {
        const char* unit = nonempty_text(find_member(element, "ipaddr"));
        if (unit != nullptr) {
            append_green_list_unit(&list, unit);
        }
    }
    run_shell_format(
        "echo -ne \"%s\" > /user_data2/usb_greenlist.txt;"
        "cp /user_data2/usb_greenlist.txt /share/usb_greenlist.txt;%s",
        list.bytes, on ? "" : "e e_stop_link::u;");
    free(list.bytes);
    return true;
}

// --- Mouse roaming -------------------------------------------------------------------------------

static constexpr size_t longest_layout = 4095;
static constexpr size_t most_roaming_units = 18;
static constexpr int longest_roaming_entry = 99;
static constexpr int furthest_position = 16;
static constexpr int not_a_position = -1;

static constexpr char roaming_map_path[] = "/var/tmp/roaming_file";
static constexpr char stored_roaming_map_path[] = "/user_data2/roaming_file";

struct RoamingUnit {
    Field entry;  // as the layout has it
    char mac[output_text_size];
    int column;
    int row;
};

// The units of a layout; 0 when it has none, too many or an entry that is too long. Empty entries
// are passed over.
static size_t find_roaming_units(Field layout, RoamingUnit* units) {
    size_t count = 0;
    while (layout.text != nullptr) {
        const Field entry = take_field(&layout, ':');
        if (entry.length == 0) {
            continue;
        }
        if (count == most_roaming_units || entry.length > longest_roaming_entry) {
            return 0;
        }
        units[count].entry = entry;
        count++;
    }
    return count;
}

// A layout begins with the grid's origin. Any "0,0" in its first entry passes for that.
static bool begins_at_origin(Field entry) {
    return memmem(entry.text, static_cast<size_t>(entry.length), "0,0", 3) != nullptr;
}

// Asks the network for the unit's MAC address, at the lowest priority so that streaming goes on
// undisturbed. False when no unit answers.
static bool resolve_mac(RoamingUnit* unit) {
    Field rest = unit->entry;
    const Field address = take_field(&rest, ',');
    char query[longest_roaming_entry + 100];
    snprintf(query, sizeof query,
             "nice -n 19 ionice -c 3 node_query --match_key MY_IP=%.*s --match_key IS_HOST=n "
             "--get_key MY_MAC",
             address.length, address.text);
    unit->mac[0] = '\0';
    read_command_output(query, unit->mac);
    return unit->mac[0] != '\0';
}

static bool resolve_macs(RoamingUnit* units, size_t count) {
    for (size_t i = 0; i < count; i++) {
        if (!resolve_mac(&units[i])) {
            return false;
        }
    }
    return true;
}

static int read_position(Field digits) {
    int position = digits.length == 0 ? not_a_position : 0;
    for (int i = 0; i < digits.length; i++) {
        if (digits.text[i] < '0' || digits.text[i] > '9') {
            return not_a_position;
        }
        position = position * 10 + (digits.text[i] - '0');
        if (position > furthest_position) {
            return not_a_position;
        }
    }
    return position;
}

static bool read_positions(RoamingUnit* units, size_t count) {
    for (size_t i = 0; i < count; i++) {
        Field fields[3];
        split_fields(units[i].entry, ',', fields, 3);
        units[i].column = read_position(fields[1]);
        units[i].row = read_position(fields[2]);
        if (units[i].column == not_a_position || units[i].row == not_a_position) {
            return false;
        }
    }
    return true;
}

static void read_own_mac(char* mac) {
    char with_colons[output_text_size] = {};
    read_command_output("astparam g ethaddr", with_colons);
    for (const char* at = with_colons; *at != '\0'; at++) {
        if (*at != ':') {
            *mac++ = *at;
        }
    }
    *mac = '\0';
}

// Whether the first unit at column 0 and row 0 is the one with this MAC address.
static bool is_origin(const RoamingUnit* units, size_t count, const char* mac) {
    for (size_t i = 0; i < count; i++) {
        if (units[i].column == 0 && units[i].row == 0) {
            return strcmp(units[i].mac, mac) == 0;
        }
    }
    return false;
}

static const RoamingUnit* find_unit(Field mac, const RoamingUnit* units, size_t count) {
    for (size_t i = 0; i < count; i++) {
        if (field_is(mac, units[i].mac)) {
            return &units[i];
        }
    }
    return nullptr;
}

// Copies a map entry field by field. The two fields behind the first MAC address of a listed unit
// become the unit's column and row, also where the entry ends before them.
static void append_map_entry(BoundedText* map, Field entry, const RoamingUnit* units,
                             size_t count) {
    const RoamingUnit* unit = nullptr;
    while (entry.text != nullptr) {
        const Field field = take_field(&entry, ',');
        append_bytes(map, field.text, static_cast<size_t>(field.length));
        if (unit == nullptr) {
            unit = find_unit(field, units, count);
            if (unit != nullptr) {
                char position[32];
                snprintf(position, sizeof position, ",%d,%d", unit->column, unit->row);
                append_text(map, position);
                take_field(&entry, ',');
                take_field(&entry, ',');
            }
        }
        append_text(map, entry.text == nullptr ? "" : ",");
    }
}

// What an entry grows by at most: it ends with the MAC address and gets both fields.
static constexpr size_t longest_position = sizeof ",16,16" - 1;

static size_t count_entries(const char* map) {
    size_t count = 1;
    for (const char* at = strchr(map, ':'); at != nullptr; at = strchr(at + 1, ':')) {
        count++;
    }
    return count;
}

static Field without_line_end(const char* text) {
    Field line = field_of(text, INT_MAX);
    while (line.length > 0 &&
           (line.text[line.length - 1] == '\r' || line.text[line.length - 1] == '\n')) {
        line.length--;
    }
    return line;
}

static void rewrite_roaming_map(const char* present, const RoamingUnit* units, size_t count) {
    BoundedText map =
        allocate_text(strlen(present) + count_entries(present) * longest_position + 1);
    if (map.bytes == nullptr) {
        return;
    }
    Field rest = without_line_end(present);
    while (rest.text != nullptr) {
        append_map_entry(&map, take_field(&rest, ':'), units, count);
        append_text(&map, rest.text == nullptr ? "" : ":");
    }
    replace_file(roaming_map_path, map.bytes, map.used);
    replace_file(stored_roaming_map_path, map.bytes, map.used);
    free(map.bytes);
}

void update_roaming_layout(const char* layout) {
    RoamingUnit units[most_roaming_units];
    const size_t count = find_roaming_units(field_of(layout, longest_layout), units);
    if (count == 0 || !begins_at_origin(units[0].entry) || !resolve_macs(units, count)) {
        return;
    }
    char own_mac[output_text_size];
    read_own_mac(own_mac);
    if (!read_positions(units, count) || !is_origin(units, count, own_mac)) {
        return;
    }
    char* map = nullptr;
    read_file_text(roaming_map_path, &map);
    if (map != nullptr) {
        rewrite_roaming_map(map, units, count);
        free(map);
    }
}

// A document that brings its own map leaves the unit's map alone; without one, the layout's
// positions go into it. The unit's parameters get the layout as given, never in a resolved form.
static bool store_roaming_layout(const Section& section, const cJSON* item) {
    if (!cJSON_IsString(item)) {
        return false;
    }
    send_filled_line(Channel::shell, "astparam s kmoip_roaming_layout \"%s\" > /dev/null 2>&1",
                     item->valuestring);
    if (find_member(section.object, "roaming_map_file") == nullptr) {
        update_roaming_layout(item->valuestring);
    }
    return true;
}

// --- "usb_devices" -------------------------------------------------------------------------------

// Keyboard/mouse and USB 2 are accepted and switch nothing, so that documents with them apply.
static constexpr Member usb_km_members[] = {
    ignored("enable", JsonType::boolean, pause_always(1)),
};
static_assert(well_formed(usb_km_members));

static constexpr Member usb_2_members[] = {
    ignored("enable", JsonType::boolean),
    ignored("usb_follow_video", JsonType::boolean),
};
static_assert(well_formed(usb_2_members));

static constexpr Member green_list_members[] = {
    together_with("lists", Case::ignored,
                  handled("enable", JsonType::boolean, store_green_list, pause_when_sent(1))),
    read_with("enable", Case::exact, "lists", JsonType::array),
};
static_assert(well_formed(green_list_members));

static constexpr Member mouse_roaming_members[] = {
    flag("enable", "astparam s mouseroam_enable 1;", "astparam s mouseroam_enable 0;"),
    number("rows", "astparam s roaming_rows %d > /dev/null 2>&1"),
    number("columns", "astparam s roaming_columns %d > /dev/null 2>&1"),
    handled("lists", JsonType::string, store_roaming_layout),
    any_text("roaming_map_file",
             "echo \"%s\" > /var/tmp/roaming_file;"
             "cp /var/tmp/roaming_file /user_data2/roaming_file"),
};
static_assert(well_formed(mouse_roaming_members));

static constexpr Member usb_devices_members[] = {
    pause(1),
    flag("enable", mcu("usbpower,on"), mcu("usbpower,off"), pause_always(1)),
    object("usb_km_enable", usb_km_members),
    flag("usb_follow_video", "astparam s usbFlv 1;", "astparam s usbFlv 0;"),
    object("usb_2_enable", usb_2_members),
    object("green_list", green_list_members),
    object("mouse_roaming", mouse_roaming_members),
};
static_assert(well_formed(usb_devices_members));

// --- "usb_host" ----------------------------------------------------------------------------------

static constexpr Word host_inputs[] = {{"auto", 0}, {"usb-c", 1}, {"hdmi", 2}};

static constexpr Member usb_host_members[] = {
    flag("enable", "astparam s access_on_u y", "astparam s access_on_u n",
         pause_when_sent_then_always(1, 1)),
    word_or_minus_one("host_select", host_inputs, mcu("setusbhost,%d"), pause_always(1)),
};
static_assert(well_formed(usb_host_members));

// --- The sections --------------------------------------------------------------------------------

const SectionTable usb_devices_table = {"usb_devices", every_model, usb_devices_members};
const SectionTable usb_host_table = {"usb_host", both_encoders, usb_host_members};

void apply_usb_devices_section(const cJSON* section) {
    apply_members(section, usb_devices_members);
}

void apply_usb_host_section(const cJSON* section) {
    apply_members(section, usb_host_members);
}
