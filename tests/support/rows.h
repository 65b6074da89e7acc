// Expected traces of sections whose rows each leave a piece of their own.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/applying.h"
#include "tests/support/recorder.h"
#include "unitconf/tables.h"

// What a row leaves in the trace when its member is absent: the pauses that it always takes.
struct IdleRow {
    std::string key;
    std::string trace;
};

using IdleRows = std::vector<IdleRow>;

// What a row leaves in the trace when its member has this value, as JSON.
struct RowCase {
    std::string key;
    std::string value;
    std::string trace;
};

// The trace of all rows when the member `key` leaves `trace` and all others are absent.
inline std::string trace_with(const IdleRows& rows, const std::string& key,
                              const std::string& trace) {
    std::string all;
    bool found = false;
    for (const IdleRow& row : rows) {
        all += row.key == key ? trace : row.trace;
        found = found || row.key == key;
    }
    EXPECT_TRUE(found || key.empty()) << "no row " << key;
    return all;
}

inline std::string idle_trace(const IdleRows& rows) {
    return trace_with(rows, "", "");
}

inline std::string idle_trace_of(const IdleRows& rows, const std::string& key) {
    for (const IdleRow& row : rows) {
        if (row.key == key) {
            return row.trace;
        }
    }
    ADD_FAILURE() << "no row " << key;
    return "";
}

// A value of every JSON type, numbers and texts at their ends among them.
inline const std::vector<std::string> every_json_value = {
    "true", "false", "null",  "0",     "7",  "-1",  "-0.5", "1e99",
    "\"\"", "\"x\"", "\"5\"", "\"-\"", "[]", "[1]", "{}",   R"({"a":1})",
};

// A text as JSON; it needs no escapes.
inline std::string json_text(const std::string& text) {
    std::string json = "\"";
    json += text;
    json += '"';
    return json;
}

// The values of that list that are none of the given.
inline std::vector<std::string> every_json_value_but(const std::vector<std::string>& usable) {
    std::vector<std::string> others;
    for (const std::string& value : every_json_value) {
        bool used = false;
        for (const std::string& each : usable) {
            used = used || each == value;
        }
        if (!used) {
            others.push_back(value);
        }
    }
    return others;
}

// The keys of a table's rows, in their order; rows without a key are left out.
inline std::vector<std::string> keys_of(const SectionTable& table) {
    std::vector<std::string> keys;
    for (size_t i = 0; i < table.count; i++) {
        if (table.rows[i].key != nullptr) {
            keys.emplace_back(table.rows[i].key);
        }
    }
    return keys;
}

inline std::vector<std::string> keys_of(const IdleRows& rows) {
    std::vector<std::string> keys;
    for (const IdleRow& row : rows) {
        keys.push_back(row.key);
    }
    return keys;
}

// The row of a key in a table; there must be one.
inline const Member& row_of(const SectionTable& table, const std::string& key) {
    size_t at = 0;
    while (at + 1 < table.count && (table.rows[at].key == nullptr || table.rows[at].key != key)) {
        at++;
    }
    EXPECT_EQ(table.rows[at].key == nullptr ? "" : table.rows[at].key, key);
    return table.rows[at];
}

// The sum of all pauses in a trace, in seconds.
inline unsigned seconds_of(const std::string& trace) {
    unsigned seconds = 0;
    for (size_t at = trace.find("pause "); at != std::string::npos;
         at = trace.find("\npause ", at)) {
        at += trace[at] == '\n' ? 7 : 6;
        seconds += static_cast<unsigned>(std::stoul(trace.substr(at)));
    }
    return seconds;
}
