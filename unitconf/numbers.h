// Numbers as the unit's stores write them: decimal texts, and lists of them.
#pragma once

#include <cjson/cJSON.h>

// The number that a text begins with: blanks, a sign and decimal digits, held at the 32-bit limits.
// A text that begins with anything else, and the empty one, counts as 0.
int decimal_value(const char* text);

// The numbers of a JSON array as the stores' lists hold them: "20,-3,7", their integer values
// without blanks. Items of other types are left out, but a "," follows every number that is not the
// array's last item, so a list may end in one. An empty array gives the empty text. Allocated,
// freed by the caller; null when `array` is null or no array, or when memory runs out.
char* json_number_array_to_list(const cJSON* array);
