#include "device/answer.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

const std::string mark = "printf \":mcu_end\" | nc -w 3 127.0.0.1 4445";

bool complete_after(const std::vector<std::string>& pieces) {
    AnswerProgress answer = {};
    for (const std::string& piece : pieces) {
        follow_answer(&answer, piece.data(), piece.size());
    }
    return answer.complete;
}

bool completes(const std::string& text) {
    return complete_after({text});
}

// The bytes that the answer is complete after, found byte by byte; 0 when it never is.
size_t completing_length(const std::string& text) {
    AnswerProgress answer = {};
    for (size_t i = 0; i < text.size(); i++) {
        follow_answer(&answer, &text[i], 1);
        if (answer.complete) {
            return i + 1;
        }
    }
    return 0;
}

// Completeness said plainly: the first mark, CR LF right behind it, and five bytes more.
bool plainly_complete(const std::string& received) {
    const size_t at = received.find(mark);
    return at != std::string::npos && received.size() >= at + 49 && received[at + 42] == '\r' &&
           received[at + 43] == '\n';
}

TEST(Answer, TheMarkHas42Characters) {
    EXPECT_EQ(mark.size(), 42U);
}

TEST(Answer, TheMarkNeedsItsLineEndAndFiveBytesMore) {
    EXPECT_TRUE(completes(mark + "\r\n12345"));
    EXPECT_TRUE(completes(mark + "\r\n123456789"));
    EXPECT_TRUE(completes("fanspeed,1\r\nok\r\n" + mark + "\r\n# \r\n\r"));
    EXPECT_FALSE(completes(mark + "\r\n1234"));
    EXPECT_FALSE(completes(mark + "\r\n"));
    EXPECT_FALSE(completes(mark));
    EXPECT_FALSE(completes(mark.substr(0, 41)));
    EXPECT_FALSE(completes(""));
    EXPECT_FALSE(completes("fanspeed,1\r\n"));
}

TEST(Answer, OnlyTheFirstMarkCounts) {
    EXPECT_FALSE(completes(mark + "\n\r12345"));
    EXPECT_FALSE(completes(mark + "\r\r12345"));
    EXPECT_FALSE(completes(mark + " \r\n12345"));
    EXPECT_FALSE(completes(mark + "x" + mark + "\r\n12345"));
    EXPECT_FALSE(completes(mark + mark + "\r\n12345"));
    EXPECT_TRUE(completes(mark + "\r\n" + mark + "\r\n12345"));
}

TEST(Answer, AnInterruptedMarkMayBeginAnew) {
    EXPECT_TRUE(completes("p" + mark + "\r\n12345"));
    EXPECT_TRUE(completes("pri" + mark + "\r\n12345"));
    EXPECT_TRUE(completes(mark.substr(0, 41) + mark + "\r\n12345"));
    EXPECT_FALSE(completes(mark.substr(0, 20) + "x" + mark.substr(20) + "\r\n12345"));
}

TEST(Answer, AMarkWithAnotherCharacterInItIsNone) {
    const std::string whole = mark + "\r\n12345";
    for (size_t at = 0; at < mark.size(); at++) {
        std::string changed = whole;
        changed[at] = '?';
        EXPECT_FALSE(completes(changed)) << changed;
    }
}

TEST(Answer, BytesOfAnyValueMayStandAroundTheMark) {
    std::string bytes;
    for (int byte = 0; byte < 256; byte++) {
        bytes += static_cast<char>(byte);
    }
    EXPECT_TRUE(completes(bytes + mark + "\r\n" + std::string(5, '\0')));
    EXPECT_TRUE(completes(bytes + bytes + mark + "\r\n" + bytes));
}

TEST(Answer, TheAnswerMayBeCutAtEverySplit) {
    const std::string whole = "setzavostreama,1\r\npri\r\n" + mark + "\r\n12345";
    for (size_t first = 0; first <= whole.size(); first++) {
        EXPECT_TRUE(complete_after({whole.substr(0, first), whole.substr(first)})) << first;
        EXPECT_EQ(completes(whole.substr(0, first)), first == whole.size()) << first;
        for (size_t second = first; second <= whole.size(); second++) {
            EXPECT_TRUE(complete_after({whole.substr(0, first), whole.substr(first, second - first),
                                        whole.substr(second)}))
                << first << ", " << second;
        }
    }
    EXPECT_EQ(completing_length(whole + "more"), whole.size());
}

TEST(Answer, ACompleteAnswerStaysComplete) {
    EXPECT_TRUE(complete_after({mark + "\r\n12345", "", "more", mark}));
}

TEST(Answer, RandomAnswersAreCompleteWhenTheRuleSaysSo) {
    std::mt19937 random(7);
    const auto below = [&](size_t count) { return random() % count; };
    const std::vector<std::string> pieces = {mark, mark, "\r\n",  "\r\n", "\r",
                                             "\n", "p",  "12345", "x",    mark.substr(0, 30)};
    int complete = 0;
    for (int round = 0; round < 20000; round++) {
        std::string received;
        AnswerProgress answer = {};
        for (size_t count = below(8); count > 0; count--) {
            const std::string& piece = pieces[below(pieces.size())];
            received += piece;
            follow_answer(&answer, piece.data(), piece.size());
            ASSERT_EQ(answer.complete, plainly_complete(received)) << received;
        }
        complete += answer.complete ? 1 : 0;
    }
    EXPECT_GT(complete, 100);
}

}  // namespace
