// The signals that a caller's or a web server's going away may send: SIGHUP, SIGTERM and SIGPIPE.
#pragma once

// From here on they do not end the program: a unit is not left half configured because a caller
// left or a web server lost patience. Children start with the default actions.
void outlast_the_caller();

// Keeps them waiting while the program itself waits, so that none cuts a pause short or, coming
// again and again, draws it out. For waits only: a child that is started meanwhile has them blocked
// as well.
void hold_signals();

// What has come meanwhile is taken now, and all that comes from here on.
void release_signals();
