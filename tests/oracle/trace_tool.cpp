// Applies uploads to the recorder for a test written in another language. Reads one JSON object a
// line from standard input and prints one JSON object a line:
//   in:  {"upload": "configuration" | "custom_edid" | "video_wall", "model": "ZAVO-...", "text":
//   "...",
//         "rw": [["key", "value"], ...], "lm": [["KEY", "value"], ...],
//         "answers": {"astparam g key": "last line", ...}, "files": {"/path": "content", ...},
//         "refuse": ["/path that cannot be written", ...]}
//   out: {"result": 1, "trace": "shell ...\nmcu ...\npause 1\n..."}
#include <cjson/cJSON.h>

#include <cstdio>
#include <cstring>
#include <iostream>
#include <string>

#include "cgi/uploads.h"
#include "tests/support/any_model.h"
#include "tests/support/recorder.h"
#include "unitconf/configuration.h"

static std::string text_of(const cJSON* request, const char* key) {
    const cJSON* item = cJSON_GetObjectItemCaseSensitive(request, key);
    return cJSON_IsString(item) ? item->valuestring : "";
}

static void provide_unit(const cJSON* request) {
    const cJSON* item = nullptr;
    cJSON_ArrayForEach(item, cJSON_GetObjectItemCaseSensitive(request, "rw")) {
        set_rw_value(cJSON_GetArrayItem(item, 0)->valuestring,
                     cJSON_GetArrayItem(item, 1)->valuestring);
    }
    cJSON_ArrayForEach(item, cJSON_GetObjectItemCaseSensitive(request, "lm")) {
        set_lm_value(cJSON_GetArrayItem(item, 0)->valuestring,
                     cJSON_GetArrayItem(item, 1)->valuestring);
    }
    cJSON_ArrayForEach(item, cJSON_GetObjectItemCaseSensitive(request, "answers")) {
        answer_command(item->string, item->valuestring);
    }
    cJSON_ArrayForEach(item, cJSON_GetObjectItemCaseSensitive(request, "files")) {
        provide_file(item->string, item->valuestring);
    }
    cJSON_ArrayForEach(item, cJSON_GetObjectItemCaseSensitive(request, "refuse")) {
        refuse_writing(item->valuestring);
    }
}

static int apply(const std::string& upload, const std::string& model, const std::string& text) {
    if (upload == "configuration") {
        return apply_configuration_to_model(model.c_str(), text.c_str());
    }
    return upload == "custom_edid" ? load_custom_edid(text.c_str())
                                   : apply_video_wall_upload(text.c_str());
}

int main() {
    std::string line;
    while (std::getline(std::cin, line)) {
        cJSON* request = cJSON_Parse(line.c_str());
        reset_recorder();
        provide_unit(request);
        const int result =
            apply(text_of(request, "upload"), text_of(request, "model"), text_of(request, "text"));
        cJSON* answer = cJSON_CreateObject();
        cJSON_AddNumberToObject(answer, "result", result);
        cJSON_AddStringToObject(answer, "trace", recorded_trace().c_str());
        char* printed = cJSON_PrintUnformatted(answer);
        std::cout << printed << std::endl;
        cJSON_free(printed);
        cJSON_Delete(answer);
        cJSON_Delete(request);
    }
    return 0;
}
