#include "device/lines.h"

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "device/unit.h"

// Enough for all but certificates and long texts.
static constexpr size_t usual_line_size = 2048;

void send_line(Channel channel, const char* text) {
    if (channel == Channel::shell) {
        run_shell_line(text);
    } else {
        send_mcu_command(text);
    }
}

static void send_formatted(Channel channel, const char* format, va_list values)
    __attribute__((format(printf, 2, 0)));

static void send_formatted(Channel channel, const char* format, va_list values) {
    va_list again;
    va_copy(again, values);
    char usual[usual_line_size];
    const int length = vsnprintf(usual, sizeof usual, format, values);
    if (length >= 0 && static_cast<size_t>(length) < sizeof usual) {
        send_line(channel, usual);
    } else if (length >= 0) {
        const size_t size = static_cast<size_t>(length) + 1;
        char* whole = static_cast<char*>(malloc(size));
        if (whole != nullptr) {
            vsnprintf(whole, size, format, again);
            send_line(channel, whole);
            free(whole);
        }
    }
    va_end(again);
}

void run_shell_format(const char* format, ...) {
    va_list values;
    va_start(values, format);
    send_formatted(Channel::shell, format, values);
    va_end(values);
}

void send_mcu_format(const char* format, ...) {
    va_list values;
    va_start(values, format);
    send_formatted(Channel::mcu, format, values);
    va_end(values);
}

static bool is_placeholder(const char* at) {
    return at[0] == '%' && (at[1] == 's' || at[1] == 'd');
}

static size_t filled_length(const char* pattern, size_t value_length) {
    size_t length = 0;
    while (*pattern != '\0') {
        const bool placeholder = is_placeholder(pattern);
        length += placeholder ? value_length : 1;
        pattern += placeholder ? 2 : 1;
    }
    return length;
}

static void fill(char* line, const char* pattern, const char* value, size_t value_length) {
    while (*pattern != '\0') {
        if (is_placeholder(pattern)) {
            memcpy(line, value, value_length);
            line += value_length;
            pattern += 2;
        } else {
            *line++ = *pattern++;
        }
    }
    *line = '\0';
}

void send_filled_line(Channel channel, const char* pattern, const char* value) {
    const size_t value_length = strlen(value);
    const size_t size = filled_length(pattern, value_length) + 1;
    char usual[usual_line_size];
    char* line = size <= sizeof usual ? usual : static_cast<char*>(malloc(size));
    if (line == nullptr) {
        return;
    }
    fill(line, pattern, value, value_length);
    send_line(channel, line);
    if (line != usual) {
        free(line);
    }
}
