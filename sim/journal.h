// The unit's journal: one text file to which every process of the simulated unit appends what the
// unit was told, one entry a line, the first word naming its kind.
#pragma once

#include <string>
#include <string_view>

namespace sim {

// Folder inside the unit that holds the simulator's own files. Nothing of the appliance lives
// there.
inline constexpr char state_folder[] = "/run/sim";

// Appends "<kind> <text>" and a line feed in one write. Text must be escaped already; an empty text
// leaves the kind alone on its line. A journal that cannot be written ends the process, because a
// missing entry would make a test pass for the wrong reason.
void append_entry(std::string_view kind, std::string_view text);

// Makes any bytes fit one line: a control byte, a caret and every byte that is not part of valid
// UTF-8 become a caret and two capital hex digits ("^0A"); everything else stays, backslashes too.
std::string escape_bytes(std::string_view bytes);

// One argument as it shows in a "tool" entry: bare when it is plain, else in double quotes with
// backslashes before double quotes and backslashes, so that argument borders are always visible.
std::string quote_argument(std::string_view argument);

// Reads a whole file. False when it cannot be opened; text is then left as it was.
bool read_file(const char* path, std::string& text);

// Replaces a file's content through a temporary file and a rename. False when that fails.
bool write_file(const char* path, std::string_view text);

// Holds an exclusive lock on a file (created when missing) until release_lock. Returns a
// descriptor.
int take_lock(const char* path);
void release_lock(int lock);

}  // namespace sim
