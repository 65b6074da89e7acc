// The appliers of a unit configuration's sections. Each takes the item of its key as the document
// holds it, of any JSON type, does not own it, and reports nothing: a member that cannot be used is
// skipped, and what a section does always (pauses, refresh lines, install scripts) happens all the
// same.
#pragma once

#include <cjson/cJSON.h>

// identity.cpp

// Stores the device name when it is at most 32 bytes long, and passes it on to the Dante transmit
// channels that the unit keeps in step with it. An item that is not a text changes nothing.
void apply_device_name(const cJSON* item);

// Stores the serial number in both parameter stores, then waits 1 second. An item that is not a
// text changes nothing.
void apply_serial_number(const cJSON* item);

// video.cpp, audio.cpp: "stream"."video" and "stream"."audio", by model.
void apply_usbc_encoder_video_section(const cJSON* section);
void apply_hdmi_encoder_video_section(const cJSON* section);
void apply_decoder_video_section(const cJSON* section);
void apply_usbc_encoder_audio_section(const cJSON* section);
void apply_hdmi_encoder_audio_section(const cJSON* section);
void apply_decoder_audio_section(const cJSON* section);

// edid_hdcp.cpp: "edid" and "hdcp", by model.
void apply_usbc_encoder_edid_section(const cJSON* section);
void apply_hdmi_encoder_edid_section(const cJSON* section);
void apply_decoder_edid_section(const cJSON* section);
void apply_usbc_encoder_hdcp_section(const cJSON* section);
void apply_hdmi_encoder_hdcp_section(const cJSON* section);
void apply_decoder_hdcp_section(const cJSON* section);

// images_routing_preview.cpp: the decoder's pictures and routing, and every model's
// "stream"."preview".
void apply_no_stream_image_section(const cJSON* section);
void apply_power_on_image_section(const cJSON* section);
void apply_routing_section(const cJSON* section);
void apply_preview_section(const cJSON* section);

// usb.cpp: "usb_devices" of every model and "usb_host" of the encoders.
void apply_usb_devices_section(const cJSON* section);
void apply_usb_host_section(const cJSON* section);

// osd_video_wall.cpp: the decoder's "osd" and "video_wall".
void apply_osd_section(const cJSON* section);
void apply_video_wall_section(const cJSON* section);

// dante.cpp
void apply_dante_section(const cJSON* section);

// services/serial.cpp, services/ir_trigger.cpp
void apply_serial_section(const cJSON* section);
void apply_ir_section(const cJSON* section);
void apply_trigger_section(const cJSON* section);

// services/network.cpp
void apply_network_section(const cJSON* section);

// services/security.cpp. Nothing here pauses, no value is compared with the present one or limited
// to a range, and passwords and keys are stored as the document has them.

// "aes256": switches stream encryption, sets its strength in the present video engine option and
// stores the custom key. A number that names no strength runs an empty line.
void apply_aes256_section(const cJSON* section);

// "snmp": access, system texts, versions 1 to 3 and traps of the SNMP service.
void apply_snmp_section(const cJSON* section);

// "mqtt": the unit's MQTT client. Certificates that came are decrypted into their files; the
// install script is started in the background in any case.
void apply_mqtt_section(const cJSON* section);

// "https": the web interface's HTTPS. The install script is started in the background only when a
// certificate came.
void apply_https_section(const cJSON* section);

// "ldap": the directory that log-ins are checked against. The install script is started in the
// background in any case.
void apply_ldap_section(const cJSON* section);

// "auth_8021x": the IEEE 802.1X authentication of the network ports "lan1" and "lan2". A port's
// install script is run whenever the port is an object, an empty one too.
void apply_8021x_section(const cJSON* section);

// services/panel_system.cpp. No value is compared with the present one or limited to a range.

// "oled_display": what the front panel's display shows. Always redraws it; four pauses of 1 second.
void apply_oled_display_section(const cJSON* section);

// "auto_status": the periodic status report: where to and how often. The service is always told to
// take its settings anew; then a pause of 1 second.
void apply_auto_status_section(const cJSON* section);

// "fan_control": sets the fan to a level of 0 to 6 (6 is automatic); a level above stops it. A fan
// that is switched off keeps the level to go back to. Two pauses of 1 second.
void apply_fan_control_section(const cJSON* section);

// "front_panel_lock": a boolean, locks or unlocks the front-panel keys. Two pauses of 1 second,
// whatever its type.
void apply_front_panel_lock_section(const cJSON* section);

// "aes67": reserved; changes nothing.
void apply_aes67_section(const cJSON* section);

// "date_and_time": NTP servers, time zone, daylight saving and the clock's format. No pauses.
void apply_date_and_time_section(const cJSON* section);

// "debug": the command log and the debug log. No pauses.
void apply_debug_section(const cJSON* section);

// "ssh": the SSH service and its account. No pauses.
void apply_ssh_section(const cJSON* section);

// "power": sends the wanted power state to the microcontroller. Two pauses of 1 second.
void apply_power_section(const cJSON* section);
