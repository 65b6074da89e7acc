#include "cgi/body.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr size_t plenty = 1000000;

std::string content_of(const std::string& text, size_t most = plenty) {
    const Content content = find_content(text.data(), text.size(), most);
    return content.begin == nullptr ? "no content" : std::string(content.begin, content.length);
}

const std::string disposition =
    "Content-Disposition: form-data; name=\"UnitConfUpload\"; filename=\"a.json\"\r\n";

// --- Where the content starts --------------------------------------------------------------------

TEST(Body, ContentStartsRightBehindThreeTypes) {
    for (const char* type : {"text/plain", "application/octet-stream", "image/png"}) {
        EXPECT_EQ(content_of("------b\r\n" + disposition + "Content-Type: " + type +
                             "\r\n\r\n{}\r\n------b--\r\n"),
                  "{}")
            << type;
    }
}

TEST(Body, OfSeveralTypesTheFirstRuleDecidesAndNotTheFirstPart) {
    const std::string png = "Content-Type: image/png\r\n\r\npng ";
    const std::string octets = "Content-Type: application/octet-stream\r\n\r\noctets ";
    const std::string plain = "Content-Type: text/plain\r\n\r\nplain ";
    EXPECT_EQ(content_of(png + octets + plain), "plain ");
    EXPECT_EQ(content_of(png + octets), "octets ");
    EXPECT_EQ(content_of(octets + png), "octets " + png);
    EXPECT_EQ(content_of(png + png), "png " + png);
}

TEST(Body, AMultipartTypeStartsOnlyBehindItsBareLineFeed) {
    const std::string in_line_ends = "Content-Type: multipart/form-data\r\n\r\nfirst ";
    const std::string bare = "Content-Type: multipart/form-data\n\r\nsecond ";
    EXPECT_EQ(content_of(in_line_ends), "no content");
    EXPECT_EQ(content_of(in_line_ends + bare), "second ");
    EXPECT_EQ(content_of(bare + in_line_ends), "second " + in_line_ends);
}

TEST(Body, AMultipartTypeWithoutTheTriggerIsAnyOtherType) {
    EXPECT_EQ(content_of("Content-Type: multipart/form-data\n\r\nsecond\r\n\r\nthird"), "third");
}

TEST(Body, BehindAnyOtherTypeTheContentStartsAtTheFirstEmptyLine) {
    EXPECT_EQ(content_of("------b\r\n" + disposition +
                         "Content-Type: application/json\r\n\r\n{}\r\n------b--"),
              "{}");
    EXPECT_EQ(content_of("first\r\n\r\nsecond\r\n\r\nContent-Type:x"),
              "second\r\n\r\nContent-Type:x");
    EXPECT_EQ(content_of("Content-Type: text/plain; charset=utf-8\r\n\r\n{}"), "{}");
    EXPECT_EQ(content_of("content-type: text/plain\r\n\r\nContent-Type:"), "Content-Type:");
}

TEST(Body, ATypeWithoutAnEmptyLineHasNoContent) {
    EXPECT_EQ(content_of("Content-Type: application/json\r\n{}\n\n{}"), "no content");
    EXPECT_EQ(content_of("Content-Type:"), "no content");
}

TEST(Body, BehindADispositionTheContentStartsAtTheFirstEmptyLine) {
    EXPECT_EQ(content_of("------b\r\n" + disposition + "\r\n{}\r\n------b--"), "{}");
    EXPECT_EQ(content_of(disposition), "no content");
}

TEST(Body, ADispositionNeedsItsBlank) {
    EXPECT_EQ(content_of("Content-Disposition:form-data\r\n\r\n{}"),
              "Content-Disposition:form-data\r\n\r\n{}");
}

TEST(Body, ATextWithoutHeadersIsContentFromItsFirstByte) {
    EXPECT_EQ(content_of(" name=\"UnitConfUpload\"\r\n\r\n{}"),
              " name=\"UnitConfUpload\"\r\n\r\n{}");
    EXPECT_EQ(content_of(""), "");
}

// --- Where it ends -------------------------------------------------------------------------------

TEST(Body, ContentEndsAtALineEndAndFourHyphens) {
    EXPECT_EQ(content_of("one\r\n----two\r\n----"), "one");
    EXPECT_EQ(content_of("one\r\n---two\n----three\r----four"),
              "one\r\n---two\n----three\r----four");
    EXPECT_EQ(content_of("\r\n----"), "");
    EXPECT_EQ(content_of("one\r\n\r\n----"), "one\r\n");
    EXPECT_EQ(content_of("one\r\n---"), "one\r\n---");
}

TEST(Body, AnEndBeforeTheStartIsNotSeen) {
    EXPECT_EQ(content_of("\r\n----b\r\nContent-Type: text/plain\r\n\r\n{}"), "{}");
}

TEST(Body, WithoutAnEndTheContentGoesToTheEndOfTheText) {
    EXPECT_EQ(content_of("Content-Type: text/plain\r\n\r\n{\"a\":1}"), "{\"a\":1}");
    EXPECT_EQ(content_of("Content-Type: text/plain\r\n\r\n"), "");
}

TEST(Body, OnlyTheGivenBytesAreLookedAt) {
    const std::string text = "Content-Type: text/plain\r\n\r\n{}\r\n----";
    for (size_t length = 0; length <= text.size(); length++) {
        const std::string part = text.substr(0, length);
        const Content content = find_content(text.data(), length, plenty);
        const std::string found =
            content.begin == nullptr ? "no content" : std::string(content.begin, content.length);
        EXPECT_EQ(found, content_of(part)) << length;
    }
}

TEST(Body, AContentOfTheMostBytesEndsBehindThem) {
    for (const size_t length : {size_t{0}, size_t{1}, size_t{9}, size_t{10}}) {
        const std::string content(length, 'x');
        EXPECT_EQ(content_of(content + "\r\n----b", 10), content);
    }
}

TEST(Body, ALongerContentIsKnownByItsLength) {
    for (const char* end : {"", "\r\n----b"}) {
        for (const size_t length : {size_t{11}, size_t{12}, size_t{16}, size_t{17}, size_t{5000}}) {
            const std::string text = std::string(length, 'x') + end;
            const Content content = find_content(text.data(), text.size(), 10);
            EXPECT_GT(content.length, 10U) << length << end;
        }
    }
}

}  // namespace
