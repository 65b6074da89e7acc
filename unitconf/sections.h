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
// port, the present one counts; only the decoder's volume then sends an empty command. With an
// unknown direction the analog port's type, volume and mute are skipped.
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

// services/security.cpp
void apply_aes256_section(const cJSON* section);
void apply_snmp_section(const cJSON* section);
void apply_mqtt_section(const cJSON* section);
void apply_https_section(const cJSON* section);
void apply_ldap_section(const cJSON* section);
void apply_8021x_section(const cJSON* section);

// services/panel_system.cpp
void apply_oled_display_section(const cJSON* section);
void apply_auto_status_section(const cJSON* section);
void apply_fan_control_section(const cJSON* section);
void apply_front_panel_lock_section(const cJSON* section);
void apply_aes67_section(const cJSON* section);
void apply_date_and_time_section(const cJSON* section);
void apply_debug_section(const cJSON* section);
void apply_ssh_section(const cJSON* section);
void apply_power_section(const cJSON* section);
