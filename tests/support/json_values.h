// JSON values that a member of a given type must not have, for tests that try them all.
#pragma once

#include <string>
#include <vector>

inline const std::vector<std::string> not_booleans = {"null",     "0",  "1",      "-1", "\"\"",
                                                      "\"true\"", "[]", "[true]", "{}"};
inline const std::vector<std::string> not_numbers = {"null",  "true", "false", "\"\"",
                                                     "\"3\"", "[]",   "[3]",   "{}"};
inline const std::vector<std::string> not_texts = {"null", "true", "false",   "0",
                                                   "3",    "[]",   "[\"x\"]", "{}"};

// What a document can have in the place of a section, and in which no member is found.
inline const std::vector<std::string> without_members = {"{}",   "[]", "[{}]",  "null",
                                                         "true", "3",  "\"x\"", "\"\""};

// `document` with its "@" replaced by `value`.
inline std::string with_value(const std::string& document, const std::string& value) {
    const size_t place = document.find('@');
    return document.substr(0, place) + value + document.substr(place + 1);
}
