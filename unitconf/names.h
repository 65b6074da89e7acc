// Names reduced to what host names and Dante channels accept.
#pragma once

#include <cstddef>

// The characters of a UTF-8 text: every byte that does not continue one counts.
size_t utf8_characters(const char* text);

// A copy of the first `bytes` bytes of `name` in which ASCII letters, digits and "-" stand as they
// are, a blank becomes `blank`, and every other byte becomes the capital letter O. Allocated, freed
// by the caller; null when memory runs out. `name` has at least that many bytes.
char* plain_name(const char* name, size_t bytes, char blank);
