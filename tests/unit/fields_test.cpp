#include "unitconf/fields.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

namespace {

std::string text_of(Field field) {
    return {field.text, static_cast<size_t>(field.length)};
}

std::vector<std::string> all_fields(const char* text, char separator) {
    std::vector<std::string> fields;
    Field rest = field_of(text, INT_MAX);
    while (rest.text != nullptr) {
        fields.push_back(text_of(take_field(&rest, separator)));
    }
    return fields;
}

std::vector<std::string> three_fields(const char* text, char separator) {
    Field fields[3];
    split_fields(field_of(text, INT_MAX), separator, fields, 3);
    return {text_of(fields[0]), text_of(fields[1]), text_of(fields[2])};
}

using Texts = std::vector<std::string>;

TEST(Fields, EmptyFieldsAreKept) {
    EXPECT_EQ(all_fields("a,b", ','), Texts({"a", "b"}));
    EXPECT_EQ(all_fields(",,a,,b,", ','), Texts({"", "", "a", "", "b", ""}));
    EXPECT_EQ(all_fields("a", ','), Texts({"a"}));
    EXPECT_EQ(all_fields("", ','), Texts({""}));
    EXPECT_EQ(all_fields(",", ','), Texts({"", ""}));
}

TEST(Fields, MissingFieldsAreEmptyAndFurtherOnesDropped) {
    EXPECT_EQ(three_fields("1x2x3", 'x'), Texts({"1", "2", "3"}));
    EXPECT_EQ(three_fields("1x2x3x4", 'x'), Texts({"1", "2", "3"}));
    EXPECT_EQ(three_fields("1x2", 'x'), Texts({"1", "2", ""}));
    EXPECT_EQ(three_fields("", 'x'), Texts({"", "", ""}));
    EXPECT_EQ(three_fields("x", 'x'), Texts({"", "", ""}));
}

TEST(Fields, TakingBehindTheLastFieldGivesAnEmptyOne) {
    Field rest = {nullptr, 0};
    EXPECT_EQ(text_of(take_field(&rest, ',')), "");
    EXPECT_EQ(rest.text, nullptr);
}

TEST(Fields, AFieldEndsAtItsLongestLength) {
    EXPECT_EQ(text_of(field_of("abcd", 3)), "abc");
    EXPECT_EQ(text_of(field_of("abcd", 4)), "abcd");
    EXPECT_EQ(text_of(field_of("abcd", 5)), "abcd");
    Field rest = field_of("ab,cd", 3);
    EXPECT_EQ(text_of(take_field(&rest, ',')), "ab");
    EXPECT_EQ(text_of(take_field(&rest, ',')), "");
    EXPECT_EQ(rest.text, nullptr);
}

TEST(Fields, AFieldIsATextOnlyAsAWhole) {
    Field rest = field_of("abc,", INT_MAX);
    const Field field = take_field(&rest, ',');
    EXPECT_TRUE(field_is(field, "abc"));
    EXPECT_FALSE(field_is(field, "ab"));
    EXPECT_FALSE(field_is(field, "abc,"));
    EXPECT_FALSE(field_is(field, "ABC"));
    EXPECT_FALSE(field_is(field, ""));
    EXPECT_TRUE(field_is(rest, ""));
}

}  // namespace
