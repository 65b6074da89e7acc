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

// video.cpp, audio.cpp: "stream"."video" and "stream"."audio", by model. Both take the unit's
// present values first.

// Sets the stream or source, mute, latency, colour space, scaling and multicast. Costs up to 19
// seconds of pauses on the USB-C encoder, 13 on the HDMI encoder and 15 on the decoder. The latency
// is one digit of the present video engine option, whose other digits stay.
void apply_usbc_encoder_video_section(const cJSON* section);
void apply_hdmi_encoder_video_section(const cJSON* section);
void apply_decoder_video_section(const cJSON* section);

// Sets the sources, volumes (of any value, not checked) and mutes of the audio paths and the analog
// port, and on the decoder which streams are received. Costs up to 16 seconds of pauses on the
// encoders and 25 on the decoder. Where the document gives no source or no direction of the analog
// port, the present one counts; only the decoder's volume of "dante_aes67_tx" then sends an empty
// command. With an unknown direction the analog port's type, volume and mute are skipped.
void apply_usbc_encoder_audio_section(const cJSON* section);
void apply_hdmi_encoder_audio_section(const cJSON* section);
void apply_decoder_audio_section(const cJSON* section);

// edid_hdcp.cpp: "edid" and "hdcp", by model.

// Sets for each input which EDID it shows to sources: the connected display's, one of the nine
// predefined ones, or the name of an uploaded one. Costs up to 8 seconds of pauses on the USB-C
// encoder, 4 on the HDMI encoder and 3 on the decoder.
void apply_usbc_encoder_edid_section(const cJSON* section);
void apply_hdmi_encoder_edid_section(const cJSON* section);
void apply_decoder_edid_section(const cJSON* section);

// Sets whether inputs announce HDCP and the mode of the output; a mode of 0, an unknown one and one
// above 3 leave it as it is. Costs up to 4 seconds of pauses on the USB-C encoder and 3 on the
// others.
void apply_usbc_encoder_hdcp_section(const cJSON* section);
void apply_hdmi_encoder_hdcp_section(const cJSON* section);
void apply_decoder_hdcp_section(const cJSON* section);

// images_routing_preview.cpp

// Whether the decoder shows a picture while no stream arrives. Takes 1 second.
void apply_no_stream_image_section(const cJSON* section);

// Whether the decoder shows a picture when it starts, and for how long: the number is stored as
// given, without limits.
void apply_power_on_image_section(const cJSON* section);

// Connects the decoder to the units that it receives video, audio, USB and keyboard/mouse from,
// each in 3 seconds; a route that is not a text with at least one character is left as it is.
void apply_routing_section(const cJSON* section);

// The preview stream of every model: its resolution ("1280x720"), its frame rate and whether it is
// on, each in 1 second. What the section does not give is taken from the present options, which
// are read for each of them anew; fields that these lack stay empty.
void apply_preview_section(const cJSON* section);

// usb.cpp

// USB power, following the video's route, the green list of units that may connect, and mouse
// roaming, on every model. Takes 2 seconds, and 1 more each for "usb_km_enable" and a green list.
// The green list holds at most 30 bytes for each of its elements and for its first line; the rest
// is cut off.
void apply_usb_devices_section(const cJSON* section);

// Whether the encoder's USB host port may be used, and the input that it follows; an unknown input
// is sent as -1. Takes 2 seconds, and 1 more to switch the port.
void apply_usb_host_section(const cJSON* section);

// osd_video_wall.cpp

// The decoder's on-screen display: its text, place, font, colours and how long it stays.
// Numbers are stored without limits, an unknown place as -1.
void apply_osd_section(const cJSON* section);

// The decoder's place in a wall of at most 19 by 19 displays, what of the picture it shows and its
// bezels. All of that is stored only; the displays change when "enable" says whether the decoder
// takes part (1 to 3 seconds).
// Sizes and positions outside the limits are skipped by themselves.
void apply_video_wall_section(const cJSON* section);

// dante.cpp

// The names of the Dante device and its channels, its transmitter, its bridge to the stream audio,
// and the add-on mode of the unit. The mode is set by every section: one that asks for neither kind
// of add-on, whatever its JSON type, switches the add-on off. A channel name that is too long for
// Dante is stored and not sent. Takes at least 6 seconds, 3 more for each channel name sent to
// Dante and for the transmitter's switch, and 1 for the device name.
void apply_dante_section(const cJSON* section);

// services/serial.cpp, services/ir_trigger.cpp

// Sets the RS-232 port, merges its settings and user-defined slots into the list of command codes
// that the unit keeps, and switches tunnelling and pass-through. "setting" or "userdefined" being
// there, of any type, sets the port's line, from the present values where the document gives none,
// and waits 1 second; a document that gives the whole setting sets line and list twice. No value is
// checked: any baud text reaches the line, cut to 31 bytes, the other texts to 15. A list that
// cannot be opened or is not JSON stays as it is; an empty one starts from the default.
void apply_serial_section(const cJSON* section);

// Sets the infrared receiver (1 second behind it), the sending delay, the repeat count and the
// repeat delay (integers of any value), replaces the list of IR codes by "data" of any type, and
// sets the pass-through to a partner unit (1 second behind its switch). The list stays as it was
// when its working file cannot be opened.
void apply_ir_section(const cJSON* section);

// Replaces the trigger command lists and then switches triggers on or off; no pause. The lists are
// taken by position, and one whose "type" does not confirm its position is passed over. Lists of
// API events replace all that are stored, none in the document included; one without a text
// "apievent" is not written.
void apply_trigger_section(const cJSON* section);

// services/network.cpp

// Sets the addresses, host name, VLANs and discovery of the first port ("lan1"), the switch, power
// and VLANs of the second ("lan2") and the three service networks ("services_settings"), whose
// VLANs then enter and leave the member lists of both ports. The unit's parameters are read first,
// whatever the section holds.
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
