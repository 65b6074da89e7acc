#include "unitconf/configuration.h"

#include <cjson/cJSON.h>

#include <cstddef>
#include <cstring>

#include "device/lines.h"
#include "device/unit.h"
#include "unitconf/document.h"
#include "unitconf/sections.h"

// When the progress message behind a section's place is sent. A section that is absent has its
// message all the same.
enum class Progress : unsigned char { none, with_parent, always };

struct SectionRow {
    const char* parent;  // the object that holds the key; null for the document itself
    const char* key;     // null for a place that has only its message
    void (*apply)(const cJSON* section);
    Progress progress;
};

// The total that every progress message carries; the steps of a model need not end at it.
static constexpr int progress_total = 26;

// --- The sections of each model, in the order in which they are applied
// ---------------------------

static constexpr SectionRow usbc_encoder_sections[] = {
    {"stream", "video", apply_usbc_encoder_video_section, Progress::none},
    {"stream", "audio", apply_usbc_encoder_audio_section, Progress::none},
    {"stream", "preview", apply_preview_section, Progress::with_parent},
    {nullptr, nullptr, nullptr, Progress::always},
    {nullptr, "edid", apply_usbc_encoder_edid_section, Progress::always},
    {nullptr, "hdcp", apply_usbc_encoder_hdcp_section, Progress::always},
    {nullptr, "usb_host", apply_usb_host_section, Progress::always},
};

static constexpr SectionRow hdmi_encoder_sections[] = {
    {"stream", "video", apply_hdmi_encoder_video_section, Progress::none},
    {"stream", "audio", apply_hdmi_encoder_audio_section, Progress::none},
    {"stream", "preview", apply_preview_section, Progress::with_parent},
    {nullptr, nullptr, nullptr, Progress::always},
    {nullptr, "edid", apply_hdmi_encoder_edid_section, Progress::always},
    {nullptr, "hdcp", apply_hdmi_encoder_hdcp_section, Progress::always},
    {nullptr, "usb_host", apply_usb_host_section, Progress::always},
};

static constexpr SectionRow decoder_sections[] = {
    {"stream", "video", apply_decoder_video_section, Progress::none},
    {"stream", "audio", apply_decoder_audio_section, Progress::none},
    {"stream", "preview", apply_preview_section, Progress::with_parent},
    {nullptr, nullptr, nullptr, Progress::always},
    {nullptr, "edid", apply_decoder_edid_section, Progress::always},
    {nullptr, "hdcp", apply_decoder_hdcp_section, Progress::always},
    {nullptr, "no_stream_image", apply_no_stream_image_section, Progress::always},
    {nullptr, "power_on_image", apply_power_on_image_section, Progress::always},
    {nullptr, "osd", apply_osd_section, Progress::always},
    {nullptr, "video_wall", apply_video_wall_section, Progress::always},
};

// Shared by all models, before and after the place of the decoder's routing.
static constexpr SectionRow time_and_dante_sections[] = {
    {nullptr, "aes67", apply_aes67_section, Progress::always},
    {nullptr, "date_and_time", apply_date_and_time_section, Progress::always},
    {nullptr, "dante", apply_dante_section, Progress::always},
};

static constexpr SectionRow decoder_routing_sections[] = {
    {nullptr, "routing", apply_routing_section, Progress::always},
};

static constexpr SectionRow control_and_service_sections[] = {
    {nullptr, "oled_display", apply_oled_display_section, Progress::always},
    {nullptr, "auto_status", apply_auto_status_section, Progress::always},
    {nullptr, "fan_control", apply_fan_control_section, Progress::always},
    {nullptr, "serial", apply_serial_section, Progress::always},
    {nullptr, "ir", apply_ir_section, Progress::always},
    {nullptr, "trigger", apply_trigger_section, Progress::always},
    {nullptr, "network", apply_network_section, Progress::always},
    {nullptr, "aes256", apply_aes256_section, Progress::always},
    {nullptr, "snmp", apply_snmp_section, Progress::always},
    {nullptr, "mqtt", apply_mqtt_section, Progress::always},
    {nullptr, "https", apply_https_section, Progress::always},
    {nullptr, "ldap", apply_ldap_section, Progress::always},
    {nullptr, "auth_8021x", apply_8021x_section, Progress::always},
    {nullptr, "front_panel_lock", apply_front_panel_lock_section, Progress::always},
    {nullptr, "usb_devices", apply_usb_devices_section, Progress::always},
    {nullptr, "debug", apply_debug_section, Progress::always},
    {nullptr, "ssh", apply_ssh_section, Progress::always},
    {nullptr, "power", apply_power_section, Progress::always},
};

// A run of sections; a model is a few of them, one behind the other.
struct SectionRun {
    const SectionRow* rows = nullptr;
    size_t count = 0;

    constexpr SectionRun() = default;
    template <size_t row_count>
    constexpr SectionRun(const SectionRow (&all)[row_count]) : rows(all), count(row_count) {}
};

struct Model {
    const char* name;
    SectionRun runs[4];
};

static constexpr Model models[] = {
    {"ZAVO-ENC-U300-DA",
     {usbc_encoder_sections, time_and_dante_sections, control_and_service_sections}},
    {"ZAVO-ENC-E100-DA",
     {hdmi_encoder_sections, time_and_dante_sections, control_and_service_sections}},
    {"ZAVO-DEC-D200-DA",
     {decoder_sections, time_and_dante_sections, decoder_routing_sections,
      control_and_service_sections}},
};

static constexpr Model unknown_model = {nullptr,
                                        {time_and_dante_sections, control_and_service_sections}};

// --- The run
// --------------------------------------------------------------------------------------

// Model names are compared over this many characters, so that a longer text which begins with the
// model passes.
static constexpr size_t model_name_length = 16;

static bool same_model(const char* a, const char* b) {
    return strncmp(a, b, model_name_length) == 0;
}

static const Model& find_model(const char* name) {
    for (const Model& model : models) {
        if (same_model(name, model.name)) {
            return model;
        }
    }
    return unknown_model;
}

void report_progress(int step, int total) {
    run_shell_format("echo \"upgradeUnitSetting:%d,%d\" | nc 127.0.0.1 4445", step, total);
}

static void apply_if_present(const cJSON* item, void (*apply)(const cJSON* section)) {
    if (item != nullptr) {
        apply(item);
    }
}

static void apply_sections(const cJSON* document, const Model& model) {
    int step = 0;
    for (const SectionRun& run : model.runs) {
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

static int apply_document(const char* model, const cJSON* document) {
    const cJSON* named = cJSON_GetObjectItem(document, "model");
    if (named == nullptr) {
        return configuration_without_model;
    }
    if (!cJSON_IsString(named) || !same_model(named->valuestring, model)) {
        return configuration_for_other_model;
    }
    apply_if_present(cJSON_GetObjectItem(document, "device_name"), apply_device_name);
    apply_if_present(cJSON_GetObjectItem(document, "serial_number"), apply_serial_number);
    apply_sections(document, find_model(named->valuestring));
    run_shell_line("astparam save;");
    pause_seconds(1);
    run_shell_line("e e_reboot &");
    return configuration_applied;
}

int apply_configuration_to_model(const char* model, const char* text) {
    const cJSON* document = parse_document(text);
    return document == nullptr ? configuration_not_json : apply_document(model, document);
}
