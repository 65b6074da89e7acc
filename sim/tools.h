// The appliance's command-line tools and its shell, as far as the gateway uses them.
#pragma once

namespace sim {

// The unit's /bin/sh: journals the line it is given with -c (or the script on its standard input)
// byte for byte ("sh -c sh" is a script, too) and becomes BusyBox's shell, so that status, input,
// signals and background children are that shell's own. Returns only when BusyBox cannot be run.
int run_shell(int argc, char** argv);

// True when `name` is one of the appliance's tools; `status` is then what it exits with.
bool run_tool(const char* name, int argc, char** argv, int& status);

// Puts a link to `program` into `folder` for every tool.
void link_tools(const char* folder, const char* program);

// The launcher's own requests, not journaled:
//   sim_settle                       waits for the serial line and notes changed files
//   sim_note                         takes note of changed files without an entry
//   sim_mcu <command>                sends a command to the microcontroller (see services.h)
//   sim_reset PARAMETERS             a factory-fresh unit with an empty journal
//   sim_param get|set|unset rw|live|peers KEY [VALUE]
// Returns false for any other name.
bool run_launcher_request(const char* name, int argc, char** argv, int& status);

}  // namespace sim
