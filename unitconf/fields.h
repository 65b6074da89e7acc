// The fields of a text that a separator divides: stream options, layouts, maps.
#pragma once

#include <cstddef>

// A part of a text, not NUL-terminated. Print it with "%.*s". `text` is null for a part that is not
// there.
struct Field {
    const char* text;
    int length;
};

// A whole text as a field, of at most `longest` bytes.
Field field_of(const char* text, size_t longest);

// Takes the first field off `rest`: what stands before the first separator. `rest` becomes what
// follows the separator, or a null text when that was the last field. Two separators in a row have
// an empty field between them. Taking from a null text gives an empty field.
Field take_field(Field* rest, char separator);

// Splits `whole` into `count` fields. Those that it lacks are empty, what follows the last is
// dropped.
void split_fields(Field whole, char separator, Field* fields, size_t count);

// Whether the field holds exactly `text`.
bool field_is(Field field, const char* text);
