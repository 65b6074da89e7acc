#include "unitconf/numbers.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <string>

namespace {

std::string list_of(const std::string& json) {
    cJSON* array = cJSON_Parse(json.c_str());
    char* list = json_number_array_to_list(array);
    cJSON_Delete(array);
    const std::string text = list == nullptr ? "none" : list;
    free(list);
    return text;
}

TEST(DecimalValue, IsWhatTheTextBeginsWith) {
    EXPECT_EQ(decimal_value("20"), 20);
    EXPECT_EQ(decimal_value("007"), 7);
    EXPECT_EQ(decimal_value("20x1"), 20);
    EXPECT_EQ(decimal_value("20,30"), 20);
    EXPECT_EQ(decimal_value(" \t+5"), 5);
    EXPECT_EQ(decimal_value("-5"), -5);
    EXPECT_EQ(decimal_value("0x10"), 0);
}

TEST(DecimalValue, IsZeroWithoutANumber) {
    for (const char* text : {"", "x", "-", " ", ",5", "- 5", "not defined"}) {
        EXPECT_EQ(decimal_value(text), 0) << text;
    }
}

TEST(DecimalValue, IsHeldAtThe32BitLimits) {
    EXPECT_EQ(decimal_value("2147483646"), INT_MAX - 1);
    EXPECT_EQ(decimal_value("2147483647"), INT_MAX);
    EXPECT_EQ(decimal_value("2147483648"), INT_MAX);
    EXPECT_EQ(decimal_value("4294967297"), INT_MAX);
    EXPECT_EQ(decimal_value("99999999999999999999999"), INT_MAX);
    EXPECT_EQ(decimal_value("-2147483647"), INT_MIN + 1);
    EXPECT_EQ(decimal_value("-2147483648"), INT_MIN);
    EXPECT_EQ(decimal_value("-2147483649"), INT_MIN);
    EXPECT_EQ(decimal_value("-99999999999999999999999"), INT_MIN);
}

TEST(NumberList, JoinsTheNumbers) {
    EXPECT_EQ(list_of("[]"), "");
    EXPECT_EQ(list_of("[20]"), "20");
    EXPECT_EQ(list_of("[20,30,4094]"), "20,30,4094");
    EXPECT_EQ(list_of("[-1,0,7.9,-7.9]"), "-1,0,7,-7");
    EXPECT_EQ(list_of("[1e99,-1e99]"), "2147483647,-2147483648");
}

TEST(NumberList, LeavesOutOtherTypes) {
    EXPECT_EQ(list_of(R"([1,"2",3])"), "1,3");
    EXPECT_EQ(list_of(R"(["1",true,null,[4],{"a":5},6])"), "6");
    EXPECT_EQ(list_of(R"(["1"])"), "");
    EXPECT_EQ(list_of(R"(["1",false])"), "");
}

TEST(NumberList, EndsInACommaWhenTheLastItemIsNoNumber) {
    EXPECT_EQ(list_of(R"([1,"2"])"), "1,");
    EXPECT_EQ(list_of("[1,2,null,true]"), "1,2,");
}

TEST(NumberList, IsNoneOfAnythingButAnArray) {
    EXPECT_EQ(json_number_array_to_list(nullptr), nullptr);
    for (const char* json : {"{}", R"({"a":1})", "1", "\"1\"", "true", "null"}) {
        EXPECT_EQ(list_of(json), "none") << json;
    }
}

TEST(NumberList, HoldsHundredsOfThousandsOfNumbers) {
    std::string list = "-2147483648";
    for (int i = 1; i < 500000; i++) {
        list.append(",").append(std::to_string(INT_MIN + i));
    }
    // Far from done today if each item were looked for from the array's start.
    EXPECT_TRUE(list_of("[" + list + "]") == list);
}

}  // namespace
