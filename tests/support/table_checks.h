// What holds for every row of a section's table, whatever the section: tests iterate over the
// table, so that a new row is tested the day it is added.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/applying.h"
#include "tests/support/recorder.h"
#include "unitconf/tables.h"

using Applier = void (*)(const cJSON* section);

inline std::string fresh_trace_of(Applier apply, const std::string& json) {
    reset_recorder();
    return trace_of(apply, json);
}

struct TypedValue {
    JsonType type;  // none: a null, which is nothing that a member can want
    const char* json;
};

inline constexpr TypedValue values_of_all_types[] = {
    {JsonType::boolean, "true"}, {JsonType::boolean, "false"},   {JsonType::none, "null"},
    {JsonType::number, "0"},     {JsonType::number, "7"},        {JsonType::number, "-1"},
    {JsonType::string, "\"\""},  {JsonType::string, "\"text\""}, {JsonType::string, "\"1\""},
    {JsonType::array, "[]"},     {JsonType::array, "[true]"},    {JsonType::object, "{}"},
};

inline bool takes_type(const Member& row, JsonType type) {
    return row.type == JsonType::any || row.type == type ||
           (row.type == JsonType::number_or_string &&
            (type == JsonType::number || type == JsonType::string));
}

// A section that holds one member, within sub-objects when `path` names any.
inline std::string document_of(const std::vector<std::string>& path, const std::string& member) {
    std::string document;
    for (const std::string& parent : path) {
        document.append("{\"").append(parent).append("\":");
    }
    document.append("{").append(member).append("}");
    return document.append(path.size(), '}');
}

inline std::string named(const std::string& key, const std::string& value) {
    return std::string("\"").append(key).append("\":").append(value);
}

inline std::string upper_case(std::string text) {
    for (char& byte : text) {
        byte = byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
    }
    return text;
}

// A value that makes the row send its line.
inline std::string usable_value(const Member& row) {
    if (row.words.count > 0) {
        return std::string("\"").append(row.words.words[row.words.count - 1].word).append("\"");
    }
    switch (row.type) {
        case JsonType::boolean:
            return "false";
        case JsonType::number:
            return "7";
        default:
            return "\"text\"";
    }
}

// Calls `check` for each row that has a key, with the path of the sub-objects that it stands in.
template <typename Check>
void for_each_member(const Member* rows, size_t count, std::vector<std::string> path, Check check) {
    for (size_t i = 0; i < count; i++) {
        if (rows[i].key == nullptr) {
            continue;
        }
        check(rows[i], path);
        if (rows[i].member_count > 0) {
            std::vector<std::string> inner = path;
            inner.emplace_back(rows[i].key);
            for_each_member(rows[i].own.members, rows[i].member_count, inner, check);
        }
    }
}

// A member of a type that its row does not take changes nothing in what the unit is told.
inline void expect_wrong_types_to_count_as_absent(Applier apply, const SectionTable& table) {
    for_each_member(
        table.rows, table.count, {}, [&](const Member& row, const std::vector<std::string>& path) {
            const std::string absent = fresh_trace_of(apply, document_of(path, ""));
            for (const TypedValue& value : values_of_all_types) {
                if (takes_type(row, value.type)) {
                    continue;
                }
                const std::string document = document_of(path, named(row.key, value.json));
                EXPECT_EQ(fresh_trace_of(apply, document), absent) << document;
            }
        });
}

// A boolean's key is found by its exact case, every other key in any case.
inline void expect_only_booleans_to_need_exact_case(Applier apply, const SectionTable& table) {
    for_each_member(
        table.rows, table.count, {}, [&](const Member& row, const std::vector<std::string>& path) {
            if (row.member_count > 0) {
                return;
            }
            const std::string value = usable_value(row);
            const std::string lower = document_of(path, named(row.key, value));
            const std::string upper = document_of(path, named(upper_case(row.key), value));
            const std::string absent = fresh_trace_of(apply, document_of(path, ""));
            EXPECT_EQ(fresh_trace_of(apply, upper),
                      row.type == JsonType::boolean ? absent : fresh_trace_of(apply, lower))
                << upper;
            if (row.kind != Kind::handled) {
                EXPECT_NE(fresh_trace_of(apply, lower), absent) << lower;
            }
        });
}

// A section that is no object holds no member.
inline void expect_other_sections_to_be_taken_as_empty(Applier apply) {
    const std::string empty = fresh_trace_of(apply, "{}");
    for (const char* other : {"[]", "true", "false", "null", "3", "\"x\"", "\"\"",
                              R"([{"enable":true,"lan1":{},"tls_ca":"x"}])"}) {
        EXPECT_EQ(fresh_trace_of(apply, other), empty) << other;
    }
}
