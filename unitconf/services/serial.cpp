// The RS-232 port: its line settings, the list of command codes that the unit keeps for it,
// tunnelling over IP and the pass-through to a partner unit.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "device/lines.h"
#include "device/list_text.h"
#include "device/parameters.h"
#include "device/snapshot.h"
#include "device/unit.h"
#include "unitconf/members.h"
#include "unitconf/numbers.h"
#include "unitconf/sections.h"
#include "unitconf/services/stored_list.h"
#include "unitconf/tables.h"

static constexpr Word parity_words[] = {
    {"none", "n"}, {"even", "e"}, {"odd", "o"}, {"mark", "m"}, {"space", "s"},
};

static constexpr Word format_words[] = {{"ascii", "a"}, {"hex", "h"}};

static constexpr Word ending_words[] = {
    {"null", "NULL"},
    {"cr", "CR"},
    {"lf", "LF"},
    {"crlf", "CRLF"},
};

// The text of a word; empty when it is none of them.
static const char* word_text(const char* given, Vocabulary words) {
    const Word* found = find_word(given, words);
    return found == nullptr ? "" : found->text;
}

// --- What the port is set to ---------------------------------------------------------------------

// The values of the port's line and, as the list of codes writes them, of its display.
struct PortSettings {
    char baud[32];
    char data_bits[16];
    char parity[16];
    char stop_bits[16];
    char format[16];
    char ending[16];
};

template <size_t size>
static void copy_text(char (&out)[size], const char* text) {
    snprintf(out, size, "%s", text);
}

template <size_t size>
static void take_number_or_text(char (&out)[size], const cJSON* item) {
    if (cJSON_IsNumber(item)) {
        snprintf(out, size, "%d", item->valueint);
    } else if (cJSON_IsString(item)) {
        copy_text(out, item->valuestring);
    }
}

// Takes the line that the port has now, "115200-8n1", apart, in place; a text without baud rate or
// frame gives the usual ones, and a short frame empty values. Empty fields are passed over, so
// "-8n1" is a baud rate. While the live store has no dump, the snapshot's slot holds the front
// panel's lock, which shares it, and that is taken for the line.
static void take_present_line(PortSettings* port, char* line) {
    char* rest = nullptr;
    const char* baud = strtok_r(line, "-", &rest);
    const char* frame = strtok_r(nullptr, "-", &rest);
    copy_text(port->baud, baud == nullptr ? "9600" : baud);
    char letters[4] = {};
    copy_text(letters, frame == nullptr ? "8n1" : frame);
    port->data_bits[0] = letters[0];
    port->parity[0] = letters[1];
    port->stop_bits[0] = letters[2];
}

// Replaces what the document gives. A parity that is no word leaves the present one; a format or an
// ending that is no word becomes empty.
static void take_setting(PortSettings* port, const cJSON* setting) {
    take_number_or_text(port->baud, find_member(setting, "baud"));
    take_number_or_text(port->data_bits, find_member(setting, "databit"));
    take_number_or_text(port->stop_bits, find_member(setting, "stopbit"));
    const cJSON* parity = find_member(setting, "parity");
    const Word* word =
        cJSON_IsString(parity) ? find_word(parity->valuestring, parity_words) : nullptr;
    if (word != nullptr) {
        copy_text(port->parity, word->text);
    }
    const cJSON* format = find_member(setting, "format");
    copy_text(port->format,
              cJSON_IsString(format) ? word_text(format->valuestring, format_words) : "a");
    const cJSON* ending = find_member(setting, "ending");
    if (cJSON_IsString(ending)) {
        copy_text(port->ending, word_text(ending->valuestring, ending_words));
    }
}

static void set_line(const PortSettings& port) {
    run_shell_format(
        "astparam s s0_baudrate %s-%s%s%s;lmparam s S0_BAUDRATE %s-%s%s%s;change_serial -f "
        "/dev/ttyS0 -b %s;",
        port.baud, port.data_bits, port.parity, port.stop_bits, port.baud, port.data_bits,
        port.parity, port.stop_bits, port.baud);
    pause_seconds(1);
}

// --- The list of command codes -------------------------------------------------------------------

