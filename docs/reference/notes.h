// What the reference of the configuration document says beside the tables.
#pragma once

#include "unitconf/tables.h"

// What a function does with a member, or, with an empty member, what holds for the whole section.
struct Note {
    const char* section;
    const char* member;
    const char* text;
};

struct Chapter {
    const char* title;
    const char* text;
    const SectionTable* tables[3];
};

inline constexpr char introduction[] =
    R"(# The unit configuration document

One JSON object that describes every setting of a unit, posted as the form field `UnitConfUpload`. This
page is made from the tables that the program walks (`build/docs/reference`); a test compares both.

## How a document is read

- `"model"` (string) is required: its first 16 characters must be those of the unit's model,
  `ZAVO-ENC-U300-DA`, `ZAVO-ENC-E100-DA` or `ZAVO-DEC-D200-DA`. Without it, or with another, nothing is
  changed and the reply says so. Everything else is optional.
- Sections and members are applied in the order of this page, whatever their order in the document. A
  section, or a member, that is not there changes nothing.
- A value of the wrong type, a word that is not listed, a number out of limits: skipped without a
  message. Unknown keys are ignored. What a section does in any case (rows marked "(always)", pauses
  without "when sent") is done as soon as the section's key is there.
- Keys of booleans must be spelled exactly; all other keys ignore case. Where a row differs, it says
  "exact case" or is listed without it. Of two keys that are the same, the first counts. Words are
  always compared exactly.
- Numbers are cut to whole ones and held between -2147483648 and 2147483647.
- Texts go into the unit's shell lines as they stand. A text with double quotes, `$`, backquotes or a
  backslash can change the line that the unit runs: keep to plain texts.
- At the end the unit stores its parameters (`astparam save;`), waits 1 second and restarts, also when
  nothing was changed.

In the tables, `%s` and `%d` stand for the member's value, a `/` parts the line of `true` (or of the
first case) from that of `false`, and pauses are in seconds, taken behind the row.

## Identity

| Member | Type | Words, limits | What the unit is told |
|---|---|---|---|
| `device_name` | string | stored up to 32 bytes | `astparam s deviceName "%s" > /dev/null 2>&1`; then, for each of the two Dante transmit channels that the unit keeps in step with it (`device_name_sync_enable`), `astparam s a_d_tx_ch1_name "%s-01"` (`-02` for channel 2) and, up to 29 bytes, `dapi --txch1_name "%s-01" > /dev/null 2>&1` with every character but letters, digits and `-` replaced: a blank by `-`, any other by `O` |
| `serial_number` | string | | `astparam s serialNumber "%s"  > /dev/null 2>&1;lmparam s SERIALNUMBER "%s";`, then a pause of 1 s |
)";

inline constexpr Chapter chapters[] = {
    {"Video", nullptr,
     {&usbc_encoder_video_table, &hdmi_encoder_video_table, &decoder_video_table}},
    {"Audio", nullptr,
     {&usbc_encoder_audio_table, &hdmi_encoder_audio_table, &decoder_audio_table}},
    {"Preview", nullptr, {&preview_table}},
    {"EDID", nullptr, {&usbc_encoder_edid_table, &hdmi_encoder_edid_table, &decoder_edid_table}},
    {"HDCP", nullptr, {&usbc_encoder_hdcp_table, &hdmi_encoder_hdcp_table, &decoder_hdcp_table}},
    {"USB host port", nullptr, {&usb_host_table}},
    {"Pictures without a stream and at power-on", nullptr,
     {&no_stream_image_table, &power_on_image_table}},
    {"On-screen display", nullptr, {&osd_table}},
    {"Video wall", nullptr, {&video_wall_table}},
    {"AES67", "`aes67` is accepted and does nothing; the key is reserved.", {}},
    {"Date and time", nullptr, {&date_and_time_table}},
    {"Dante", nullptr, {&dante_table}},
    {"Routing", nullptr, {&routing_table}},
    {"Front panel display", nullptr, {&oled_display_table}},
    {"Status reports", nullptr, {&auto_status_table}},
    {"Fan", nullptr, {&fan_control_table}},
    {"RS-232", nullptr, {&serial_table}},
    {"IR and triggers", nullptr, {&ir_table, &trigger_table}},
    {"Network", nullptr, {&network_table}},
    {"Stream encryption", nullptr, {&aes256_table}},
    {"SNMP", nullptr, {&snmp_table}},
    {"MQTT", nullptr, {&mqtt_table}},
    {"HTTPS", nullptr, {&https_table}},
    {"LDAP", nullptr, {&ldap_table}},
    {"802.1X", nullptr, {&auth_8021x_table}},
    {"Front panel lock",
     "`front_panel_lock` is itself a boolean, on every model: a pause of 1 s, the microcontroller command "
     "`fplock,on` / `fplock,off`, a pause of 1 s. Both pauses are taken for a value of another type too.",
     {}},
    {"USB devices", nullptr, {&usb_devices_table}},
    {"Logging", nullptr, {&debug_table}},
    {"SSH", nullptr, {&ssh_table}},
    {"Power", nullptr, {&power_table}},
};
