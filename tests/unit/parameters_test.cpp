#include "device/parameters.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "device/unit.h"
#include "tests/support/recorder.h"

namespace {

class Parameters : public testing::Test {
  protected:
    void SetUp() override {
        reset_recorder();
    }
};

// The value that a read leaves in a buffer that held "before".
std::string value_after(void (*read)(const char* key, char* out), const char* key) {
    char out[output_text_size] = "before";
    read(key, out);
    return out;
}

std::string lm_value(const std::string& dump, const char* key) {
    provide_file("/var/tmp/lmparam_dump", dump);
    return value_after(lm_get_value, key);
}

std::string rw_value(const std::string& dump, const char* key) {
    provide_file("/dev/shm/rwparam", dump);
    return value_after(rw_get_value, key);
}

// --- find_after
// -----------------------------------------------------------------------------------

TEST_F(Parameters, TheTextBehindTheFirstOccurrenceIsFound) {
    EXPECT_STREQ(find_after("abc=1", "="), "1");
    EXPECT_STREQ(find_after("a=b=c", "="), "b=c");
    EXPECT_STREQ(find_after("aab", "ab"), "");
    EXPECT_STREQ(find_after("ab", "ab"), "");
    EXPECT_STREQ(find_after("ababc", "abc"), "");
    EXPECT_STREQ(find_after("text", ""), "text");
    EXPECT_EQ(find_after("ab", "abc"), nullptr);
    EXPECT_EQ(find_after("abx", "abc"), nullptr);
    EXPECT_EQ(find_after("", "="), nullptr);
}

// --- read_file_text
// -------------------------------------------------------------------------------

TEST_F(Parameters, AWholeFileIsRead) {
    provide_file("/a/list", std::string("line 1\r\nli\0ne 2", 15));
    char* text = nullptr;
    read_file_text("/a/list", &text);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(std::string(text, 16), std::string("line 1\r\nli\0ne 2\0", 16));
    free(text);
}

TEST_F(Parameters, AnEmptyFileIsAnEmptyText) {
    provide_file("/a/list", "");
    char* text = nullptr;
    read_file_text("/a/list", &text);
    ASSERT_NE(text, nullptr);
    EXPECT_STREQ(text, "");
    free(text);
}

TEST_F(Parameters, AMissingFileLeavesTheCallersText) {
    char before[] = "before";
    char* text = before;
    read_file_text("/a/list", &text);
    EXPECT_EQ(text, before);
}

// --- lm_get_value
// ---------------------------------------------------------------------------------

TEST_F(Parameters, TheValueOfTheFirstLineThatBeginsWithTheKeyIsTaken) {
    EXPECT_EQ(lm_value("MY_IP=10.0.0.2\r\nMY_NETMASK=255.0.0.0\r\n", "MY_IP="), "10.0.0.2");
    EXPECT_EQ(lm_value("MY_IP=10.0.0.2\r\nMY_NETMASK=255.0.0.0\r\n", "MY_NETMASK="), "255.0.0.0");
    EXPECT_EQ(lm_value("A=1\nA=2\n", "A="), "1");
    EXPECT_EQ(lm_value("BA=1\n A=2\nA=3", "A="), "3");
    EXPECT_EQ(lm_value("A=1=2\n", "A="), "1=2");
    EXPECT_EQ(lm_value("A=\nB=1\n", "A="), "");
}

TEST_F(Parameters, EmptyLinesAreSteppedOver) {
    EXPECT_EQ(lm_value("\n\r\n\nA=1\n\n\nB=2", "B="), "2");
    EXPECT_EQ(lm_value("\nA=1\n", "A="), "1");
}

TEST_F(Parameters, NulBytesEndALineToo) {
    EXPECT_EQ(lm_value(std::string("A=1\0B=2\n", 8), "B="), "2");
    EXPECT_EQ(lm_value(std::string("\0\0B=2", 5), "B="), "2");
}

TEST_F(Parameters, AKeyNeedNotEndInAnEqualsSign) {
    EXPECT_EQ(lm_value("VW_VAR_VER=7\n", "VW_"), "7");
    EXPECT_EQ(lm_value("VW_VAR_VER\nVW_X=1\n", "VW_"), "");
    EXPECT_EQ(lm_value("=a=b\n", "="), "a=b");
    EXPECT_EQ(lm_value("=a=b\n", ""), "a=b");
}

TEST_F(Parameters, ValuesAreBoundAtTheSizeOfTheCallersBuffer) {
    for (const size_t length : {1023UL, 1024UL, 5000UL}) {
        const std::string value(length, 'v');
        EXPECT_EQ(lm_value("A=" + value + "\n", "A="), value.substr(0, 1023));
        EXPECT_EQ(rw_value("A=" + value, "A="), value.substr(0, 1023));
    }
}

TEST_F(Parameters, WhatIsNotThereLeavesTheCallersValue) {
    EXPECT_EQ(value_after(lm_get_value, "A="), "before");
    EXPECT_EQ(value_after(rw_get_value, "A="), "before");
    EXPECT_EQ(lm_value("", "A="), "before");
    EXPECT_EQ(rw_value("", "A="), "before");
    EXPECT_EQ(lm_value("B=1\na=2\n", "A="), "before");
    EXPECT_EQ(rw_value("B=1\na=2\n", "A="), "before");
    EXPECT_EQ(lm_value("A=1\n", nullptr), "before");
    EXPECT_EQ(rw_value("A=1\n", nullptr), "before");
}

// --- rw_get_value
// ---------------------------------------------------------------------------------

TEST_F(Parameters, EntriesOfTheRunTimeStoreEndInNulCrOrLf) {
    const std::string dump("\1\0\0\0a=1\0b=2\nc=3\r\nd=4\0\0e=5\0\0", 27);
    EXPECT_EQ(rw_value(dump, "a="), "1");
    EXPECT_EQ(rw_value(dump, "b="), "2");
    EXPECT_EQ(rw_value(dump, "c="), "3");
    EXPECT_EQ(rw_value(dump, "d="), "4");
    EXPECT_EQ(rw_value(dump, "e="), "5");
}

TEST_F(Parameters, TheHeaderStandsInFrontOfTheFirstEntry) {
    EXPECT_EQ(rw_value(std::string("\1\2\3\4a=1\0b=2\0\0", 13), "a="), "before");
    EXPECT_EQ(rw_value(std::string("\1\2\3\4a=1\0b=2\0\0", 13), "b="), "2");
    EXPECT_EQ(rw_value(std::string("\1\2\3\4a=1\0", 8), "\1\2\3\4a="), "1");
}

TEST_F(Parameters, TheRunTimeStoreItselfIsReadAndNotItsCopy) {
    provide_file("/dev/shm/rwparam_temp", std::string("\0\0\0\0a=1\0\0", 9));
    EXPECT_EQ(value_after(rw_get_value, "a="), "before");
    EXPECT_EQ(recorded_trace(), "");
}

}  // namespace
