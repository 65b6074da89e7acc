// Making the lines that are run and the commands that are sent. A line that does not fit the usual
// buffer is built whole in allocated memory; it is never cut, and without memory it is not run.
#pragma once

// Formats a shell line and runs it. The format is the program's own text, never a document's.
void run_shell_format(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Formats a microcontroller command and sends it.
void send_mcu_format(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Where a line goes.
enum class Channel : unsigned char { shell, mcu };

// Runs or sends a text as it stands.
void send_line(Channel channel, const char* text);

// Puts `value` in the place of every "%s" and "%d" of `pattern` and runs or sends the result.
void send_filled_line(Channel channel, const char* pattern, const char* value);
