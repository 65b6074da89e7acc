// What makes the journal's order the same in every run, although lines leave work in the background
// and the serial line has a delay of its own.
#pragma once

#include <sys/types.h>

namespace sim {

// Waits until the background work that earlier lines of the same gateway process left behind has
// made its entries. Each line's shell and all its children hold one lock (see hold_settle_lock); a
// program that keeps the lock is waited for only once, a second. `gateway` is the
// process that runs the lines.
void wait_for_background_work(pid_t gateway);

// The same for every gateway process that has run lines.
void wait_for_all_background_work();

// Takes the lock that this line's children inherit, at a descriptor that shells leave alone.
void hold_settle_lock(pid_t gateway);

// Gives the lock up: called by a tool once its entry is made and its files are in place.
void drop_settle_lock();

// True when this process was started by another line of the unit, so that waiting would be for
// itself.
bool inside_a_line();

// Sends one command to the microcontroller process (see services.h; "drain" makes it take all that
// has been written to the serial line so far) and waits until it is done. False when it is not
// there.
bool tell_microcontroller(const char* command);

// Writes a "file" entry for each file of the watched folders that was written, replaced or removed
// since it was last noted: "file <path> <bytes>" or "file <path> gone", in the order of the paths.
// With `silent` set it only takes note.
void note_files(bool silent);

}  // namespace sim
