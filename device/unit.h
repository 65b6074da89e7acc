// The seam between the program and the unit: everything that is done to the unit or read from it
// goes through these functions. The gateway links the real bodies, the unit tests a recorder that
// writes an ordered trace; a program links exactly one set.
#pragma once

#include <cstddef>

// Bytes in a text that read_command_output hands over, the closing NUL included.
inline constexpr size_t output_text_size = 1024;

// A whole file in memory. `bytes` is allocated, freed by the owner with free(), and has a NUL
// behind its last byte that `size` does not count. Null when there was no memory for it.
struct FileBytes {
    char* bytes;
    size_t size;
};

// Runs one shell line on the unit and waits until the shell ends; what the line starts with "&"
// goes on by itself. The line is run byte for byte as given, of any length, and its result is not
// looked at: a setting counts as applied once its line has run. An empty line is run as well.
void run_shell_line(const char* line);

// Runs `command` and writes the last line of its output into `out` (output_text_size bytes) without
// its line feed; a carriage return stays. Of a line longer than 1023 bytes the last fragment
// counts. No output gives the empty text. An answer longer than 10 bytes that holds "not defined"
// is no value: `out` keeps what it had. Otherwise all output_text_size bytes are written. Returns
// the exit status of the command as pclose gives it, or -1, with the empty text, when the command
// could not be started.
int read_command_output(const char* command, char* out);

// Reads a whole file. False, with `file` untouched, when it cannot be opened or has no size, as a
// pipe; true otherwise, with `file->bytes` null when memory ran out.
bool read_file(const char* path, FileBytes* file);

// Whether there is a file or a folder of that name; links are followed.
bool file_exists(const char* path);

// Empties or creates the file and writes the bytes into it. False, with nothing changed, when it
// cannot be opened for writing; false, with the file (or the link that led to it) removed, when the
// disk did not take all of the bytes, so that nobody reads half of it.
bool write_file(const char* path, const char* bytes, size_t size);

// Replaces the file as a whole: after a full disk, a power cut or the death of this program it
// holds either all of `bytes` or what it held before, flushed to the disk. An existing file keeps
// its mode, its other names (hard links) it does not, and its owner and group as far as this user
// may give files away. No temporary file is left over,
// also when this program is killed; after a power cut one may be (the same name with "~" for its
// last character), which the next replacement removes; a path that itself ends in "~" is refused. A
// link is followed, one that leads nowhere yet too. A device or a pipe is written into. False when
// it is not known that the file has the new content.
bool replace_file(const char* path, const char* bytes, size_t size);

// Waits until no other run of this program is at the working files that runs share under /var/tmp,
// and keeps the others waiting until end_turn, which is handed what this returns. Where the folder
// cannot be locked, nobody is waited for.
int take_turn();
void end_turn(int turn);

// Sends one command to the front-panel microcontroller and waits until its answer is complete, at
// most 10 seconds for each piece of it and 2 GiB in all. Of the command at most 1023 bytes are
// sent; an empty command is sent as well. Nothing is sent when the answer relay (TCP
// 127.0.0.1:5449) cannot be reached.
void send_mcu_command(const char* command);

// Waits whole seconds; a signal does not shorten the pause.
void pause_seconds(unsigned seconds);
