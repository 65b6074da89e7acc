#include "cgi/body.h"

#include <cstring>

#include "cgi/pattern.h"

// A header that tells where the content starts: right behind it, or behind the header block.
struct StartRule {
    Pattern pattern;    // the rule applies when this is found
    const char* start;  // the content starts behind this; null: behind the header itself
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
static_assert(same_anchor(start_rules));

struct ContentEnd {
    Pattern pattern;
};

static constexpr ContentEnd content_ends[] = {{"\r\n----"}};
static_assert(same_anchor(content_ends));

// The position behind the first occurrence of `wanted` before the first NUL, or null.
static const char* find_behind(const char* text, size_t size, const char* wanted) {
    const size_t wanted_length = strlen(wanted);
    const char* found = static_cast<const char*>(memmem(text, size, wanted, wanted_length));
    if (found == nullptr) {
        return nullptr;
    }
    const char* behind = found + wanted_length;
    return memchr(text, '\0', static_cast<size_t>(behind - text)) == nullptr ? behind : nullptr;
}

static const char* find_start(const char* text, size_t size) {
    const Match<StartRule> header = find_first_row(text, size, start_rules);
    if (header.row == nullptr) {
        return text;
    }
    return header.row->start == nullptr ? header.place + header.row->pattern.length
                                        : find_behind(text, size, header.row->start);
}

Content find_content(const char* text, size_t size, size_t most) {
    const char* begin = find_start(text, size);
    if (begin == nullptr) {
        return {nullptr, 0};
    }
    // An end that begins right behind the longest content still counts.
    const size_t window = most + content_ends[0].pattern.length;
    const size_t left = size - static_cast<size_t>(begin - text);
    const size_t length = strnlen(begin, left < window ? left : window);
    const char* end = walk_for_rows(begin, begin + length, content_ends).place;
    return {begin, end == nullptr ? length : static_cast<size_t>(end - begin)};
}
