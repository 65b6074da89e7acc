#include "cgi/body.h"

#include <cstring>

const char* find_text(const char* text, size_t length, const char* pattern) {
    return static_cast<const char*>(memmem(text, length, pattern, strlen(pattern)));
}

// The position behind the first occurrence of `pattern`, or null.
static const char* find_behind(const char* text, size_t length, const char* pattern) {
    const char* found = find_text(text, length, pattern);
    return found == nullptr ? nullptr : found + strlen(pattern);
}

// A header that tells where the content starts: right behind it, or behind the header block.
struct StartRule {
    const char* header;  // the rule applies when this is found
    const char* start;   // the content starts behind this; null: behind `header` itself
};

// The first rule whose header is found applies, also when it then finds no start. A part of the
// type multipart/form-data is known by its line end in CR LF, but starts only where that type ends
// in a bare LF: the field's upload page once wrote it so.
static constexpr StartRule start_rules[] = {
    {"Content-Type: text/plain\r\n\r\n", nullptr},
    {"Content-Type: application/octet-stream\r\n\r\n", nullptr},
    {"Content-Type: image/png\r\n\r\n", nullptr},
    {"Content-Type: multipart/form-data\r\n\r\n", "Content-Type: multipart/form-data\n\r\n"},
    {"Content-Type:", "\r\n\r\n"},
    {"Content-Disposition: ", "\r\n\r\n"},
};

static const char* find_start(const char* text, size_t length) {
    for (const StartRule& rule : start_rules) {
        const char* behind_header = find_behind(text, length, rule.header);
        if (behind_header != nullptr) {
            return rule.start == nullptr ? behind_header : find_behind(text, length, rule.start);
        }
    }
    return text;
}

Content find_content(const char* text, size_t length, size_t most) {
    static constexpr char end[] = "\r\n----";
    const char* begin = find_start(text, length);
    if (begin == nullptr) {
        return {nullptr, 0};
    }
    size_t left = length - static_cast<size_t>(begin - text);
    // An end that begins right behind the longest content still counts.
    const size_t window = most + sizeof end - 1;
    if (left > window) {
        left = window;
    }
    const char* found = find_text(begin, left, end);
    return {begin, found == nullptr ? left : static_cast<size_t>(found - begin)};
}
