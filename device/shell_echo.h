// Texts that the unit's shell would write into files: what "echo -ne" makes of a text between
// double quotes, without the shell where that is possible.
#pragma once

#include <cstddef>

// Whether only the shell can tell what stands between double quotes: a "$", a backquote or a double
// quote without a backslash before it, or a backslash at the end, which takes the closing quote
// away. A backslash that is itself behind a backslash is before nothing.
bool only_the_shell_knows(const char* text);

// Replaces `text`, of which only_the_shell_knows is false, by the bytes that the unit's shell
// (BusyBox 1.35) prints for the line
//   echo -ne "TEXT"
// and returns their number. They are never more than the text's bytes, may hold NUL bytes and have
// no NUL behind them. Two things happen, one behind the other:
//
// The shell's double quotes drop the backslash before "\", "$", a backquote and a double quote, and
// drop a backslash and the line feed behind it. Every other byte stays, so does a backslash before
// it; bytes above 127 have no meaning.
//
// echo then reads what is left:
//   \a \b \e \f \n \r \t \v \\   the control character (\e is 27), one backslash
//   \nnn                         one to three octal digits: that byte
//   \0nnn                        a 0 and up to three octal digits more: that byte; \0 alone is NUL
//   \xHH                         one or two hexadecimal digits of either case: that byte
//   \c                           ends the output
// A third octal digit that would lead beyond 255 is no part of the number: \400 is a blank and "0".
// "\x" without a digit, a backslash before any other byte and one at the end stay as they are.
//
// So four backslashes always arrive as one. One alone before a byte with which neither the shell's
// nor echo's escapes begin stays as it is. `text` must not look like an option of echo ("-n", "-e",
// "-E" and their combinations), which no JSON text does.
size_t interpret_echoed(char* text);

// Writes into the file what the unit's shell line
//   echo -ne "TEXT" > PATH
// would write into it. Wherever the bytes can be told without the shell and `path` is a plain name
// (letters, digits, "/", ".", "_", "-" and bytes above 127) the file is replaced as a whole, so
// that a full disk or a power cut leaves the old one, and the length of the text does not matter.
// Everything else goes through that line. `text` is used up: its bytes are not the same
// afterwards. A failure is not reported; where the shell does it, a full disk leaves a part.
void echo_into_file(char* text, const char* path);
