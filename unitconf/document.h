// The document of an upload.
#pragma once

#include <cjson/cJSON.h>

// Parses the NUL-terminated text of an upload; null when it is not JSON. The tree is not the
// caller's to free: it is there until the next document is parsed. A run of the program parses one
// and ends, and taking the tree apart first would cost it a fifth of the parsing.
cJSON* parse_document(const char* text);
