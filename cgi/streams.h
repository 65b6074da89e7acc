// Keeps what the unit's tools print, and what runs on behind them, away from the caller; and keeps
// the caller's going away from stopping what has been begun.
#pragma once

// Where standard output went before it was put aside, or -1.
struct ReplyStream {
    int descriptor;
};

// From here on standard input, output and error are /dev/null, for this program and for every
// child: nothing a tool prints can stand in the reply, no tool can read the request, and no tool
// that goes on in the background holds the caller's connection open. What was printed before stays
// in the buffer of standard output.
ReplyStream put_reply_aside();

// Standard output leads to the caller again.
void take_reply_up(ReplyStream reply);

// From here on SIGHUP, SIGTERM and SIGPIPE do not end the program: a unit is not left half
// configured because a caller left or a web server lost patience. Children start with the default
// actions.
void outlast_the_caller();
