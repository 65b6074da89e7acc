#include "unitconf/models.h"

#include "unitconf/sections.h"

// Behind the stream's own message, and sent also without a stream.
static constexpr SectionRow progress_only = {nullptr, nullptr, nullptr, Progress::always};

static constexpr SectionRow usbc_encoder_rows[] = {
    {"stream", "video", apply_usbc_encoder_video_section, Progress::none},
    {"stream", "audio", apply_usbc_encoder_audio_section, Progress::none},
    {"stream", "preview", apply_preview_section, Progress::with_parent},
    progress_only,
    {nullptr, "edid", apply_usbc_encoder_edid_section, Progress::always},
    {nullptr, "hdcp", apply_usbc_encoder_hdcp_section, Progress::always},
    {nullptr, "usb_host", apply_usb_host_section, Progress::always},
};

static constexpr SectionRow hdmi_encoder_rows[] = {
    {"stream", "video", apply_hdmi_encoder_video_section, Progress::none},
    {"stream", "audio", apply_hdmi_encoder_audio_section, Progress::none},
    {"stream", "preview", apply_preview_section, Progress::with_parent},
    progress_only,
    {nullptr, "edid", apply_hdmi_encoder_edid_section, Progress::always},
    {nullptr, "hdcp", apply_hdmi_encoder_hdcp_section, Progress::always},
    {nullptr, "usb_host", apply_usb_host_section, Progress::always},
};

static constexpr SectionRow decoder_rows[] = {
    {"stream", "video", apply_decoder_video_section, Progress::none},
    {"stream", "audio", apply_decoder_audio_section, Progress::none},
    {"stream", "preview", apply_preview_section, Progress::with_parent},
    progress_only,
    {nullptr, "edid", apply_decoder_edid_section, Progress::always},
    {nullptr, "hdcp", apply_decoder_hdcp_section, Progress::always},
    {nullptr, "no_stream_image", apply_no_stream_image_section, Progress::always},
    {nullptr, "power_on_image", apply_power_on_image_section, Progress::always},
    {nullptr, "osd", apply_osd_section, Progress::always},
    {nullptr, "video_wall", apply_video_wall_section, Progress::always},
};

// Shared by all models, before and after the place of the decoder's routing.
static constexpr SectionRow time_and_dante_rows[] = {
    {nullptr, "aes67", apply_aes67_section, Progress::always},
    {nullptr, "date_and_time", apply_date_and_time_section, Progress::always},
    {nullptr, "dante", apply_dante_section, Progress::always},
};

static constexpr SectionRow decoder_routing_rows[] = {
    {nullptr, "routing", apply_routing_section, Progress::always},
};

static constexpr SectionRow control_and_service_rows[] = {
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

const ModelSections usbc_encoder_sections = {
    {usbc_encoder_rows, time_and_dante_rows, control_and_service_rows}};

const ModelSections hdmi_encoder_sections = {
    {hdmi_encoder_rows, time_and_dante_rows, control_and_service_rows}};

const ModelSections decoder_sections = {
    {decoder_rows, time_and_dante_rows, decoder_routing_rows, control_and_service_rows}};

const ModelSections unknown_model_sections = {{time_and_dante_rows, control_and_service_rows}};
