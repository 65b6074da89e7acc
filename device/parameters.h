// Single values of the unit's parameter stores, read from their dumps, and whole text files.
#pragma once

#include "device/unit.h"

// The position in `text` just behind the first occurrence of `needle`, or null when there is none.
const char* find_after(const char* text, const char* needle);

// Stores in `out_text` a newly allocated copy of the whole file, NUL-terminated, that the caller
// frees. `out_text` stays as it is when read_file cannot read it, and becomes null when memory runs
// out.
void read_file_text(const char* path, char** out_text);

// Makes every carriage return and line feed of a dump a NUL, so that its lines become texts; a CR
// LF pair leaves an empty one between them.
void split_lines(FileBytes dump);

// Looks in the live store's dump (/var/tmp/lmparam_dump) for the first line that begins with `key`,
// which normally ends in "=", and copies the text behind the line's first "=" into `out` (1024
// bytes; at most 1023 bytes of a value are taken). `out` stays as it is when there is no such line
// or no dump, and for a null key.
void lm_get_value(const char* key, char* out);

// The same for the run-time store (/dev/shm/rwparam), whose entries end in NUL, CR or LF; its four
// header bytes stand in front of the first entry and are not skipped.
void rw_get_value(const char* key, char* out);
