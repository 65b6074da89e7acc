// What the reference of the configuration document says beside the tables.
#pragma once

#include "unitconf/tables.h"

// What a function does with a member, or, with an empty member, what holds for the whole section.
struct Note {
    const char* section;
    unsigned models;  // of the tables that it belongs to
    const char* member;
    const char* text;
};

struct Chapter {
    const char* title;
    const char* text;
    const SectionTable* tables[3];
};

inline constexpr char introduction[] =
    R"text(# The unit configuration document

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
)text";

inline constexpr Chapter chapters[] = {
    {"Video",
     nullptr,
     {&usbc_encoder_video_table, &hdmi_encoder_video_table, &decoder_video_table}},
    {"Audio",
     nullptr,
     {&usbc_encoder_audio_table, &hdmi_encoder_audio_table, &decoder_audio_table}},
    {"Preview", nullptr, {&preview_table}},
    {"EDID", nullptr, {&usbc_encoder_edid_table, &hdmi_encoder_edid_table, &decoder_edid_table}},
    {"HDCP", nullptr, {&usbc_encoder_hdcp_table, &hdmi_encoder_hdcp_table, &decoder_hdcp_table}},
    {"USB host port", nullptr, {&usb_host_table}},
    {"Pictures without a stream and at power-on",
     nullptr,
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
     "`front_panel_lock` is itself a boolean, on every model: a pause of 1 s, the microcontroller "
     "command "
     "`fplock,on` / `fplock,off`, a pause of 1 s. Both pauses are taken for a value of another "
     "type too.",
     {}},
    {"USB devices", nullptr, {&usb_devices_table}},
    {"Logging", nullptr, {&debug_table}},
    {"SSH", nullptr, {&ssh_table}},
    {"Power", nullptr, {&power_table}},
};

