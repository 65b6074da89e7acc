// A unit that only writes down what is done to it, in order, and answers reads from tables.
#pragma once

#include <string>

// Forgets the trace and all answers, files and present values.
void reset_recorder();

// What was done since the last reset, one entry a line:
//   shell <line>            a shell line, byte for byte
//   mcu <command>           a microcontroller command
//   pause <seconds>
//   read <command>          a command whose output was read
//   write <path> <text>     a file emptied and written
//   replace <path> <text>   a file replaced as a whole
std::string recorded_trace();

// The last output line that a command gives. Without an answer it is "not defined".
void answer_command(const std::string& command, const std::string& output);

// A file that can be read. Written and replaced files can be read as well.
void provide_file(const std::string& path, const std::string& bytes);

// A path that cannot be opened for writing.
void refuse_writing(const std::string& path);

// The bytes of a file as the unit holds it now; empty when there is none.
std::string file_content(const std::string& path);

// Present values in the run-time and live stores, as the snapshot finds them: both dumps are made
// of all values set so far.
void set_rw_value(const std::string& key, const std::string& value);
void set_lm_value(const std::string& key, const std::string& value);
