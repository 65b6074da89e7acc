#include "device/shell_echo.h"

#include <cstring>

#include "device/lines.h"
#include "device/unit.h"

// Whether the byte is one of those listed; the closing NUL is none.
static bool is_one_of(char byte, const char* list) {
    return byte != '\0' && strchr(list, byte) != nullptr;
}

// --- The shell's double quotes -------------------------------------------------------------------

bool only_the_shell_knows(const char* text) {
    static constexpr char special[] = "\\$`\"";
    for (const char* at = strpbrk(text, special); at != nullptr; at = strpbrk(at + 2, special)) {
        if (at[0] != '\\' || at[1] == '\0') {
            return true;
        }
    }
    return false;
}

// The place from which on a text may change: its first backslash, or its end. Most lists have none.
static char* first_change(char* text) {
    return text + strcspn(text, "\\");
}

static void take_quotes_off(char* text) {
    char* end = first_change(text);
    for (const char* at = end; *at != '\0'; at++) {
        if (at[0] == '\\' && at[1] == '\n') {
            at++;
            continue;
        }
        if (at[0] == '\\' && is_one_of(at[1], "\\$`\"")) {
            at++;
        }
        *end++ = *at;
    }
    *end = '\0';
}

// --- echo ----------------------------------------------------------------------------------------

static constexpr char escape_letters[] = "abefnrtv\\";
static constexpr char escaped_bytes[] = "\a\b\033\f\n\r\t\v\\";
static_assert(sizeof escape_letters == sizeof escaped_bytes);

// The value of a digit of either case, or -1 when it is none of that base.
static int digit_value(char digit, int base) {
    int value = -1;
    if (digit >= '0' && digit <= '9') {
        value = digit - '0';
    } else if (digit >= 'a' && digit <= 'f') {
        value = digit - 'a' + 10;
    } else if (digit >= 'A' && digit <= 'F') {
        value = digit - 'A' + 10;
    }
    return value < base ? value : -1;
}

// Reads up to `most` digits into one byte. Returns the position behind them.
static const char* read_byte(const char* digits, int base, int most, char* byte) {
    int number = 0;
    for (int i = 0; i < most; i++) {
        const int value = digit_value(*digits, base);
        if (value < 0 || number * base + value > 255) {
            break;
        }
        number = number * base + value;
        digits++;
    }
    *byte = static_cast<char>(number);
    return digits;
}

// Reads the escape whose backslash stands before `at` into one byte. Returns the position behind
// it; `at` with a backslash as the byte when it is no escape.
static const char* read_escape(const char* at, char* byte) {
    *byte = '\\';
    if (is_one_of(*at, escape_letters)) {
        *byte = escaped_bytes[strchr(escape_letters, *at) - escape_letters];
        return at + 1;
    }
    if (*at == 'x' && digit_value(at[1], 16) >= 0) {
        return read_byte(at + 1, 16, 2, byte);
    }
    if (digit_value(*at, 8) >= 0) {
        const bool zero_leads = at[0] == '0' && digit_value(at[1], 8) >= 0;
        return read_byte(zero_leads ? at + 1 : at, 8, 3, byte);
    }
    return at;
}

size_t interpret_echoed(char* text) {
    take_quotes_off(text);
    char* end = first_change(text);
    for (const char* at = end; *at != '\0';) {
        if (*at != '\\') {
            *end++ = *at++;
            continue;
        }
        if (at[1] == 'c') {
            break;
        }
        char byte;
        at = read_escape(at + 1, &byte);
        *end++ = byte;
    }
    return static_cast<size_t>(end - text);
}

// --- Into a file ---------------------------------------------------------------------------------

// Whether the shell takes the path as it stands.
static bool is_plain_path(const char* path) {
    for (const char* at = path; *at != '\0'; at++) {
        const bool letter = (*at >= 'a' && *at <= 'z') || (*at >= 'A' && *at <= 'Z');
        const bool digit = *at >= '0' && *at <= '9';
        const bool above_ascii = (static_cast<unsigned char>(*at) & 0x80) != 0;
        if (!letter && !digit && !above_ascii && !is_one_of(*at, "/._-")) {
            return false;
        }
    }
    return true;
}

void echo_into_file(char* text, const char* path) {
    if (only_the_shell_knows(text) || !is_plain_path(path)) {
        run_shell_format("echo -ne \"%s\" > %s", text, path);
        return;
    }
    const size_t size = interpret_echoed(text);
    replace_file(path, text, size);
}
