// The processes that run in the unit from its start to its end.
#pragma once

namespace sim {

// Opens the pseudo-terminal that is the unit's /dev/ttyS1 (raw: every byte value arrives unchanged)
// and puts /dev/ttyS1 in place. Returns the descriptor of the microcontroller's end, -1 on failure.
int open_serial_line();

// The microcontroller at the far end of the serial line and the relay of its answers on TCP
// 127.0.0.1 port 5449. Journals every line as "mcu <text>"; the 256 raw bytes behind the line
// "setuseredid" as "mcu-edid <512 hex digits>". After each line, and after the answer time, every
// connected relay client gets an answer that ends in the end mark. Obeys commands on
// /run/sim/mcu.sock (one a connection):
//   "drain"              takes all that is on the serial line, then closes the connection
//   "settle"             the same, and journals an unfinished line as "mcu-partial <text>"
//   "mode <mode> <ms>"   modes: normal, silent (no answer), absent (nothing listens on the port),
//                        split (the answer in pieces), hangup (closes instead of answering)
//   "reset"              normal mode, no answer time, nothing pending
// Does not return.
[[noreturn]] void run_microcontroller(int serial);

// The status service on TCP 127.0.0.1 port 4445: journals the first line of each connection as
// "status <line>" and closes the connection. Does not return.
[[noreturn]] void run_status_service();

// The unit's first process: puts the unit's folders and tools in place, starts the microcontroller,
// the status service and the web server, and serves the launcher's requests on the socket whose
// descriptor is given until the launcher closes it; then ends all that runs. argv: unit_init
// PARAMETERS CONTROL LISTENER PORT SERVER [ARGUMENT]...: the socket's descriptor, the web server's
// listening one (-1: it opens its own), its port and its command. Returns the exit status.
int run_unit_init(int argc, char** argv);

}  // namespace sim
