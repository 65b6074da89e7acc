// The command lists that the unit keeps: how a section replaces one.
#pragma once

#include <cjson/cJSON.h>

// Where a list is written and the lines that put it in its place.
struct ListFiles {
    const char* working;      // the file that is written
    const char* copy_line;    // copies it over the list that is kept
    const char* remove_line;  // takes it away again
};

// Stores a document as the list: printed in one line, in the stored form of device/list_text.h. The
// list stays as it was when the working file cannot be written whole; neither line is run then.
void store_list(const ListFiles& files, const cJSON* document);

// Stores {"data": value}; the value, of any JSON type, stays the caller's.
void store_list_of(const ListFiles& files, const cJSON* value);