inline constexpr Note notes[] = {
    {"stream.video", every_model, "latency_mode",
     "0 or `\"ull\"`: the fifth character of the present video engine option is set to `0` and "
     "`astparam s v_eng_drv_option %s;echo 1 > /sys/devices/platform/videoip/ull` is run with it; "
     "1 or "
     "`\"normal\"`: set to `1`, with `echo 0`; a greater number: an empty line"},
    {"stream.video", every_model, "cast_mode",
     "a text that contains `unicast` runs the first line, otherwise one that contains `multicast` "
     "the "
     "second"},
    {"stream.video", hdmi_encoder, "stream_number",
     "digits only: `astparam s ch_select %s`, of which the unit takes 25 characters, so four "
     "digits"},
    {"stream.audio", every_model, "stream_audio.volume",
     "with a usable `source`, microcontroller `livol,<source>:<volume>`; otherwise to the present "
     "source"},
    {"stream.audio", both_encoders, "dante_aes67_tx.volume",
     "with a usable `source`, microcontroller `livol,<source>:<volume>`; otherwise to the present "
     "source"},
    {"stream.audio", decoder, "dante_aes67_tx.volume",
     "with a usable `source`, microcontroller `livol,<source>:<volume>`; otherwise an empty "
     "command"},
    {"stream.audio", every_model, "stream_audio.mute",
     "microcontroller `mute,<source>` / `unmute,<source>`, without a usable `source` the present "
     "one; "
     "not a boolean: an empty command"},
    {"stream.audio", every_model, "dante_aes67_tx.mute",
     "microcontroller `mute,<source>` / `unmute,<source>`, without a usable `source` the present "
     "one; "
     "not a boolean: an empty command"},
    {"stream.audio", every_model, "analog_audio.direction",
     "microcontroller `setanalogmode,0` for a text that begins with `in`, `setanalogmode,1` for "
     "`out`"},
    {"stream.audio", every_model, "analog_audio.type",
     "compared by how it begins; microcontroller `libal,1` / `libal,0` for an input, `lobal,1` / "
     "`lobal,0` for an output. The direction is that of `direction`, or the present one where that "
     "is no "
     "text"},
    {"stream.audio", decoder | hdmi_encoder, "analog_audio.volume",
     "microcontroller `livol,2:%d` for an input, `lovol,%d` for an output"},
    {"stream.audio", usbc_encoder, "analog_audio.volume",
     "microcontroller `livol,3:%d` for an input, `lovol,%d` for an output"},
    {"stream.audio", decoder | hdmi_encoder, "analog_audio.mute",
     "microcontroller `mute,2` / `unmute,2` for an input, `mute,3` / `unmute,3` for an output; not "
     "a "
     "boolean: an empty command"},
    {"stream.audio", usbc_encoder, "analog_audio.mute",
     "microcontroller `mute,3` / `unmute,3` for an input, `mute,4` / `unmute,4` for an output; not "
     "a "
     "boolean: an empty command"},
    {"edid", decoder, "copy_edid", "microcontroller `setedidcopy`, whatever the text"},
    {"edid", usbc_encoder, "usbc.copy_edid", "a text that begins with `-` sends nothing"},
    {"edid", both_encoders, "hdmi.copy_edid", "a text that begins with `-` sends nothing"},
    {"stream.preview", every_model, "resolution",
     "`<width>x<height>`: `astparam s ss_stream_option <width>,<height>,<3>,<4>,<5>,<6>;astparam s "
     "ss_snapshot_option <width>,<height>,<3>,0 ;` with the fields 3 to 6 of the present live "
     "option"},
    {"stream.preview", every_model, "fps",
     "`astparam s ss_stream_option <1>,<2>,%d,<4>,<5>,<6>;astparam s ss_snapshot_option "
     "<1>,<2>,%d,0 ;` "
     "with the fields of the present stored option: a `resolution` of the same document is not "
     "among "
     "them"},
    {"stream.preview", every_model, "enable", "`astparam s ss_en y;` / `astparam s ss_en n;`"},
    {"usb_devices", every_model, "green_list.enable",
     "writes `USB_GREENLIST=y` or `=n` and a line for each element of `lists` with a text `ipaddr` "
     "(`IP:<address>`, or `ID:<text>` for one of fewer than 5 characters) to "
     "`/user_data2/usb_greenlist.txt`, copies it to `/share`; `false` also stops the USB link"},
    {"usb_devices", every_model, "mouse_roaming.lists",
     "`astparam s kmoip_roaming_layout \"%s\" > /dev/null 2>&1`; without a `roaming_map_file`, the "
     "unit at "
     "the grid's origin also writes the units' positions into its roaming map"},
    {"video_wall", decoder, "unit_position",
     "`[row, column]`, each 0 to 18: `astparam s vw_row %d;`, `astparam s vw_column %d;`"},
    {"video_wall", decoder, "rotation",
     "`astparam s vw_rotate 5;` for 1, `3` for 2, `6` for 3, `0` for any other number"},
    {"video_wall", decoder, "stretch",
     "`astparam s vw_stretch_type 1;` for 1, `2` for any other number"},
    {"video_wall", decoder, "enable",
     "`false`: `astparam s en_video_wall n;lmparam s EN_VIDEO_WALL n;e e_vw_reset_to_pos_0_0;`, a "
     "pause of "
     "1 s. `true`: `astparam s en_video_wall y;lmparam s EN_VIDEO_WALL y;`, a pause of 1 s, then, "
     "when "
     "`mode` contains `symmetric` or `mosaic`, the wall's events with the values that the unit "
     "then "
     "holds, each line with a pause of 1 s"},
    {"dante", every_model, "dante_name",
     "`astparam s dante_device_name \"%s\" > /dev/null 2>&1`, a pause of 1 s, "
     "`reaload_dante_config.sh &`"},
    {"dante", every_model, "dante_use_device_name",
     "flag 5 of `device_name_sync_enable` is set to 1 or 0"},
    {"dante", every_model, "dante_audio.tx_ch1_name",
     "`astparam s a_d_tx_ch1_name` and, up to 32 characters, `dapi --txch1_name` with a pause of 3 "
     "s; every "
     "character but letters, digits, `-` and blank becomes `O`"},
    {"dante", every_model, "dante_audio.tx_ch2_name",
     "the same for the second transmit channel, up to 31 characters"},
    {"dante", every_model, "dante_audio.rx_ch1_name",
     "the same for the first receive channel, up to 32 characters"},
    {"dante", every_model, "dante_audio.rx_ch2_name",
     "the same for the second receive channel, up to 31 characters"},
    {"dante", every_model, "dante_audio.tx_ch1_use_device_name",
     "flag 0 of `device_name_sync_enable`; `true` also names the channel after the device, with "
     "`-01`"},
    {"dante", every_model, "dante_audio.tx_ch2_use_device_name",
     "flag 1 of `device_name_sync_enable`; `true` also names the channel after the device, with "
     "`-02`"},
    {"dante", every_model, "dante_audio.rx_ch1_use_device_name",
     "flag 3 of `device_name_sync_enable`; `true` also names the channel after the device, with "
     "`-01`"},
    {"dante", every_model, "dante_audio.rx_ch2_use_device_name",
     "flag 4 of `device_name_sync_enable`; `true` also names the channel after the device, with "
     "`-02`"},
    {"dante", every_model, "dante_audio.zavo_audio_bridge",
     "with a present Dante add-on, microcontroller `setzavostreama,1` / `setzavostreama,0`; then "
     "`astparam s "
     "a_a_stream_source 1;astparam s a_bridge_en y` / `astparam s a_a_stream_source 0;astparam s "
     "a_bridge_en "
     "n`"},
    {"dante", every_model, "dante_audio.tx_enable",
     "`astparam s a_d_tx_enable 1`, `dapi --txonoff 1 > /dev/null 2>&1` / the same with 0"},
    {"dante", every_model, "dante_ava",
     "`true`: the add-on becomes Dante AV-A. `false`, on a unit that is in AV-A mode now: "
     "`astparam s "
     "multicast_on y;`"},
    {"dante", every_model, "dante_audio_only",
     "`true`: the add-on becomes Dante audio-only. When neither this nor `dante_ava` is true the "
     "unit is "
     "switched to no add-on. Each change of the add-on takes pauses of 1 s and at the end one of 5 "
     "s"},
    {"fan_control", every_model, "enable",
     "`false`: microcontroller `fanspeed,0`, then `astparam s fancontrol_bk %d;` with the level of "
     "`speed_setting`, -1 where that is none"},
    {"fan_control", every_model, "speed_setting",
     "with `enable` true, microcontroller `fanspeed,<level>`; a level above 6 is sent as 0, a "
     "negative one "
     "not at all"},
    {"serial", every_model, "",
     "With a `setting` or a `userdefined` the port's line is set from the document and, where it "
     "gives "
     "nothing, from the present values: `astparam s s0_baudrate %s-%s%s%s;lmparam s S0_BAUDRATE "
     "%s-%s%s%s;change_serial -f /dev/ttyS0 -b %s;`, then a pause of 1 s, then the values are "
     "merged into "
     "the stored list `/user_data2/rs232_list.json`. A setting that gives baud rate, data bits, "
     "stop bits, "
     "parity and ending is applied a second time."},
    {"serial", every_model, "setting.baud", "baud rate of the line and the list"},
    {"serial", every_model, "setting.databit", "data bits of the line and the list"},
    {"serial", every_model, "setting.stopbit", "stop bits of the line and the list"},
    {"serial", every_model, "setting.parity", "parity letter of the line and the list"},
    {"serial", every_model, "setting.ending", "line ending in the list"},
    {"serial", every_model, "setting.format", "display format in the list; missing means ASCII"},
    {"serial", every_model, "userdefined", "replaces the command slots of the list"},
    {"ir", every_model, "data", "replaces the stored IR list, `/user_data2/ir_list.json`"},
    {"trigger", every_model, "trigger_lists",
     "four positions, each `{\"type\", \"data\"}`: power-on, video connect, video disconnect and "
     "custom lists "
     "replace the stored ones when `type` contains `power_on`, `video_connect`, `video_disconnect` "
     "or "
     "`custom`. A custom `data` array removes all stored custom lists and stores each element "
     "under its "
     "`apievent` name"},
    {"network", every_model, "lan1.use_device_name",
     "flag 2 of `device_name_sync_enable`; `true` also makes `hostname` take the device name"},
    {"network", every_model, "lan1.hostname",
     "`astparam s hostname_tx_middle %s;` with every character but letters, digits and `-` "
     "replaced: a "
     "blank by `-`, any other by `O`; an empty name runs an empty line"},
    {"network", every_model, "services_settings",
     "behind the three services, the VLAN member lists of both ports are made anew from what the "
     "unit then "
     "holds"},
    {"aes256", every_model, "aes256_mode",
     "1 or `\"standard\"`: the third character of the present video engine option becomes `8`; 2 "
     "or "
     "`\"high\"`: `0`; `astparam s v_eng_drv_option %s;`. Another number of 0 or more runs an "
     "empty line"},
    {"snmp", every_model, "v3_trap.engine_id",
     "`astparam s TrapV3EngID %s > /dev/null 2>&1` with the text of `v3_trap.username`, when that "
     "is there"},
    {"power", every_model, "power_status", "the word goes to the microcontroller"},
};
