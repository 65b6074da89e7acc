// The command lists that the web interface edits: RS-232 codes, IR codes and trigger commands.
#include <cjson/cJSON.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>

#include "cgi/uploads.h"
#include "device/lines.h"
#include "device/list_text.h"
#include "device/shell_echo.h"
#include "device/unit.h"
#include "unitconf/document.h"
#include "unitconf/members.h"

struct StoredList {
    const char* file;
    const char* copy_line;  // makes the working copy that the running services read
};

static constexpr StoredList rs232_list = {
    "/user_data2/rs232_list.json",
    "cp /user_data2/rs232_list.json /var/tmp/rs232_list.json",
};

static constexpr StoredList ir_list = {
    "/user_data2/ir_list.json",
    "cp /user_data2/ir_list.json /var/tmp/ir_list.json",
};

// In the order of a trigger document's "data".
static constexpr StoredList built_in_trigger_lists[] = {
    {"/user_data2/trigger_poweron_event_list.json",
     "cp /user_data2/trigger_poweron_event_list.json /var/tmp/trigger_poweron_event_list.json"},
    {"/user_data2/trigger_video_connect_event_list.json",
     "cp /user_data2/trigger_video_connect_event_list.json "
     "/var/tmp/trigger_video_connect_event_list.json"},
    {"/user_data2/trigger_video_disconnect_event_list.json",
     "cp /user_data2/trigger_video_disconnect_event_list.json "
     "/var/tmp/trigger_video_disconnect_event_list.json"},
};

static constexpr int built_in_triggers =
    sizeof built_in_trigger_lists / sizeof built_in_trigger_lists[0];

static void write_list(const char* json, const StoredList& list) {
    char* text = encode_list_text(json, LineBreaks::drop);
    if (text == nullptr) {
        return;
    }
    echo_into_file(text, list.file);
    free(text);
    run_shell_line(list.copy_line);
}

// Stores a part of a document: its formatted print, without the line breaks.
static void store_printed(const cJSON* item, const StoredList& list) {
    char* printed = cJSON_Print(item);
    if (printed != nullptr) {
        write_list(printed, list);
        cJSON_free(printed);
    }
}

// --- RS-232 --------------------------------------------------------------------------------------

int store_rs232_list(const char* content) {
    const cJSON* data = find_member(parse_document(content), "data");
    if (find_member(data, "setting") == nullptr) {
        return upload_refused;
    }
    write_list(content, rs232_list);
    return upload_done;
}

// --- IR ------------------------------------------------------------------------------------------

int store_ir_list(const char* content) {
    const cJSON* document = parse_document(content);
    const cJSON* delay = find_member(document, "delay");
    const cJSON* repeats = find_member(document, "rpt");
    const cJSON* repeat_delay = find_member(document, "rptdelay");
    if (!cJSON_IsArray(find_member(document, "data")) || !cJSON_IsString(delay) ||
        !cJSON_IsString(repeats) || !cJSON_IsString(repeat_delay)) {
        return upload_refused;
    }
    write_list(content, ir_list);
    run_shell_format(
        "astparam s ir_setting_delay %s;astparam s ir_setting_rpt %s;"
        "astparam s ir_setting_rpt_delay %s;astparam save;",
        delay->valuestring, repeats->valuestring, repeat_delay->valuestring);
    return upload_done;
}

// --- Triggers ------------------------------------------------------------------------------------

static const char* event_name(const cJSON* event) {
    return cJSON_GetStringValue(find_member(event, "apievent"));
}

// The file is named after the event. The running services get no working copy of it; what is copied
// behind it is the video disconnect list once more.
static void store_custom_list(const cJSON* event) {
    char* file = nullptr;
    if (asprintf(&file, "/user_data2/trigger_custom_event%s_list.json", event_name(event)) >= 0) {
        store_printed(event, {file, built_in_trigger_lists[built_in_triggers - 1].copy_line});
        free(file);
    }
}

static int store_custom_lists(const cJSON* events) {
    if (!cJSON_IsArray(events)) {
        return upload_refused;
    }
    const cJSON* event = nullptr;
    cJSON_ArrayForEach(event, events) {
        if (event_name(event) == nullptr) {
            return upload_refused;
        }
    }
    cJSON_ArrayForEach(event, events) {
        store_custom_list(event);
    }
    return upload_done;
}

int store_trigger_lists(const char* content) {
    const cJSON* data = find_member(parse_document(content), "data");
    if (!cJSON_IsArray(data) || cJSON_GetArraySize(data) != built_in_triggers + 1) {
        return upload_refused;
    }
    const cJSON* element = data->child;
    for (const StoredList& list : built_in_trigger_lists) {
        store_printed(element, list);
        element = element->next;
    }
    return store_custom_lists(find_member(element, "data"));
}
