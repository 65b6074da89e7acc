// Keeps what the unit's tools print, and what runs on behind them, away from the caller.
#pragma once

// Where standard output went before it was put aside, or -1.
struct ReplyStream {
    int descriptor;
};

// From here on standard input, output and error are /dev/null, for this program and for every
// child: nothing a tool prints can stand in the reply, no tool can read the request, and no tool
// that goes on in the background holds the caller's connection open. What was printed before stays
// in the buffer of standard output. Where /dev/null cannot be opened a folder stands in for it, in
// which reading and writing fail.
ReplyStream put_reply_aside();

// Standard output leads to the caller again, and waits for one who reads slowly.
void take_reply_up(ReplyStream reply);
