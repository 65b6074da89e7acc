// Groups of rows that a document can reach: a section itself or an object in it.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/applying.h"
#include "tests/support/rows.h"

// A group of rows, with what the section leaves before and behind it when it holds nothing else.
struct Block {
    const char* name;
    void (*apply)(const cJSON* section);
    const char* document_start;
    const char* document_end;
    std::string before;
    IdleRows rows;
    std::string behind;
};

// The trace of the section when the group holds these members, as JSON.
inline std::string trace_in(const Block& block, const std::string& members) {
    return trace_of(block.apply, block.document_start + members + block.document_end);
}

// The trace that is wanted when the member `key` leaves `trace` and all others are absent.
inline std::string expected_in(const Block& block, const std::string& key,
                               const std::string& trace) {
    return block.before + trace_with(block.rows, key, trace) + block.behind;
}

inline std::string member(const std::string& key, const std::string& value) {
    return json_text(key) + ":" + value;
}

inline void expect_cases(const Block& block, const std::vector<RowCase>& cases) {
    for (const RowCase& each : cases) {
        EXPECT_EQ(trace_in(block, member(each.key, each.value)),
                  expected_in(block, each.key, each.trace))
            << block.name << ": " << each.key << " " << each.value;
    }
}

// None of the values does more than the member's absence.
inline void expect_nothing_sent(const Block& block, const std::string& key,
                                const std::vector<std::string>& values) {
    for (const std::string& value : values) {
        EXPECT_EQ(trace_in(block, member(key, value)), expected_in(block, "", ""))
            << block.name << ": " << key << " " << value;
    }
}