static constexpr char kept_list[] = "/user_data2/rs232_list.json";
static constexpr ListFiles list_files = {"/var/tmp/rs232_list.json",
                                         "cp /var/tmp/rs232_list.json /user_data2/rs232_list.json",
                                         "rm -rf /var/tmp/rs232_list.json"};

// What an empty list is replaced by: five empty slots.
static constexpr char default_list[] =
    R"({"data":{"setting":{"baud":9600,"databit":8,"parity":"n","stopbit":1,"type":"1",)"
    R"("ending":"NULL","mode1":true,"mode2":false},"userdefined":[)"
    R"({"name":"User-defined 1","value":""},{"name":"User-defined 2","value":""},)"
    R"({"name":"User-defined 3","value":""},{"name":"User-defined 4","value":""},)"
    R"({"name":"User-defined 5","value":""}]}})";
static_assert(sizeof default_list - 1 == 326);

// The JSON text of a stored list, freed by the caller; null when it cannot be read.
static char* read_list(const char* path, LineBreaks line_breaks) {
    char* stored = nullptr;
    read_file_text(path, &stored);
    char* json = stored == nullptr ? nullptr : decode_list_text(stored, line_breaks);
    free(stored);
    return json;
}

// The ending for a document that gives none: that of the list's working copy, which a list upload
// leaves behind, otherwise "null".
static void take_list_ending(PortSettings* port) {
    char* json = read_list(list_files.working, LineBreaks::keep);
    cJSON* list = cJSON_Parse(json);
    const cJSON* setting = find_member(find_member(list, "data"), "setting");
    const cJSON* ending = find_member(setting, "ending");
    copy_text(port->ending, cJSON_IsString(ending) ? ending->valuestring : "null");
    cJSON_Delete(list);
    free(json);
}

// The section is applied once with all that it gives or leaves to the present values, and a second
// time when it gives the whole setting by itself.
enum class Pass : unsigned char { first, whole_setting };

// The number that the list gets, or null when the value is none: in the first pass what the line's
// text stands for, in the second only what the document gives as a number.
static cJSON* number_for_list(Pass pass, const cJSON* item, const char* text) {
    if (pass == Pass::whole_setting) {
        return cJSON_IsNumber(item) ? cJSON_CreateNumber(item->valueint) : nullptr;
    }
    if (text[0] == '\0' || text[strspn(text, "0123456789")] != '\0') {
        return nullptr;
    }
    return cJSON_CreateNumber(decimal_value(text));
}

// Replaces a member that is there by `value`, which may be null for none; adds nothing.
static void replace_member(cJSON* holder, const char* key, cJSON* value) {
    if (!cJSON_ReplaceItemInObject(holder, key, value)) {
        cJSON_Delete(value);
    }
}

// Switches a mode of the list where it stands, or adds it.
static void switch_mode(cJSON* list_setting, const char* key, bool on) {
    cJSON* value = cJSON_CreateBool(on);
    if (!cJSON_ReplaceItemInObjectCaseSensitive(list_setting, key, value) &&
        !cJSON_AddItemToObject(list_setting, key, value)) {
        cJSON_Delete(value);
    }
}

static void merge_setting(cJSON* list_setting, const cJSON* setting, const PortSettings& port,
                          Pass pass) {
    replace_member(list_setting, "baud",
                   number_for_list(pass, find_member(setting, "baud"), port.baud));
    replace_member(list_setting, "databit",
                   number_for_list(pass, find_member(setting, "databit"), port.data_bits));
    replace_member(list_setting, "stopbit",
                   number_for_list(pass, find_member(setting, "stopbit"), port.stop_bits));
    replace_member(list_setting, "parity", cJSON_CreateString(port.parity));
    replace_member(list_setting, "ending", cJSON_CreateString(port.ending));
    replace_member(list_setting, "format", cJSON_CreateString(port.format));
    const cJSON* format = find_member(setting, "format");
    if (cJSON_IsString(format)) {
        const bool ascii = find_after(format->valuestring, "ascii") != nullptr;
        replace_member(list_setting, "type", cJSON_CreateString(ascii ? "1" : "2"));
        switch_mode(list_setting, "mode1", ascii);
        switch_mode(list_setting, "mode2", !ascii);
    }
}

