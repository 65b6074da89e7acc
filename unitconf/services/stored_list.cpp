#include "unitconf/services/stored_list.h"

#include <cstdlib>
#include <cstring>

#include "device/list_text.h"
#include "device/unit.h"

void store_list(const ListFiles& files, const cJSON* document) {
    char* json = cJSON_PrintUnformatted(document);
    char* text = json == nullptr ? nullptr : encode_list_text(json, LineBreaks::keep);
    cJSON_free(json);
    if (text != nullptr && write_file(files.working, text, strlen(text))) {
        run_shell_line(files.copy_line);
        run_shell_line(files.remove_line);
    }
    free(text);
}

void store_list_of(const ListFiles& files, const cJSON* value) {
    cJSON* document = cJSON_CreateObject();
    cJSON* copy = cJSON_Duplicate(value, true);
    if (cJSON_AddItemToObject(document, "data", copy)) {
        store_list(files, document);
    } else {
        cJSON_Delete(copy);
    }
    cJSON_Delete(document);
}
