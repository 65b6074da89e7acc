// The sections' tables as the tests and the reference of the configuration document see them. The
// program itself does not need them.
#pragma once

#include "unitconf/members.h"

// Units that a table serves; the values can be added up.
enum UnitModels : unsigned {
    usbc_encoder = 1,  // ZAVO-ENC-U300-DA
    hdmi_encoder = 2,  // ZAVO-ENC-E100-DA
    decoder = 4,       // ZAVO-DEC-D200-DA
    both_encoders = usbc_encoder | hdmi_encoder,
    every_model = both_encoders | decoder,
};

struct SectionTable {
    const char* section;  // the path of the section in the document, "stream.video"
    unsigned models;      // UnitModels
    const Member* rows;
    size_t count;

    template <size_t row_count>
    constexpr SectionTable(const char* path, unsigned for_models,
                           const Member (&members)[row_count])
        : section(path), models(for_models), rows(members), count(row_count) {}
};

// Each source file defines the tables of its sections under these names.
extern const SectionTable usbc_encoder_video_table, hdmi_encoder_video_table, decoder_video_table;
extern const SectionTable usbc_encoder_audio_table, hdmi_encoder_audio_table, decoder_audio_table;
extern const SectionTable usbc_encoder_edid_table, hdmi_encoder_edid_table, decoder_edid_table;
extern const SectionTable usbc_encoder_hdcp_table, hdmi_encoder_hdcp_table, decoder_hdcp_table;
extern const SectionTable no_stream_image_table, power_on_image_table, routing_table, preview_table;
extern const SectionTable usb_devices_table, usb_host_table;
extern const SectionTable osd_table, video_wall_table;
extern const SectionTable dante_table;
extern const SectionTable serial_table, ir_table, trigger_table;
extern const SectionTable network_table;
extern const SectionTable aes256_table, snmp_table, mqtt_table, https_table, ldap_table;
extern const SectionTable auth_8021x_table;
extern const SectionTable oled_display_table, auto_status_table, fan_control_table;
extern const SectionTable date_and_time_table, debug_table, ssh_table, power_table;