// Merges the section into the list that is kept. A list that cannot be read or is not JSON stays as
// it is.
static void merge_into_list(const cJSON* section, const PortSettings& port, Pass pass) {
    char* json = read_list(kept_list, LineBreaks::drop);
    if (json == nullptr) {
        return;
    }
    cJSON* list = cJSON_Parse(json[0] == '\0' ? default_list : json);
    free(json);
    if (list == nullptr) {
        return;
    }
    cJSON* data = cJSON_GetObjectItem(list, "data");
    cJSON* list_setting = cJSON_GetObjectItem(data, "setting");
    if (cJSON_IsObject(list_setting)) {
        merge_setting(list_setting, find_member(section, "setting"), port, pass);
    }
    const cJSON* slots = find_member(section, "userdefined");
    if (cJSON_IsArray(slots)) {
        replace_member(data, "userdefined", cJSON_Duplicate(slots, true));
    }
    run_shell_line("cp /user_data2/rs232_list.json /var/tmp/rs232_list.json");
    store_list(list_files, list);
    cJSON_Delete(list);
}

// --- The section ---------------------------------------------------------------------------------

static void apply_pass(const cJSON* section, const PortSettings& port, Pass pass) {
    set_line(port);
    merge_into_list(section, port, pass);
}

static bool is_whole_setting(const PortSettings& port, const cJSON* setting) {
    return port.baud[0] != '\0' && port.data_bits[0] != '\0' && port.stop_bits[0] != '\0' &&
           cJSON_IsString(find_member(setting, "parity")) &&
           nonempty_text(find_member(setting, "ending")) != nullptr;
}

static void apply_line_and_list(const cJSON* section, char* present_line) {
    const cJSON* setting = find_member(section, "setting");
    PortSettings port = {};
    take_present_line(&port, present_line);
    take_list_ending(&port);
    take_setting(&port, setting);
    apply_pass(section, port, Pass::first);
    if (is_whole_setting(port, setting)) {
        // The whole setting stands for itself: no present parity fills in for one that is no word.
        // Format and ending are those of the first pass, which took them from the document too.
        const cJSON* parity = find_member(setting, "parity");
        copy_text(port.parity, word_text(parity->valuestring, parity_words));
        apply_pass(section, port, Pass::whole_setting);
    }
}

// The members of the line and of the list are needed together, so the section's applier has dealt
// with them before the rows.
static bool applied_together(const Section& /*section*/, const cJSON* /*item*/) {
    return false;
}

static constexpr Member setting_members[] = {
    handled("baud", JsonType::number_or_string, applied_together),
    handled("databit", JsonType::number_or_string, applied_together),
    handled("parity", JsonType::string, applied_together, {}, parity_words),
    handled("stopbit", JsonType::number_or_string, applied_together),
    handled("ending", JsonType::string, applied_together, {}, ending_words),
    handled("format", JsonType::string, applied_together, {}, format_words),
    flag("ip_tunnel", "astparam s ip_rs232_tunneling 1;e e_chg_ip_rs232_tunneling",
         "astparam s ip_rs232_tunneling 0;e e_chg_ip_rs232_tunneling", pause_when_sent(1)),
    flag("ip_ssh_tunnel", "astparam s ip_ssh_rs232_tunneling 1;e e_chg_ip_ssh_rs232_tunneling",
         "astparam s ip_ssh_rs232_tunneling 0;e e_chg_ip_ssh_rs232_tunneling", pause_when_sent(1)),
};

static constexpr Member serial_pass_members[] = {
    text("serial_pass_ip_address", "astparam s serial_unit_conn %s;"),
    flag("enable", "astparam s serial_pass_enable 1;e e_serial_pass 1",
         "astparam s serial_pass_enable 0;e e_serial_pass 0", pause_when_sent(1)),
};

static constexpr Member serial_members[] = {
    object("setting", setting_members),
    handled("userdefined", JsonType::array, applied_together),
    object("serial_pass", serial_pass_members),
};
static_assert(well_formed(setting_members) && well_formed(serial_pass_members) &&
              well_formed(serial_members));

void apply_serial_section(const cJSON* section) {
    ParameterSnapshot present;
    take_snapshot(&present);
    if (find_member(section, "setting") != nullptr ||
        find_member(section, "userdefined") != nullptr) {
        apply_line_and_list(section, present.value[slot_s0_baudrate]);
    }
    apply_members(section, serial_members);
}

const SectionTable serial_table = {"serial", every_model, serial_members};
