// Recognising an upload and cutting out its content, against the rules stated plainly: one search
// of the whole text for each pattern, in the order of precedence.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "cgi/body.h"
#include "cgi/upload_kinds.h"

namespace {

const std::vector<std::string> fields = {
    " name=\"Rs232CodeUpload\"",       " name=\"IRCodeUpload\"", " name=\"UnitConfUpload\"",
    " name=\"TriggerCommandsUpload\"", "name=getCaEncryptData",  " name=\"VideoWallUpload\"",
    " name=\"CustomEdidFile\"",
};

const std::vector<std::string> headers = {
    "Content-Type: text/plain\r\n\r\n",
    "Content-Type: application/octet-stream\r\n\r\n",
    "Content-Type: image/png\r\n\r\n",
    "Content-Type: multipart/form-data\r\n\r\n",
    "Content-Type: multipart/form-data\n\r\n",
    "Content-Type: application/json\r\n",
    "Content-Type:",
    "Content-Disposition: ",
};

constexpr size_t nowhere = std::string::npos;

// --- The rules, plainly --------------------------------------------------------------------------

std::string text_of(const std::string& request) {
    return request.substr(0, request.find('\0'));
}

std::string plain_field(const std::string& request) {
    const std::string text = text_of(request);
    for (const std::string& field : fields) {
        if (memmem(text.data(), text.size(), field.data(), field.size()) != nullptr) {
            return field;
        }
    }
    return "";
}

size_t place_behind(const std::string& text, const std::string& wanted) {
    const void* found = memmem(text.data(), text.size(), wanted.data(), wanted.size());
    return found == nullptr
               ? nowhere
               : static_cast<size_t>(static_cast<const char*>(found) - text.data()) + wanted.size();
}

size_t plain_start(const std::string& text) {
    for (size_t rule = 0; rule < 3; rule++) {
        if (place_behind(text, headers[rule]) != nowhere) {
            return place_behind(text, headers[rule]);
        }
    }
    if (place_behind(text, headers[3]) != nowhere) {
        return place_behind(text, headers[4]);
    }
    if (place_behind(text, "Content-Type:") != nowhere ||
        place_behind(text, "Content-Disposition: ") != nowhere) {
        return place_behind(text, "\r\n\r\n");
    }
    return 0;
}

// What a test sees of a content: whether there is one, and then its bytes or that it is too long.
std::string described(const char* begin, size_t length, size_t most) {
    if (begin == nullptr) {
        return "no content";
    }
    return length > most ? "too long" : "content:" + std::string(begin, length);
}

std::string plain_content(const std::string& request, size_t most) {
    const std::string text = text_of(request);
    const size_t start = plain_start(text);
    if (start == nowhere) {
        return described(nullptr, 0, most);
    }
    const size_t end = std::min(text.find("\r\n----", start), text.size());
    return described(text.data() + start, end - start, most);
}

// --- What the gateway does -----------------------------------------------------------------------

// The request stands in memory of exactly its size, so that a step too far is seen by the
// sanitizers.
std::unique_ptr<char[]> bytes_of(const std::string& request) {
    std::unique_ptr<char[]> bytes(new char[request.size()]);
    std::copy(request.begin(), request.end(), bytes.get());
    return bytes;
}

// The dispatcher shows only what stands before the first NUL.
std::string found_field(const std::string& request) {
    const std::string text = text_of(request);
    const std::unique_ptr<char[]> bytes = bytes_of(text);
    const UploadKind* kind =
        find_first_row(bytes.get(), bytes.get() + text.size(), upload_kinds).row;
    return kind == nullptr ? "" : kind->pattern.text;
}

std::string found_content(const std::string& request, size_t most) {
    const std::string text = text_of(request);
    const std::unique_ptr<char[]> bytes = bytes_of(text);
    const Content content = find_content(bytes.get(), text.size(), most);
    return described(content.begin, content.length, most);
}

// --- Random texts --------------------------------------------------------------------------------

using Random = std::mt19937;

size_t below(Random& random, size_t limit) {
    return std::uniform_int_distribution<size_t>(0, limit - 1)(random);
}

// Whole patterns, patterns cut at either end, and what stands between them.
std::string random_piece(Random& random) {
    static const std::vector<std::string> between = {
        "\r\n",  "\r\n\r\n", "\n",   "-",  "--",    "----",     "\r\n---", "\r\n----",
        "=",     "name=",    "\"",   " ",  "{}",    "Content-", ":",       "text",
        "== =-", "Content",  "\r\r", "-=", " name", "abc",      "\r",      std::string(1, '\0')};
    switch (below(random, 8)) {
        case 0:
            return fields[below(random, fields.size())];
        case 1:
        case 2:
            return headers[below(random, headers.size())];
        case 3: {
            const std::string& whole = below(random, 2) == 0
                                           ? fields[below(random, fields.size())]
                                           : headers[below(random, headers.size())];
            const size_t cut = below(random, whole.size());
            return below(random, 2) == 0 ? whole.substr(cut) : whole.substr(0, cut);
        }
        default: {
            // A NUL ends what is seen, so it comes seldom.
            const size_t last = below(random, 8) == 0 ? between.size() : between.size() - 1;
            return between[below(random, last)];
        }
    }
}

std::string random_request(Random& random) {
    std::string request;
    for (size_t pieces = below(random, 16); pieces > 0; pieces--) {
        request += random_piece(random);
    }
    return request;
}

constexpr int rounds = 100000;

TEST(Recognising, RandomTextsHaveTheFieldThatThePlainRulesFind) {
    Random random(1);
    std::vector<size_t> times(fields.size() + 1);
    for (int round = 0; round < rounds; round++) {
        const std::string request = random_request(random);
        const std::string expected = plain_field(request);
        ASSERT_EQ(found_field(request), expected) << testing::PrintToString(request);
        const auto place = std::find(fields.begin(), fields.end(), expected);
        times[static_cast<size_t>(place - fields.begin())]++;
    }
    // The texts are worth something: every field decided often, and often there was none.
    EXPECT_GT(*std::min_element(times.begin(), times.end()), 1000u);
}

TEST(Recognising, RandomTextsHaveTheContentThatThePlainRulesCut) {
    Random random(2);
    int none = 0;
    int too_long = 0;
    for (int round = 0; round < rounds; round++) {
        const std::string request = random_request(random);
        const size_t most = below(random, 60);
        const std::string expected = plain_content(request, most);
        ASSERT_EQ(found_content(request, most), expected)
            << testing::PrintToString(request) << " at most " << most;
        none += expected == "no content" ? 1 : 0;
        too_long += expected == "too long" ? 1 : 0;
    }
    EXPECT_GT(none, 1000);
    EXPECT_GT(too_long, 1000);
    EXPECT_LT(none + too_long, rounds - 10000);
}

// --- Single rules --------------------------------------------------------------------------------

TEST(Recognising, TheOrderOfTheTableDecidesWhateverTheOrderInTheText) {
    for (size_t first = 0; first < fields.size(); first++) {
        for (size_t second = 0; second < fields.size(); second++) {
            EXPECT_EQ(found_field(fields[first] + "; " + fields[second]),
                      fields[std::min(first, second)]);
        }
    }
}

TEST(Recognising, AFieldAtEitherEndOfTheTextIsFound) {
    for (const std::string& field : fields) {
        EXPECT_EQ(found_field(field), field);
        EXPECT_EQ(found_field(field.substr(1)), "");
        EXPECT_EQ(found_field(field.substr(0, field.size() - 1)), "");
    }
}

TEST(Recognising, NothingBehindTheFirstNulIsSeen) {
    const std::string nul(1, '\0');
    EXPECT_EQ(found_field(fields[2] + nul + fields[0]), fields[2]);
    EXPECT_EQ(found_field(nul + fields[0]), "");
    EXPECT_EQ(found_field(fields[0].substr(0, 8) + nul + fields[0].substr(8)), "");
    EXPECT_EQ(found_content("Content-Type: \r\n\r\nabc" + nul + headers[0] + "def", 100),
              "content:abc");
    EXPECT_EQ(found_content("Content-Type: " + nul + "\r\n\r\nabc", 100), "no content");
}

TEST(Recognising, AMultipartTypeIsKnownInOneSpellingAndStartsInTheOther) {
    EXPECT_EQ(found_content(headers[3] + "abc", 100), "no content");
    EXPECT_EQ(found_content(headers[3] + "abc" + headers[4] + "def", 100), "content:def");
    EXPECT_EQ(found_content(headers[4] + "abc", 100), "no content");
    EXPECT_EQ(found_content(headers[4] + "abc\r\n\r\ndef", 100), "content:def");
}

TEST(Recognising, AContentIsTooLongByItsFirstByteTooMany) {
    EXPECT_EQ(found_content("12345\r\n----", 5), "content:12345");
    EXPECT_EQ(found_content("12345", 5), "content:12345");
    EXPECT_EQ(found_content("123456\r\n----", 5), "too long");
    EXPECT_EQ(found_content("123456", 5), "too long");
}

}  // namespace
