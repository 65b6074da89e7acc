#include "unitconf/fields.h"

#include <cstring>

Field field_of(const char* text, size_t longest) {
    return {text, static_cast<int>(strnlen(text, longest))};
}

Field take_field(Field* rest, char separator) {
    if (rest->text == nullptr) {
        return {"", 0};
    }
    const Field whole = *rest;
    const char* end =
        static_cast<const char*>(memchr(whole.text, separator, static_cast<size_t>(whole.length)));
    if (end == nullptr) {
        *rest = {nullptr, 0};
        return whole;
    }
    const int length = static_cast<int>(end - whole.text);
    *rest = {end + 1, whole.length - length - 1};
    return {whole.text, length};
}

void split_fields(Field whole, char separator, Field* fields, size_t count) {
    for (size_t i = 0; i < count; i++) {
        fields[i] = take_field(&whole, separator);
    }
}

bool field_is(Field field, const char* text) {
    const size_t length = static_cast<size_t>(field.length);
    return strlen(text) == length && memcmp(field.text, text, length) == 0;
}
