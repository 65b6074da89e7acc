// What the reference of the configuration document says beside the tables.
#pragma once

#include "unitconf/tables.h"

// What a function does with a member, or, with an empty member, what holds for the whole section.
struct Note {
    const char* section;
    unsigned models;  // of the tables that it belongs to
    const char* member;
    const char* text;
    const char* limits = nullptr;  // stands for what the table says of words and limits
};

struct Chapter {
    const char* title;
    const char* text;
    const SectionTable* tables[3];
};

inline constexpr char title_and_summary[] =
    R"text(# The unit configuration document

One JSON object that describes every setting of a unit, posted as the form field `UnitConfUpload`. This
page is made from the tables that the program walks (`build/docs/reference`); a test compares both.

)text";

// The headings in front of the chapters.
inline constexpr const char* introduction_headings[] = {"How a document is read",
                                                        "Order and progress", "Identity"};

inline constexpr char how_it_is_read[] = R"text(
## How a document is read

- `"model"` (string) is required: its first 16 characters must be those of the unit's model,
  `ZAVO-ENC-U300-DA`, `ZAVO-ENC-E100-DA` or `ZAVO-DEC-D200-DA`. Without it, or with another, nothing is
  changed and the reply says so. Everything else is optional.
- Sections and members are applied in the order of this page, whatever their order in the document.
- A section or a member that is not there changes nothing. A value of the wrong type, a word that is not
  listed, a number out of limits: skipped without a message. Unknown keys are ignored. The exceptions:
  - What a section does in any case (rows marked "(always)", pauses without "when sent") is done as soon
    as the section's key, or the object's that the row names, is there.
  - `dante`: the unit is switched to no add-on unless the section asks for one.
  - `serial`: a `setting` or a `userdefined` sets the whole line and the display settings of the stored
    list, with defaults for what is not given; words that are not listed can empty a value.
  - `fan_control`: `enable` false without a usable `speed_setting` stores the level -1.
  - `trigger`: a custom list removes all stored custom lists.
  - `network`: `services_settings` makes the VLAN member lists of both ports anew.
  - `usb_host.host_select` and `osd.settings.position`: a word that is not listed is sent as -1.
  - `stream.audio` and `hdcp`: a mute or a compatibility switch that is not a boolean sends an empty
    command, and so does the decoder's `dante_aes67_tx.volume` without a usable `source`. `latency_mode`,
    `aes256_mode` and an empty `hostname` can run an empty line. Neither changes a setting.
- Keys of booleans must be spelled exactly; all other keys ignore case. Where a row differs, it says
  "exact case" or is listed without it. Of two keys that are the same, the first counts. Words are
  always compared exactly.
- Numbers are cut to whole ones and held between -2147483648 and 2147483647.
- Where the present video engine option is changed (`latency_mode`, `aes256_mode`, `dante`), a present
  `0x8` counts as `0x80000000`, and `0x0` or no value as `0x00000000`.
- Texts go into the unit's shell lines as they stand. What a text can do there depends on its place:
  - Where `%s` stands without quotes, as most do, a blank ends the value, and a line feed or any sign
    that the shell knows (`;`, `&`, `<`, `>`, `(`, `)`, `#`, `*`, `?`, `$`, quotes of either kind, the
    vertical bar, the backquote, the backslash and the like) can change the line or run another.
  - Where `%s` stands in double quotes, a double quote, `$`, a backquote or a backslash can.
    Microcontroller commands are written by such a line too, of at most 1,023 bytes.

  Keep to plain texts, and where `%s` stands without quotes to texts without blanks. Passwords are no
  exception.
- At the end the unit stores its parameters (`astparam save;`), waits 1 second and restarts
  (`e e_reboot &`), also when nothing was changed.

In the tables, `%s` and `%d` stand for the member's value, a `/` parts the line of `true` (or of the
first case) from that of `false`, and pauses are in seconds, taken behind the row.
)text";

inline constexpr char order_and_progress[] = R"text(
## Order and progress

`device_name` and `serial_number` come first, without a message. Then, behind each place of the table, the
unit's status service gets the message `upgradeUnitSetting:<step>,26`, also where the document has no such
section: `echo "upgradeUnitSetting:%d,%d" | nc 127.0.0.1 4445`. The total is always 26: the encoders end
at step 26, the decoder goes on to 30. A document without `stream` does not send that section's message, so
that every later step, and the last one, is one lower. `stream` holds `video`, `audio` and `preview`, in
this order.

)text";

