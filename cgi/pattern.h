// Finding several texts in a request at once, so that a body of some megabytes is walked over once
// and not once for each.
#pragma once

#include <cstddef>
#include <cstring>

// Every text that is looked for holds one of these, which uploaded files seldom do: the search goes
// from one such place to the next by memchr, and compares only there.
constexpr size_t anchor_place(const char* text) {
    size_t at = 0;
    while (text[at] != '=' && text[at] != '-') {
        at++;
    }
    return at;
}

// A text that is looked for, at least one character before its anchor.
struct Pattern {
    const char* text;
    size_t length;
    size_t anchor;

    template <size_t size>
    constexpr Pattern(const char (&literal)[size])
        : text(literal), length(size - 1), anchor(anchor_place(literal)) {}
};

// Whether the rows of a table can be looked for together: they have the same anchor, and not as
// their first character.
template <typename Row, size_t count>
constexpr bool same_anchor(const Row (&rows)[count]) {
    for (const Row& row : rows) {
        const Pattern& pattern = row.pattern;
        if (pattern.anchor == 0 ||
            pattern.text[pattern.anchor] != rows[0].pattern.text[rows[0].pattern.anchor]) {
            return false;
        }
    }
    return true;
}

// Whether the pattern stands in the text from `begin` to `end` with its anchor at `anchor`.
inline bool stands_at(const Pattern& pattern, const char* anchor, const char* begin,
                      const char* end) {
    const auto before = static_cast<size_t>(anchor - begin);
    const auto behind = static_cast<size_t>(end - anchor);
    return pattern.anchor <= before && pattern.length - pattern.anchor <= behind &&
           anchor[-1] == pattern.text[pattern.anchor - 1] &&
           memcmp(anchor - pattern.anchor, pattern.text, pattern.length) == 0;
}

// A row of a table and the first place where its pattern stands; both null when there is none.
template <typename Row>
struct Match {
    const Row* row;
    const char* place;
};

// Of the rows whose pattern stands in the text from `text` to `end`, the first in the order of the
// table. The walk ends early only at the table's first row: any other may yet be outranked.
template <typename Row, size_t count>
Match<Row> find_first_row(const char* text, const char* end, const Row (&rows)[count]) {
    const char anchor = rows[0].pattern.text[rows[0].pattern.anchor];
    Match<Row> match = {};
    size_t candidates = count;  // a row at or behind the one that was found changes nothing
    for (const char* at = text; candidates > 0; at++) {
        at = static_cast<const char*>(memchr(at, anchor, static_cast<size_t>(end - at)));
        if (at == nullptr) {
            break;
        }
        for (size_t i = 0; i < candidates; i++) {
            if (stands_at(rows[i].pattern, at, text, end)) {
                match = {&rows[i], at - rows[i].pattern.anchor};
                candidates = i;
            }
        }
    }
    return match;
}
