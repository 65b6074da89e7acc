// The uploads beside the unit configuration, and the one download. Each handler takes the content
// of the uploaded file as a NUL-terminated text and returns a small number that the dispatcher
// turns into the reply.
#pragma once

// What the handlers below answer; each kind has a reply for some of it. A unit configuration has
// its own answers (unitconf/configuration.h).
enum UploadResult : int {
    upload_refused = 0,  // a list that is not JSON or of another shape
    upload_done = 1,
    upload_not_json = 2,
    upload_out_of_range = 3,
    upload_member_missing = 4,
    upload_no_edid = 5,
};

// Makes the object with the unit's certificates and keys for LDAP, MQTT, HTTPS and 802.1X: thirteen
// strings, each the file in the encrypted form that the unit's own tool gives it, or the empty text
// where the unit has no such file or the tool makes nothing of it. The working files under /var/tmp
// are removed again. A second export at the same time waits for the first one's end. Allocated,
// freed by the caller with cJSON_free; null when memory runs out.
char* export_certificates();

// Stores the RS-232 command codes, the uploaded text in its stored form (device/list_text.h, and
// device/shell_echo.h for its backslashes), as /user_data2/rs232_list.json and copies them to
// /var/tmp. 0, with nothing stored, when the text is not JSON or has no
// "data"."setting"; otherwise 1, also when the unit could not store them.
int store_rs232_list(const char* content);

// Stores the IR codes, the uploaded text in its stored form, as /user_data2/ir_list.json, copies
// them to /var/tmp and sets the IR timing. 0, with nothing stored or set, when the text is not
// JSON, "data" is not an array, or one of the texts "delay", "rpt" and "rptdelay" is missing;
// otherwise 1.
int store_ir_list(const char* content);

// Stores the trigger commands, one file for each of the three built-in events and one for each
// event of the user's own (trigger_custom_event<apievent>_list.json). Each file's text is the
// stored form of the formatted print of its part. Custom files of events that are no longer listed
// stay. 0, with nothing stored, when the text is not JSON or "data" is not an array of four; 0,
// with the three built-in lists stored, when the fourth element has no array "data" or one of its
// events has no text "apievent"; otherwise 1.
int store_trigger_lists(const char* content);

// Loads a user-defined EDID of 256 bytes, given as 512 hexadecimal digits, into the front panel's
// microcontroller, has the inputs that use it take it again, and stores its name; each of the two
// may be missing. Takes 2 seconds for an EDID, and one more for each input that uses it.
// 2 when the text is not JSON; 5, with nothing sent or stored, when the EDID has another length or
// another character (blanks, tabs and line ends do not count); otherwise 1.
int load_custom_edid(const char* content);

// Puts the unit's screen into its place in a video wall, as a cell of a grid or by coordinates, and
// has the unit reconnect to its source where its audio does not forbid that.
// 2 when the text is not JSON; 4 when a member is missing or no text, or both places are given; 3
// when the rotation or stretch is outside 0 to 9, or on the first kind of video wall the grid is
// not 1 to 16 by 1 to 16. Nothing has been done then. Otherwise 1.
int apply_video_wall_upload(const char* content);
