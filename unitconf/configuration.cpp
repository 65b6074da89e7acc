#include "unitconf/configuration.h"

#include <cjson/cJSON.h>

#include <cstddef>

#include "device/lines.h"
#include "device/unit.h"
#include "unitconf/document.h"
#include "unitconf/models.h"
#include "unitconf/sections.h"

// The total that every progress message carries; the steps of a model need not end at it.
static constexpr int progress_total = 26;

void report_progress(int step, int total) {
    run_shell_format("echo \"upgradeUnitSetting:%d,%d\" | nc 127.0.0.1 4445", step, total);
}

static void apply_if_present(const cJSON* item, void (*apply)(const cJSON* section)) {
    if (item != nullptr) {
        apply(item);
    }
}

static void apply_sections(const cJSON* document, const ModelSections& sections) {
    int step = 0;
    for (const SectionRun& run : sections.runs) {
        for (size_t i = 0; i < run.count; i++) {
            const SectionRow& row = run.rows[i];
            const cJSON* holder =
                row.parent == nullptr ? document : cJSON_GetObjectItem(document, row.parent);
            apply_if_present(cJSON_GetObjectItem(holder, row.key), row.apply);
            if (row.progress == Progress::always ||
                (row.progress == Progress::with_parent && holder != nullptr)) {
                step++;
                report_progress(step, progress_total);
            }
        }
    }
}

static int apply_document(const char* model, const ModelSections& sections, const cJSON* document) {
    const cJSON* named = cJSON_GetObjectItem(document, "model");
    if (named == nullptr) {
        return configuration_without_model;
    }
    if (!cJSON_IsString(named) || !same_model(named->valuestring, model)) {
        return configuration_for_other_model;
    }
    apply_if_present(cJSON_GetObjectItem(document, "device_name"), apply_device_name);
    apply_if_present(cJSON_GetObjectItem(document, "serial_number"), apply_serial_number);
    apply_sections(document, sections);
    run_shell_line("astparam save;");
    pause_seconds(1);
    run_shell_line("e e_reboot &");
    return configuration_applied;
}

int apply_configuration(const char* model, const ModelSections& sections, const char* text) {
    const cJSON* document = parse_document(text);
    return document == nullptr ? configuration_not_json : apply_document(model, sections, document);
}
