// A user-defined EDID for the unit's inputs.
#include <cjson/cJSON.h>

#include <cstddef>
#include <cstring>

#include "cgi/uploads.h"
#include "device/lines.h"
#include "device/unit.h"
#include "unitconf/document.h"
#include "unitconf/members.h"

static constexpr size_t edid_digits = 512;

// One "\xHH" for each two digits.
static constexpr size_t escaped_edid_size = edid_digits / 2 * 4 + 1;

static bool is_hex_digit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

// Takes the digits out of a text that blanks and line ends may break up. False when something else
// stands in it or it has not exactly as many digits as an EDID.
static bool read_edid(const char* text, char (&digits)[edid_digits]) {
    size_t count = 0;
    for (const char* at = text; *at != '\0'; at++) {
        if (strchr(" \r\t\n", *at) != nullptr) {
            continue;
        }
        if (count == edid_digits || !is_hex_digit(*at)) {
            return false;
        }
        digits[count++] = *at;
    }
    return count == edid_digits;
}

// The microcontroller takes the command first and then, written by itself, the bare bytes.
static void send_edid(const char (&digits)[edid_digits]) {
    char escaped[escaped_edid_size];
    char* end = escaped;
    for (size_t i = 0; i < edid_digits; i += 2) {
        *end++ = '\\';
        *end++ = 'x';
        *end++ = digits[i];
        *end++ = digits[i + 1];
    }
    *end = '\0';
    run_shell_line("echo -e \"setuseredid\" > /dev/ttyS1");
    pause_seconds(1);
    run_shell_format("echo -ne \"%s\" > /dev/ttyS1", escaped);
}

// The first character tells: the user EDID is number 9 of the EDIDs that an input can have.
static bool uses_custom_edid(const char* choice) {
    return choice[0] == '9';
}

// The inputs that use the user EDID are told to use it again, so that they take the new one.
static void choose_edid_again() {
    char first_input[output_text_size] = {};
    char second_input[output_text_size] = {};
    read_command_output("astparam g edid_set_u", first_input);
    read_command_output("astparam g edid_set_h", second_input);
    if (uses_custom_edid(first_input)) {
        pause_seconds(1);
        run_shell_line("echo \"setedid,1:9\" > /dev/ttyS1");
    }
    pause_seconds(1);
    if (uses_custom_edid(second_input)) {
        pause_seconds(1);
        run_shell_line("echo \"setedid,2:9\" > /dev/ttyS1");
    }
}

static int load_document(const cJSON* document) {
    const char* edid = nonempty_text(find_member(document, "custom_edid"));
    if (edid != nullptr) {
        char digits[edid_digits];
        if (!read_edid(edid, digits)) {
            return upload_no_edid;
        }
        send_edid(digits);
        choose_edid_again();
    }
    const char* name = nonempty_text(find_member(document, "custom_edid_name"));
    if (name != nullptr) {
        send_filled_line(Channel::shell, "astparam s edid_user_defined1 \"%s\" > /dev/null 2>&1",
                         name);
        run_shell_line("astparam save > /dev/null 2>&1");
    }
    return upload_done;
}

int load_custom_edid(const char* content) {
    const cJSON* document = parse_document(content);
    return document == nullptr ? upload_not_json : load_document(document);
}
