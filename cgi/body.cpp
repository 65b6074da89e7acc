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
// in a bare LF: so it has always been, and uploads are made to it.
static constexpr StartRule start_rules[] = {
    {"Content-Type: text/plain\r\n\r\n", nullptr},
    {"Content-Type: application/octet-stream\r\n\r\n", nullptr},
    {"Content-Type: image/png\r\n\r\n", nullptr},
    {"Content-Type: multipart/form-data\r\n\r\n", "Content-Type: multipart/form-data\n\r\n"},
    {"Content-Type:", "\r\n\r\n"},
    {"Content-Disposition: ", "\r\n\r\n"},
};
static_assert(same_anchor(start_rules));

// The position behind the first occurrence of `wanted`, or null.
static const char* find_behind(const char* text, size_t length, const char* wanted) {
    const size_t wanted_length = strlen(wanted);
    const char* found = static_cast<const char*>(memmem(text, length, wanted, wanted_length));
    return found == nullptr ? nullptr : found + wanted_length;
}

static const char* find_start(const char* text, size_t length) {
    const Match<StartRule> header = find_first_row(text, text + length, start_rules);
    if (header.row == nullptr) {
        return text;
    }
    return header.row->start == nullptr ? header.place + header.row->pattern.length
                                        : find_behind(text, length, header.row->start);
}

Content find_content(const char* text, size_t length, size_t most) {
    static constexpr char delimiter[] = "\r\n----";
    static constexpr size_t delimiter_length = sizeof delimiter - 1;
    const char* begin = find_start(text, length);
    if (begin == nullptr) {
        return {nullptr, 0};
    }
    size_t left = length - static_cast<size_t>(begin - text);
    // An end that begins right behind the longest content still counts.
    if (left > most + delimiter_length) {
        left = most + delimiter_length;
    }
    const char* end = static_cast<const char*>(memmem(begin, left, delimiter, delimiter_length));
    return {begin, end == nullptr ? left : static_cast<size_t>(end - begin)};
}
