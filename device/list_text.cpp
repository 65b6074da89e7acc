#include "device/list_text.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>

static constexpr char quote_word[] = "TAG";
static constexpr ptrdiff_t quote_word_length = sizeof quote_word - 1;

static bool is_dropped(char byte, LineBreaks line_breaks) {
    return line_breaks == LineBreaks::drop && (byte == '\r' || byte == '\n' || byte == '\t');
}

static size_t count_quotes(const char* text) {
    size_t count = 0;
    for (const char* at = text; *at != '\0'; at++) {
        count += *at == '"' ? 1 : 0;
    }
    return count;
}

char* encode_list_text(const char* json, LineBreaks line_breaks) {
    const size_t size = strlen(json) + count_quotes(json) * (quote_word_length - 1) + 1;
    char* stored = static_cast<char*>(malloc(size));
    if (stored == nullptr) {
        return nullptr;
    }
    char* end = stored;
    for (const char* at = json; *at != '\0'; at++) {
        if (*at == '"') {
            memcpy(end, quote_word, quote_word_length);
            end += quote_word_length;
        } else if (!is_dropped(*at, line_breaks)) {
            *end++ = *at;
        }
    }
    *end = '\0';
    return stored;
}

char* decode_list_text(const char* stored, LineBreaks line_breaks) {
    char* json = static_cast<char*>(malloc(strlen(stored) + 1));
    if (json == nullptr) {
        return nullptr;
    }
    char* end = json;
    for (const char* at = stored; *at != '\0'; at++) {
        if (is_dropped(*at, line_breaks)) {
            continue;
        }
        *end++ = *at;
        // The word counts also when a dropped line break stood within it.
        if (end - json >= quote_word_length &&
            memcmp(end - quote_word_length, quote_word, quote_word_length) == 0) {
            end -= quote_word_length;
            *end++ = '"';
        }
    }
    *end = '\0';
    return json;
}
