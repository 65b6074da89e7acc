// Infrared: the receiver, the timing of what is sent, the code list and the pass-through to a
// partner unit. Triggers: the command lists that run on power-on, on video coming and going and on
// events of the API, and the switch over all of them.
#include <cstdlib>
#include <cstring>

#include "device/lines.h"
#include "device/list_text.h"
#include "device/unit.h"
#include "unitconf/members.h"
#include "unitconf/sections.h"
#include "unitconf/services/stored_list.h"
#include "unitconf/tables.h"

// --- Infrared ------------------------------------------------------------------------------------

static constexpr ListFiles ir_list = {"/var/tmp/ir_list.json",
                                      "cp /var/tmp/ir_list.json /user_data2/ir_list.json",
                                      "rm -rf /var/tmp/ir_list.json"};

static bool store_ir_codes(const Section& /*section*/, const cJSON* codes) {
    store_list_of(ir_list, codes);
    return true;
}

static constexpr Member ir_members[] = {
    within("ir_read", flag("enable", "astparam s irread 1;e e_chg_ir_read_data_check",
                           "astparam s irread 0;e e_chg_ir_read_data_check", pause_when_sent(1))),
    number("ir_delay", "astparam s ir_setting_delay %d;"),
    number("ir_repeat_time", "astparam s ir_setting_rpt %d;"),
    number("ir_repeat_delay", "astparam s ir_setting_rpt_delay %d;"),
    handled("data", JsonType::any, store_ir_codes),
    within("ir_pass", text("ir_pass_ip_address", "astparam s ir_unit_conn %s;")),
    within("ir_pass", flag("enable", "astparam s ir_pass_enable 1;e e_ir_pass 1",
                           "astparam s ir_pass_enable 0;e e_ir_pass 0", pause_when_sent(1))),
};
static_assert(well_formed(ir_members));

void apply_ir_section(const cJSON* section) {
    apply_members(section, ir_members);
}

const SectionTable ir_table = {"ir", every_model, ir_members};

// --- Triggers ------------------------------------------------------------------------------------

// The lists of the unit's own events, each at its position in the document. A list whose "type"
// does not hold the word of its position is passed over.
struct EventList {
    const char* word;
    ListFiles files;
};

static constexpr EventList event_lists[] = {
    {"power_on",
     {"/var/tmp/trigger_poweron_event_list.json",
      "cp /var/tmp/trigger_poweron_event_list.json /user_data2/trigger_poweron_event_list.json",
      "rm -rf /var/tmp/trigger_poweron_event_list.json"}},
    {"video_connect",
     {"/var/tmp/trigger_video_connect_event_list.json",
      "cp /var/tmp/trigger_video_connect_event_list.json "
      "/user_data2/trigger_video_connect_event_list.json",
      "rm -rf /var/tmp/trigger_video_connect_event_list.json"}},
    {"video_disconnect",
     {"/var/tmp/trigger_video_disconnect_event_list.json",
      "cp /var/tmp/trigger_video_disconnect_event_list.json "
      "/user_data2/trigger_video_disconnect_event_list.json",
      "rm -rf /var/tmp/trigger_video_disconnect_event_list.json"}},
};

// The lists of API events stand behind them.
static constexpr int custom_position = 3;
static_assert(sizeof event_lists / sizeof event_lists[0] == custom_position);

static bool is_list_of(const cJSON* list, const char* word) {
    const cJSON* type = find_member(list, "type");
    return cJSON_IsString(type) && strstr(type->valuestring, word) != nullptr;
}

static void store_event_list(const cJSON* list, const EventList& event) {
    const cJSON* data = find_member(list, "data");
    if (data != nullptr && is_list_of(list, event.word)) {
        store_list_of(event.files, data);
    }
}

// An API event's list is a file of its own, written by the shell and named after the event; one
// that does not name its event has no place to go.
static void write_custom_list(const cJSON* list) {
    const cJSON* event = find_member(list, "apievent");
    if (!cJSON_IsString(event)) {
        return;
    }
    char* json = cJSON_Print(list);
    char* text = json == nullptr ? nullptr : encode_list_text(json, LineBreaks::drop);
    cJSON_free(json);
    if (text != nullptr) {
        run_shell_format("echo -ne \"%s\" > /user_data2/trigger_custom_event_%s.json", text,
                         event->valuestring);
    }
    free(text);
}

static void replace_custom_lists(const cJSON* custom) {
    const cJSON* lists = find_member(custom, "data");
    if (!cJSON_IsArray(lists) || !is_list_of(custom, "custom")) {
        return;
    }
    run_shell_line("rm -rf /user_data2/trigger_custom_event_*");
    const cJSON* list = nullptr;
    cJSON_ArrayForEach(list, lists) {
        write_custom_list(list);
    }
}

static bool store_event_lists(const Section& /*section*/, const cJSON* lists) {
    if (!cJSON_IsArray(lists)) {
        return false;
    }
    int position = 0;
    for (const EventList& event : event_lists) {
        store_event_list(cJSON_GetArrayItem(lists, position), event);
        position++;
    }
    replace_custom_lists(cJSON_GetArrayItem(lists, custom_position));
    return true;
}

static constexpr Member trigger_members[] = {
    exact_case(handled("trigger_lists", JsonType::array, store_event_lists)),
    flag("enable", "astparam s triggerEnable 1;", "astparam s triggerEnable 0;"),
};
static_assert(well_formed(trigger_members));

void apply_trigger_section(const cJSON* section) {
    apply_members(section, trigger_members);
}

const SectionTable trigger_table = {"trigger", every_model, trigger_members};
