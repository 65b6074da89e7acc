#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "cgi/uploads.h"
#include "tests/support/recorder.h"

namespace {

class CustomEdid : public testing::Test {
  protected:
    void SetUp() override {
        reset_recorder();
    }
};

// 512 digits, each of the 22 among them.
std::string edid_digits() {
    std::string digits;
    while (digits.size() < 512) {
        digits += "0123456789ABCDEFabcdef";
    }
    digits.resize(512);
    return digits;
}

std::string sent_edid(const std::string& digits) {
    std::string escaped;
    for (size_t i = 0; i < digits.size(); i += 2) {
        escaped += "\\x" + digits.substr(i, 2);
    }
    return "shell echo -e \"setuseredid\" > /dev/ttyS1\n"
           "pause 1\n"
           "shell echo -ne \"" +
           escaped +
           "\" > /dev/ttyS1\n"
           "read astparam g edid_set_u\n"
           "read astparam g edid_set_h\n";
}

std::string stored_name(const std::string& name) {
    return "shell astparam s edid_user_defined1 \"" + name +
           "\" > /dev/null 2>&1\n"
           "shell astparam save > /dev/null 2>&1\n";
}

std::string document(const std::string& edid) {
    return "{\"custom_edid\":\"" + edid + "\"}";
}

TEST_F(CustomEdid, IsSentAsEscapedBytesWithTheCaseKept) {
    EXPECT_EQ(load_custom_edid(document(edid_digits()).c_str()), 1);
    EXPECT_EQ(recorded_trace(), sent_edid(edid_digits()) + "pause 1\n");
}

TEST_F(CustomEdid, TheFirstLineHoldsTheBytesInTheirOrder) {
    load_custom_edid(document("00fF" + std::string(508, 'a')).c_str());
    const std::string begin =
        "shell echo -e \"setuseredid\" > /dev/ttyS1\n"
        "pause 1\n"
        "shell echo -ne \"\\x00\\xfF\\xaa";
    EXPECT_EQ(recorded_trace().substr(0, begin.size()), begin);
}

TEST_F(CustomEdid, BlanksTabsAndLineEndsDoNotCount) {
    std::string broken = " \\t\\r\\n";
    for (const char digit : edid_digits()) {
        broken += digit;
        broken += digit == '9' ? "\\r\\n\\t " : "";
    }
    EXPECT_EQ(load_custom_edid(document(broken + "\\n").c_str()), 1);
    EXPECT_EQ(recorded_trace(), sent_edid(edid_digits()) + "pause 1\n");
}

TEST_F(CustomEdid, RealLineEndsAndTabsInTheTextDoNotCount) {
    EXPECT_EQ(load_custom_edid(document("\r\n\t" + edid_digits() + "\n").c_str()), 1);
    EXPECT_EQ(recorded_trace(), sent_edid(edid_digits()) + "pause 1\n");
}

TEST_F(CustomEdid, InputsThatUseItAreToldToTakeItAgain) {
    const std::string wait = "pause 1\n";
    const std::string first = "pause 1\nshell echo \"setedid,1:9\" > /dev/ttyS1\n";
    const std::string second = "pause 1\nshell echo \"setedid,2:9\" > /dev/ttyS1\n";
    const struct {
        const char* first;
        const char* second;
        std::string trace;
    } cases[] = {
        {"9", "9", first + wait + second},
        {"9", "8", first + wait},
        {"8", "9", wait + second},
        {"8", "8", wait},
        {"", "", wait},
        {"95", "9 x", first + wait + second},
        {"19", " 9", wait},
    };
    for (const auto& each : cases) {
        reset_recorder();
        answer_command("astparam g edid_set_u", each.first);
        answer_command("astparam g edid_set_h", each.second);
        EXPECT_EQ(load_custom_edid(document(edid_digits()).c_str()), 1);
        EXPECT_EQ(recorded_trace(), sent_edid(edid_digits()) + each.trace)
            << each.first << " " << each.second;
    }
}

TEST_F(CustomEdid, AnotherLengthIsRefusedAndNothingIsDone) {
    for (const size_t length : {1U, 2U, 510U, 511U, 513U, 514U, 2047U, 2048U, 4096U, 500000U}) {
        const std::string edid(length, 'a');
        EXPECT_EQ(
            load_custom_edid((R"({"custom_edid_name":"n","custom_edid":")" + edid + "\"}").c_str()),
            5)
            << length;
    }
    EXPECT_EQ(recorded_trace(), "");
}

