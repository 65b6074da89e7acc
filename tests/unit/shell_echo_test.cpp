#include "device/shell_echo.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <initializer_list>
#include <string>
#include <vector>

#include "device/list_text.h"
#include "tests/support/recorder.h"

namespace {

std::string echoed(std::string text) {
    const size_t size = interpret_echoed(text.data());
    return std::string(text.data(), size);
}

std::string bytes(std::initializer_list<int> values) {
    std::string all;
    for (const int value : values) {
        all += static_cast<char>(value);
    }
    return all;
}

struct Case {
    std::string text;
    std::string written;
};

void expect_all(const std::vector<Case>& cases) {
    for (const Case& each : cases) {
        EXPECT_FALSE(only_the_shell_knows(each.text.c_str())) << each.text;
        EXPECT_EQ(echoed(each.text), each.written) << each.text;
    }
}

// --- What the bytes become
// ------------------------------------------------------------------------

TEST(ShellEcho, TextWithoutBackslashesStaysAsItIs) {
    std::string all;
    for (int byte = 1; byte < 256; byte++) {
        if (byte != '\\' && byte != '$' && byte != '`' && byte != '"') {
            all += static_cast<char>(byte);
        }
    }
    expect_all({{"", ""}, {"{TAGaTAG:1}", "{TAGaTAG:1}"}, {all, all}});
}

TEST(ShellEcho, LettersBehindABackslashAreControlCharacters) {
    expect_all({
        {R"(<\a>)", "<\a>"},
        {R"(<\b>)", "<\b>"},
        {R"(<\e>)", bytes({'<', 27, '>'})},
        {R"(<\f>)", "<\f>"},
        {R"(<\n>)", "<\n>"},
        {R"(<\r>)", "<\r>"},
        {R"(<\t>)", "<\t>"},
        {R"(<\v>)", "<\v>"},
    });
}

TEST(ShellEcho, EveryOtherByteKeepsTheBackslashBeforeIt) {
    const std::string escapes = "abcefnrtv01234567\\$`\"\n";
    for (int byte = 1; byte < 256; byte++) {
        const char c = static_cast<char>(byte);
        if (escapes.find(c) == std::string::npos) {
            const std::string text = std::string("<\\") + c + ">";
            EXPECT_EQ(echoed(text), text) << byte;
        }
    }
}

TEST(ShellEcho, BackslashesAreHalvedByTheShellAndAgainByEcho) {
    expect_all({
        {R"(a\\)", "a\\"},          // the shell leaves one, echo has nothing to read behind it
        {R"(a\\\\)", "a\\"},        // the shell leaves two
        {R"(a\\\\\\)", "a\\\\"},    // three: one pair, one at the end
        {R"(a\\\\\\\\)", "a\\\\"},  // four
        {R"(\\n)", "\n"},
        {R"(\\\n)", "\\n"},
        {R"(\\\\n)", "\\n"},
        {R"(\\\\\n)", "\\\n"},
        {R"(\\TAG)", "\\TAG"},
        {R"(\\\\TAG)", "\\TAG"},
        {R"(\TAG)", "\\TAG"},
    });
}

TEST(ShellEcho, WhatTheShellTakesOutOfItsQuotesStandsPlain) {
    expect_all({
        {R"(\$HOME)", "$HOME"},
        {R"(\`id\`)", "`id`"},
        {R"(\"x\")", "\"x\""},
        {R"(\\\$HOME)", "\\$HOME"},
        {"one\\\ntwo", "onetwo"},
        {"one\\\n\\\ntwo", "onetwo"},
        {"one\ntwo", "one\ntwo"},
    });
}

TEST(ShellEcho, OctalDigitsAreOneByte) {
    expect_all({
        {R"(\1)", bytes({1})},
        {R"(\12)", "\n"},
        {R"(\123)", "S"},
        {R"(\1234)", "S4"},
        {R"(\018)", bytes({1, '8'})},
        {R"(\0)", bytes({0})},
        {R"(\00)", bytes({0})},
        {R"(\000)", bytes({0})},
        {R"(\0000)", bytes({0})},
        {R"(\00000)", bytes({0, '0'})},
        {R"(\01)", bytes({1})},
        {R"(\0123)", "S"},
        {R"(\01234)", "S4"},
        {R"(\08)", bytes({0, '8'})},
        {R"(\008)", bytes({0, '8'})},
        {R"(\0x41)", bytes({0, 'x', '4', '1'})},
        {R"(\377)", bytes({255})},
        {R"(\0377)", bytes({255})},
        {R"(\8)", "\\8"},
    });
}

TEST(ShellEcho, ADigitThatWouldLeadBeyond255IsNoPartOfTheNumber) {
    expect_all({
        {R"(\400)", " 0"},
        {R"(\0400)", " 0"},
        {R"(\777)", "?7"},
        {R"(\0777)", "?7"},
    });
}

TEST(ShellEcho, HexadecimalDigitsAreOneByte) {
    expect_all({
        {R"(\x4)", bytes({4})},
        {R"(\x41)", "A"},
        {R"(\x412)", "A2"},
        {R"(\x4g)", bytes({4, 'g'})},
        {R"(\xfF)", bytes({255})},
        {R"(\x00a)", bytes({0, 'a'})},
        {R"(\\x41)", "A"},
        {R"(\\\x41)", "\\x41"},
    });
}

TEST(ShellEcho, AnXWithoutDigitsStays) {
    expect_all({
        {R"(\x)", "\\x"},
        {R"(\xg)", "\\xg"},
        {R"(\x 1)", "\\x 1"},
        {R"(\x-1)", "\\x-1"},
        {R"(\xx41)", "\\xx41"},
        {R"(\X41)", "\\X41"},
    });
}

TEST(ShellEcho, TheLetterCEndsTheOutput) {
    expect_all({
        {R"(ab\cde)", "ab"},
        {R"(ab\\cde)", "ab"},
        {R"(ab\\\cde)", "ab\\cde"},
        {R"(\c)", ""},
    });
}

// --- What only the shell can tell
// -----------------------------------------------------------------

TEST(ShellEcho, UnescapedExpansionsAreKnownOnlyToTheShell) {
    for (const char* text : {"$", "a$b", "`", "a`id`", "\"", R"(\\$x)", R"(\\\\$x)", R"(\a$x)",
                             R"(\$x$y)", R"(\\`)", R"(\\")"}) {
        EXPECT_TRUE(only_the_shell_knows(text)) << text;
    }
}

TEST(ShellEcho, EscapedExpansionsNeedNoShell) {
    for (const char* text : {R"(\$)", R"(a\$b)", R"(\`)", R"(\")", R"(\\\$x)", R"(\a\$x)"}) {
        EXPECT_FALSE(only_the_shell_knows(text)) << text;
    }
}

TEST(ShellEcho, ABackslashAtTheEndTakesTheClosingQuoteAway) {
    EXPECT_TRUE(only_the_shell_knows("\\"));
    EXPECT_TRUE(only_the_shell_knows("a\\\\\\"));
    EXPECT_FALSE(only_the_shell_knows("a\\\\"));
}

// --- Into a file
// ----------------------------------------------------------------------------------

std::string trace_of_echo(std::string text, const std::string& path) {
    reset_recorder();
    echo_into_file(text.data(), path.c_str());
    return recorded_trace();
}

TEST(ShellEcho, KnownBytesReplaceTheFile) {
    EXPECT_EQ(trace_of_echo(R"({\x41\tb})", "/user_data2/a-b_c.json"),
              "replace /user_data2/a-b_c.json {A\tb}\n");
    EXPECT_EQ(trace_of_echo("{}", "/d/\xc3\xa9t\xc3\xa9.json"),
              "replace /d/\xc3\xa9t\xc3\xa9.json {}\n");
}

TEST(ShellEcho, NulBytesReachTheFile) {
    EXPECT_EQ(trace_of_echo(R"(a\0b\x00)", "/f"), "replace /f " + bytes({'a', 0, 'b', 0}) + "\n");
}

TEST(ShellEcho, ATextThatOnlyTheShellKnowsGoesThroughItUnchanged) {
    EXPECT_EQ(trace_of_echo(R"(a\n$b)", "/f"), "shell echo -ne \"a\\n$b\" > /f\n");
    EXPECT_EQ(trace_of_echo("`id`%s%d", "/f"), "shell echo -ne \"`id`%s%d\" > /f\n");
    EXPECT_EQ(trace_of_echo("a\\", "/f"), "shell echo -ne \"a\\\" > /f\n");
}

TEST(ShellEcho, APathThatMeansMoreToTheShellGoesThroughIt) {
    for (int byte = 1; byte < 128; byte++) {
        const char c = static_cast<char>(byte);
        const bool plain = isalnum(byte) != 0 || c == '/' || c == '.' || c == '_' || c == '-';
        const std::string path = std::string("/d/a") + c + "b";
        EXPECT_EQ(trace_of_echo("{}", path),
                  plain ? "replace " + path + " {}\n" : "shell echo -ne \"{}\" > " + path + "\n")
            << byte;
    }
}

TEST(ShellEcho, AFileThatCannotBeWrittenKeepsItsContent) {
    reset_recorder();
    provide_file("/f", "old");
    refuse_writing("/f");
    std::string text = "new";
    echo_into_file(text.data(), "/f");
    EXPECT_EQ(recorded_trace(), "");
    EXPECT_EQ(file_content("/f"), "old");
}

void expect_whole(size_t length) {
    const std::string plain(length, 'x');
    ASSERT_EQ(trace_of_echo(plain, "/f"), "replace /f " + plain + "\n") << length;
    const std::string expanded = plain + "$";
    ASSERT_EQ(trace_of_echo(expanded, "/f"), "shell echo -ne \"" + expanded + "\" > /f\n")
        << length;
}

// The usual line buffer holds 2,048 bytes, a single exec argument 131,072, an upload 512,000.
TEST(ShellEcho, TextsOfEveryLengthAroundTheBuffersAreWhole) {
    for (size_t beside = 0; beside <= 40; beside++) {
        for (const size_t buffer : {size_t{40}, size_t{2048}, size_t{131072}}) {
            expect_whole(buffer - beside);
            expect_whole(buffer + beside);
        }
    }
    expect_whole(512000);
}

TEST(ShellEcho, EveryEscapeAtTheEndOfATextIsReadWithinIt) {
    for (const char* escape : {R"(\a)", R"(\\)", R"(\x)", R"(\x4)", R"(\x41)", R"(\0)", R"(\01)",
                               R"(\012)", R"(\0123)", R"(\3)", R"(\c)", R"(\q)", R"(\$)"}) {
        const std::string end = echoed(escape);
        for (size_t length = 0; length < 70; length++) {
            const std::string before(length, 'y');
            EXPECT_EQ(echoed(before + escape), before + end) << escape << " behind " << length;
        }
    }
}

// --- The stored form that is echoed
// ---------------------------------------------------------------

TEST(ShellEcho, AnUploadOfQuotesAloneIsStoredWhole) {
    for (const size_t count : {1U, 2U, 1023U, 1024U, 1025U, 2047U, 2048U, 2049U, 512000U}) {
        char* text = encode_list_text(std::string(count, '"').c_str(), LineBreaks::drop);
        ASSERT_NE(text, nullptr);
        std::string tags;
        for (size_t i = 0; i < count; i++) {
            tags += "TAG";
        }
        reset_recorder();
        echo_into_file(text, "/f");
        free(text);
        ASSERT_EQ(recorded_trace(), "replace /f " + tags + "\n") << count;
    }
}

}  // namespace