inline constexpr char identity_chapter[] = R"text(
## Identity

| Member | Type | Words, limits | What the unit is told |
|---|---|---|---|
| `device_name` | string | stored up to 32 bytes | `astparam s deviceName "%s" > /dev/null 2>&1`; then, for each of the two Dante transmit channels that the unit keeps in step with it (flags 0 and 1 of `device_name_sync_enable`), `astparam s a_d_tx_ch1_name "%s-01"` (`-02` for channel 2) and, for a name of up to 29 bytes, `dapi --txch1_name "%s-01" > /dev/null 2>&1` with every byte but ASCII letters, digits and `-` replaced: a blank by `-`, any other by `O`. Of that form only as many bytes are kept as the name has characters |
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
     "0 or `\"ull\"`: `astparam s v_eng_drv_option %s;echo 1 > /sys/devices/platform/videoip/ull` "
     "with "
     "the present video engine option, its fifth character set to `0`; 1 or `\"normal\"`: "
     "`astparam s "
     "v_eng_drv_option %s;echo 0 > /sys/devices/platform/videoip/ull`, with `1`; a greater number: "
     "an empty line"},
    {"stream.video", every_model, "cast_mode",
     "a text that contains `unicast` runs the first line, otherwise one that contains `multicast` "
     "the second"},
    {"stream.video", hdmi_encoder, "stream_number",
     "`astparam s ch_select %s`, cut to 25 characters, so that four digits are left",
     "digits only, not empty"},
    {"stream.audio", both_encoders, "stream_audio.volume",
     "with a usable `source`, microcontroller `livol,<source>:<volume>`; otherwise to the present "
     "source"},
    {"stream.audio", both_encoders, "dante_aes67_tx.volume",
     "with a usable `source`, microcontroller `livol,<source>:<volume>`; otherwise to the present "
     "source"},
    {"stream.audio", decoder, "dante_aes67_tx.volume",
     "with a usable `source`, microcontroller `livol,<source>:<volume>`; otherwise an empty "
     "command"},
    {"stream.audio", both_encoders, "stream_audio.mute",
     "microcontroller `mute,<source>` / `unmute,<source>`, without a usable `source` the present "
     "one; not a boolean: an empty command"},
    {"stream.audio", every_model, "dante_aes67_tx.mute",
     "microcontroller `mute,<source>` / `unmute,<source>`, without a usable `source` the present "
     "one; not a boolean: an empty command"},
    {"stream.audio", both_encoders, "stream_audio.auto",
     "counts only when `analog_audio` is there; `analog_audio.auto` has no effect"},
    {"stream.audio", every_model, "analog_audio.direction",
     "microcontroller `setanalogmode,0` for a text that begins with `in`, `setanalogmode,1` for "
     "`out`"},
    {"stream.audio", every_model, "analog_audio.type",
     "compared by how it begins; microcontroller `libal,1` / `libal,0` for an input, `lobal,1` / "
     "`lobal,0` for an output. The direction is that of `direction`, or the present one where that "
     "is no text; a direction that is neither sends nothing"},
    {"stream.audio", decoder | hdmi_encoder, "analog_audio.volume",
     "microcontroller `livol,2:%d` for an input, `lovol,%d` for an output; a direction as for "
     "`type`"},
    {"stream.audio", usbc_encoder, "analog_audio.volume",
     "microcontroller `livol,3:%d` for an input, `lovol,%d` for an output; a direction as for "
     "`type`"},
    {"stream.audio", decoder | hdmi_encoder, "analog_audio.mute",
     "microcontroller `mute,2` / `unmute,2` for an input, `mute,3` / `unmute,3` for an output; not "
     "a boolean: an empty command; a direction as for `type`, and without one nothing is sent"},
    {"stream.audio", usbc_encoder, "analog_audio.mute",
     "microcontroller `mute,3` / `unmute,3` for an input, `mute,4` / `unmute,4` for an output; not "
     "a boolean: an empty command; a direction as for `type`, and without one nothing is sent"},
    {"edid", decoder, "copy_edid", "microcontroller `setedidcopy`, whatever the text"},
    {"edid", usbc_encoder, "usbc.copy_edid", "a text that begins with `-` sends nothing"},
    {"edid", both_encoders, "hdmi.copy_edid", "a text that begins with `-` sends nothing"},
    {"stream.preview", every_model, "resolution",
     "`<width>x<height>`: `astparam s ss_stream_option <width>,<height>,<3>,<4>,<5>,<6>;astparam s "
     "ss_snapshot_option <width>,<height>,<3>,0 ;` with the fields 3 to 6 of the present "
     "`SS_STREAM_OPTION` of the live store",
     "not empty"},
    {"stream.preview", every_model, "fps",
     "`astparam s ss_stream_option <1>,<2>,%d,<4>,<5>,<6>;astparam s ss_snapshot_option "
     "<1>,<2>,%d,0 ;` with the fields of the present `ss_stream_option` of the run-time store. The "
     "`resolution` of the same document may not be among them yet"},
    {"stream.preview", every_model, "enable", "`astparam s ss_en y;` / `astparam s ss_en n;`"},
    {"usb_devices", every_model, "green_list.enable",
     "`echo -ne \"USB_GREENLIST=y<units>\" > /user_data2/usb_greenlist.txt;cp "
     "/user_data2/usb_greenlist.txt /share/usb_greenlist.txt;` / `echo -ne "
     "\"USB_GREENLIST=n<units>\" > /user_data2/usb_greenlist.txt;cp /user_data2/usb_greenlist.txt "
     "/share/usb_greenlist.txt;e e_stop_link::u;`, with a line for each element of `lists`, so "
     "that `false` also stops the USB link"},
    {"usb_devices", every_model, "green_list.lists",
     "an element gives the line `IP:<address>`, or `ID:<text>` for a text of fewer than 5 "
     "characters. The list as a whole has room for 30 bytes for each element and 30 more, less "
     "one; it is cut there, and a line end takes 4 of them",
     "elements `{\"ipaddr\": \"10.0.0.5\"}`; others and empty texts are passed over"},
    {"usb_devices", every_model, "mouse_roaming.lists",
     "`astparam s kmoip_roaming_layout \"%s\" > /dev/null 2>&1`, for any text. Without a "
     "`roaming_map_file`, the unit at the grid's origin also writes the units' positions into its "
     "roaming map, if every unit answers when asked for its MAC. A layout beyond the limits leaves "
     "the map as it is, without a message",
     "for the map: `<address>,<column>,<row>` for each unit, with `:` between them, the origin "
     "(`0,0`) first; at most 18 units, each under 100 bytes; columns and rows 0 to 16; what is "
     "behind 4,095 bytes is not looked at"},
    {"video_wall", decoder, "unit_position",
     "`[row, column]`: `astparam s vw_row %d;`, `astparam s vw_column %d;`, either without the "
     "other",
     "two numbers, each 0 to 18"},
    {"video_wall", decoder, "rotation",
     "`astparam s vw_rotate 5;` for 1, `3` for 2, `6` for 3, `0` for any other number"},
    {"video_wall", decoder, "stretch",
     "`astparam s vw_stretch_type 1;` for 1, `2` for any other number"},
    {"video_wall", decoder, "enable",
     "`false`: `astparam s en_video_wall n;lmparam s EN_VIDEO_WALL n;e e_vw_reset_to_pos_0_0;`, a "
     "pause of 1 s. `true`: `astparam s en_video_wall y;lmparam s EN_VIDEO_WALL y;`, a pause of 1 "
     "s, then what `mode` asks for, with the values that the unit holds by then. Symmetric: on a "
     "unit of the second kind (`VW_VAR_VER` begins with 2) `e e_chg_video_wall_type;` and a pause "
     "of 1 s; then `e e_vw_pos_layout_<max row>_<max column>;e e_vw_enable_<max row>_<max "
     "column>_<row>_<column>;e e_vw_moninfo_<ha>_<ht>_<va>_<vt>;e e_vw_refresh_pos_idx_<row + "
     "1>_<column + 1>;e e_vw_rotate_<rotate>;e e_vw_stretch_type_<stretch>;`, a pause of 1 s. "
     "Mosaic: `e e_vw_pos_layout_<max row>_<max column>;e e_vw_enable_<x1>_<y1>_<x2>_<y2>_2;e "
     "e_vw_moninfo_<ha>_<ht>_<va>_<vt>;e e_vw_refresh_pos_idx_<row + 1>_<column + 1>;e "
     "e_vw_rotate_<rotate>;e e_vw_stretch_type_<stretch>;`, a pause of 1 s"},
    {"video_wall", decoder, "mode", "only when that is true",
     "contains `symmetric` or `mosaic` (with both: symmetric); another text only switches the wall "
     "on"},
    {"dante", every_model, "",
     "The add-on of the unit is switched last, behind all members, whatever their order: to AV-A "
     "when `dante_ava` is true, then to audio-only when `dante_audio_only` is true, and to none "
     "when neither is, also in a section that names neither. Each of these lines is followed by a "
     "pause of 1 s, the last one by a further pause of 5 s. A unit that had the add-on, or whose "
     "channels were named, then runs `echo 1 > /user_data2/no_dante_upgrade_config`.\n\nA channel "
     "name is stored with every byte but ASCII letters, digits, `-` and blanks replaced by `O`, "
     "and cut to as many bytes as it has characters: a name beyond ASCII loses its end. Up to a "
     "length, counted after that, the Dante device is told the name too, with a pause of 3 s "
     "behind it."},
    {"dante", every_model, "dante_name",
     "`astparam s dante_device_name \"%s\" > /dev/null 2>&1`, a pause of 1 s, "
     "`reaload_dante_config.sh &`",
     "not empty"},
    {"dante", every_model, "dante_use_device_name",
     "flag 5 of `device_name_sync_enable` (counted from 0) becomes 1 or 0: `astparam s "
     "device_name_sync_enable %s;` with all flags"},
    {"dante", every_model, "dante_audio.tx_ch1_name",
     "`astparam s a_d_tx_ch1_name \"%s\"  > /dev/null 2>&1`; up to 32 bytes also `dapi "
     "--txch1_name \"%s\" > /dev/null 2>&1` and a pause of 3 s",
     "not empty"},
    {"dante", every_model, "dante_audio.tx_ch2_name",
     "`astparam s a_d_tx_ch2_name \"%s\" > /dev/null 2>&1`; up to 31 bytes also `dapi --txch2_name "
     "\"%s\" > /dev/null 2>&1` and a pause of 3 s",
     "not empty"},
    {"dante", every_model, "dante_audio.rx_ch1_name",
     "`astparam s a_d_rx_ch1_name \"%s\"  > /dev/null 2>&1`; up to 32 bytes also `dapi "
     "--rxch1_name \"%s\" > /dev/null 2>&1` and a pause of 3 s",
     "not empty"},
    {"dante", every_model, "dante_audio.rx_ch2_name",
     "`astparam s a_d_rx_ch2_name \"%s\" > /dev/null 2>&1`; up to 31 bytes also `dapi --rxch2_name "
     "\"%s\" > /dev/null 2>&1` and a pause of 3 s",
     "not empty"},
    {"dante", every_model, "dante_audio.tx_ch1_use_device_name",
     "flag 0 of `device_name_sync_enable`; `true` also runs `astparam s a_d_tx_ch1_name \"%s-01\"` "
     "with the channel form of the present device name and, for one of up to 31 bytes, `dapi "
     "--txch1_name \"%s-01\" > /dev/null 2>&1` and a pause of 3 s"},
    {"dante", every_model, "dante_audio.tx_ch2_use_device_name",
     "flag 1 of `device_name_sync_enable`; `true` also runs `astparam s a_d_tx_ch2_name \"%s-02\"` "
     "with the channel form of the present device name and, for one of up to 31 bytes, `dapi "
     "--txch2_name \"%s-02\" > /dev/null 2>&1` and a pause of 3 s"},
    {"dante", every_model, "dante_audio.rx_ch1_use_device_name",
     "flag 3 of `device_name_sync_enable`; `true` also runs `astparam s a_d_rx_ch1_name \"%s-01\"` "
     "with the channel form of the present device name and, for one of up to 31 bytes, `dapi "
     "--rxch1_name \"%s-01\" > /dev/null 2>&1` and a pause of 3 s"},
    {"dante", every_model, "dante_audio.rx_ch2_use_device_name",
     "flag 4 of `device_name_sync_enable`; `true` also runs `astparam s a_d_rx_ch2_name \"%s-02\"` "
     "with the channel form of the present device name and, for one of up to 31 bytes, `dapi "
     "--rxch2_name \"%s-02\" > /dev/null 2>&1` and a pause of 3 s"},
    {"dante", every_model, "dante_audio.zavo_audio_bridge",
     "with a present Dante add-on, microcontroller `setzavostreama,1` / `setzavostreama,0`; then "
     "`astparam s a_a_stream_source 1;astparam s a_bridge_en y` / `astparam s a_a_stream_source "
     "0;astparam s a_bridge_en n`"},
    {"dante", every_model, "dante_audio.tx_enable",
     "`astparam s a_d_tx_enable 1`, `dapi --txonoff 1 > /dev/null 2>&1` / `astparam s "
     "a_d_tx_enable 0`, `dapi --txonoff 0 > /dev/null 2>&1`"},
    {"dante", every_model, "dante_ava",
     "`true`, at the end: `astparam s a_addon dante;astparam s dante_op_mode AV-A;lmparam s "
     "A_ADDON dante;lmparam s DANTE_OP_MODE AV-A;`. `false`, on a unit that is in AV-A mode now: "
     "`astparam s multicast_on y;`"},
    {"dante", every_model, "dante_audio_only",
     "`true`, at the end: `astparam s a_addon dante;astparam s dante_op_mode audio-only;lmparam s "
     "A_ADDON dante;lmparam s DANTE_OP_MODE audio-only;`. Neither this nor `dante_ava` true: "
     "`astparam s v_eng_drv_option 0x8%s;` with the present option behind its first digit (not "
     "when the present text holds no `0x`), then "
     "`astparam s a_addon none;astparam s dante_op_mode none;lmparam s A_ADDON none;lmparam s "
     "DANTE_OP_MODE none;`"},
    {"fan_control", every_model, "enable",
     "`false`: microcontroller `fanspeed,0`, then `astparam s fancontrol_bk %d;` with the level of "
     "`speed_setting`, -1 where there is none or it is not understood"},
    {"fan_control", every_model, "speed_setting",
     "with `enable` true, microcontroller `fanspeed,<level>`; a level above 6 is sent as 0, a "
     "negative one not at all"},
    {"serial", every_model, "",
     "A `setting` or a `userdefined`, of any type, has the port set and the stored list merged, in "
     "these steps:\n\n1. Each value of the line is the document's, otherwise the present one of "
     "the live store's `S0_BAUDRATE`, and `9600` and `8n1` where that is missing too. (While the "
     "live store's dump is missing, the run-time store's `fplock` stands in its place.)\n2. "
     "`astparam s s0_baudrate %s-%s%s%s;lmparam s S0_BAUDRATE %s-%s%s%s;change_serial -f "
     "/dev/ttyS0 -b %s;`, filled with baud rate, data bits, parity and stop bits, also when "
     "nothing has changed; then a pause of 1 s.\n3. The stored list `/user_data2/rs232_list.json` "
     "is changed and stored through its working copy, `/var/tmp/rs232_list.json`. Without that "
     "file, or when it is not JSON, it stays as it is; an empty one counts as a list with five "
     "empty slots. In its `data.setting` the members that are there get new values: `baud`, "
     "`databit` and `stopbit` where the line's value is all digits, `parity`, `ending` and "
     "`format` always. When the document has a text `format`, `type` becomes `\"1\"` if that "
     "contains `ascii` and `\"2\"` if not, and `mode1` and `mode2` become true and false, or false "
     "and true; these two are added where they are missing.\n4. Steps 2 and 3 are done a second "
     "time when baud rate, data bits and stop bits are not empty, the document has a text `parity` "
     "and its `ending` is a text that is not empty. What differs then: a parity word that is not "
     "listed gives an empty parity, not the present one, and the list's `baud`, `databit` and "
     "`stopbit` change only where the document has numbers.\n\nThe switches `ip_tunnel` and "
     "`ip_ssh_tunnel` and `serial_pass` follow behind all of this."},
    {"serial", every_model, "setting.baud", "baud rate of the line and the list",
     "a text is cut to 31 bytes"},
    {"serial", every_model, "setting.databit", "data bits of the line and the list",
     "a text is cut to 15 bytes"},
    {"serial", every_model, "setting.stopbit", "stop bits of the line and the list",
     "a text is cut to 15 bytes"},
    {"serial", every_model, "setting.parity",
     "parity of the line and the list; missing or not listed: the present one, and the empty text "
     "the second time"},
    {"serial", every_model, "setting.ending",
     "line ending in the list; not listed: the empty text; missing: that of the list's working "
     "copy, cut to 15 bytes, or `null` without one, which is the usual case"},
    {"serial", every_model, "setting.format",
     "display format in the list; not listed: the empty text; missing: `a`"},
    {"serial", every_model, "userdefined",
     "replaces `data.userdefined` of the list, in both rounds"},
    {"ir", every_model, "data", "replaces the stored IR list, `/user_data2/ir_list.json`"},
    {"trigger", every_model, "trigger_lists",
     "four positions, each `{\"type\", \"data\"}`: the lists for power-on, video connect, video "
     "disconnect and custom events replace the stored ones when `type` contains `power_on`, "
     "`video_connect`, `video_disconnect` or `custom`; a list in another position is passed over. "
     "A custom `data` array first removes all stored custom lists (`rm -rf "
     "/user_data2/trigger_custom_event_*`), also when it is empty; then each element with a text "
     "`apievent` is stored in `/user_data2/trigger_custom_event_<apievent>.json`. An upload of "
     "trigger lists names its files in another way, `trigger_custom_event<apievent>_list.json` "
     "([uploads.md](uploads.md#what-is-stored)): neither replaces the other's, and a configuration "
     "removes an upload's file only when its event begins with `_`"},
    {"network", every_model, "",
     "An IPv4 address is valid with four numbers, the first and the last from 1 to 254, the others "
     "from 0 to 254: 255 is refused anywhere. Net masks, gateways and name servers are not "
     "checked.\n\nAn object `services_settings` has the VLAN member lists of both ports made anew "
     "behind the three services, in these steps:\n\n"
     "1. What the unit's store then holds is read: the lists `vlan1Untag`, `vlan1Tag`, "
     "`vlan2Untag` and `vlan2Tag`, and of each service whether it has a VLAN of its own, on which "
     "port, its ID and its membership on each port (`streamVlanMode`, `streamLanPort`, "
     "`streamVlanID`, `lan1stream`, `lan2stream`, and the same of `dante` and `control`). Of a "
     "list longer than 1023 bytes only the end is read: keep the lists shorter.\n"
     "2. A service belongs into a list when it has a VLAN of its own (`y`), is sent through that "
     "port (`1`, `2`, or `0` for both) and its membership there is that of the list (`1` tagged, "
     "`0` untagged). The IDs of the services that belong into a list are put in front of it, in "
     "the order stream, Dante, control. The IDs of those that do not are taken out of it wherever "
     "they stand, also where another service has put the same number.\n"
     "3. Where an untagged list is empty now, it becomes `1`, with `astparam s vlan1ID 1` or "
     "`astparam s vlan2ID 1`.\n"
     "4. Each service of the document, in the order stream, control, Dante, that has `enable` "
     "true and a number `vlan_id` sets `astparam s vlan1ID %d` where its `lan_1` begins with "
     "`untagged`, and `astparam s vlan2ID %d` where its `lan_2` does, whatever its `lan_port`: "
     "the last one counts.\n"
     "5. `astparam s vlan1Untag %s`, `astparam s vlan1Tag %s`, `astparam s vlan2Untag %s`, "
     "`astparam s vlan2Tag %s`. A tagged list that is empty now is not written: the store keeps "
     "the one it has."},
    {"network", every_model, "lan1.use_device_name",
     "flag 2 of `device_name_sync_enable`: `astparam s device_name_sync_enable %s;` with all "
     "flags; `true` also makes `hostname` take the device name"},
    {"network", every_model, "lan1.hostname",
     "`astparam s hostname_tx_middle %s;` with every byte but ASCII letters, digits and `-` "
     "replaced: a blank by `-`, any other by `O`. With `use_device_name` true it is the device "
     "name that is taken, and the text of `hostname`, which must be there all the same, does not "
     "count. An empty name runs an empty line"},
    {"network", every_model, "services_settings",
     "the VLAN member lists of both ports are made anew, as above"},
    {"aes256", every_model, "aes256_mode",
     "1 or `\"standard\"`: the third character of the present video engine option becomes `8`; 2 "
     "or `\"high\"`: `0`; `astparam s v_eng_drv_option %s;`. Another number of 0 or more runs an "
     "empty line"},
    {"snmp", every_model, "v3_trap.engine_id",
     "`astparam s TrapV3EngID %s > /dev/null 2>&1` with the text of `v3_trap.username`, when that "
     "is there",
     "not empty"},
    {"power", every_model, "power_status", "the word goes to the microcontroller"},
};