TEST_F(CustomEdid, BlanksAloneAreNoEdid) {
    for (const char* blanks : {" ", "    ", "\\r\\n", "\\t"}) {
        EXPECT_EQ(load_custom_edid(document(blanks).c_str()), 5) << blanks;
    }
    EXPECT_EQ(load_custom_edid(document(std::string(512, ' ')).c_str()), 5);
    EXPECT_EQ(recorded_trace(), "");
}

TEST_F(CustomEdid, AnyOtherCharacterAnywhereIsRefused) {
    for (const char* wrong : {"G", "g", "@", "`", "/", ":", "x", "-", "\\f", "\\u000b", "\\u00a0",
                              "\\u00e9", "$", "\\\"", "\\\\"}) {
        for (const size_t position : {size_t{0}, size_t{1}, size_t{255}, size_t{511}}) {
            std::string edid = edid_digits();
            edid.replace(position, 1, wrong);
            EXPECT_EQ(load_custom_edid(document(edid).c_str()), 5) << wrong << " at " << position;
        }
    }
    EXPECT_EQ(recorded_trace(), "");
}

TEST_F(CustomEdid, TheNameIsStoredBehindAGoodEdid) {
    EXPECT_EQ(
        load_custom_edid(
            (R"({"custom_edid_name":"Hall 1","custom_edid":")" + edid_digits() + "\"}").c_str()),
        1);
    EXPECT_EQ(recorded_trace(), sent_edid(edid_digits()) + "pause 1\n" + stored_name("Hall 1"));
}

TEST_F(CustomEdid, ANameAloneIsStoredAndNothingIsSent) {
    EXPECT_EQ(load_custom_edid(R"({"custom_edid_name":"Hall 1"})"), 1);
    EXPECT_EQ(recorded_trace(), stored_name("Hall 1"));
}

TEST_F(CustomEdid, TheNameIsPassedOnAsItStands) {
    EXPECT_EQ(load_custom_edid(R"({"Custom_EDID_Name":"a\"b %s %d $x \u00e9"})"), 1);
    EXPECT_EQ(recorded_trace(), stored_name("a\"b %s %d $x \xc3\xa9"));
    reset_recorder();
    const std::string longest(5000, 'n');
    EXPECT_EQ(load_custom_edid(("{\"custom_edid_name\":\"" + longest + "\"}").c_str()), 1);
    EXPECT_EQ(recorded_trace(), stored_name(longest));
}

TEST_F(CustomEdid, MembersThatAreNoTextsOrEmptyCountAsMissing) {
    for (const char* value : {"\"\"", "1", "null", "true", "[]", "{}", "[\"00\"]"}) {
        EXPECT_EQ(load_custom_edid((std::string("{\"custom_edid\":") + value +
                                    ",\"custom_edid_name\":" + value + "}")
                                       .c_str()),
                  1)
            << value;
    }
    EXPECT_EQ(recorded_trace(), "");
}

TEST_F(CustomEdid, ADocumentWithoutMembersIsAcceptedWithoutEffect) {
    for (const char* text : {"{}", "[]", "[1]", "null", "true", "3", "\"custom_edid\""}) {
        EXPECT_EQ(load_custom_edid(text), 1) << text;
    }
    EXPECT_EQ(recorded_trace(), "");
}

TEST_F(CustomEdid, WhatIsNotJsonIsRefused) {
    for (const char* text : {"", " ", "{", "custom_edid", "{\"custom_edid\":}"}) {
        EXPECT_EQ(load_custom_edid(text), 2) << text;
    }
    EXPECT_EQ(recorded_trace(), "");
}

TEST_F(CustomEdid, TheExampleIsLoadedAndNamed) {
    std::ifstream file(std::string(EXAMPLES_DIR) + "/custom-edid.json");
    std::stringstream text;
    text << file.rdbuf();
    EXPECT_EQ(load_custom_edid(text.str().c_str()), 1);
    const std::string key = "\"custom_edid\": \"";
    const size_t begin = text.str().find(key) + key.size();
    const std::string digits = text.str().substr(begin, text.str().find('"', begin) - begin);
    EXPECT_EQ(digits.size(), 512U);
    EXPECT_EQ(recorded_trace(), sent_edid(digits) + "pause 1\n" + stored_name("Hall 1 display"));
}

}  // namespace
