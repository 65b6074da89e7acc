#include "device/list_text.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

std::string encoded(const std::string& json, LineBreaks line_breaks) {
    char* stored = encode_list_text(json.c_str(), line_breaks);
    std::string text = stored;
    free(stored);
    return text;
}

std::string decoded(const std::string& stored, LineBreaks line_breaks) {
    char* json = decode_list_text(stored.c_str(), line_breaks);
    std::string text = json;
    free(json);
    return text;
}

TEST(ListText, EveryDoubleQuoteBecomesTag) {
    EXPECT_EQ(encoded(R"({"a":"b"})", LineBreaks::keep), "{TAGaTAG:TAGbTAG}");
    EXPECT_EQ(encoded(R"("")", LineBreaks::drop), "TAGTAG");
    EXPECT_EQ(encoded(R"("a\"b")", LineBreaks::keep), R"(TAGa\TAGbTAG)");
    EXPECT_EQ(encoded("'a' \\ %s $x", LineBreaks::drop), "'a' \\ %s $x");
    EXPECT_EQ(encoded("", LineBreaks::drop), "");
}

TEST(ListText, EveryTagBecomesADoubleQuote) {
    EXPECT_EQ(decoded("{TAGaTAG:TAGbTAG}", LineBreaks::keep), R"({"a":"b"})");
    EXPECT_EQ(decoded("TAGTAG", LineBreaks::drop), R"("")");
    EXPECT_EQ(decoded("", LineBreaks::drop), "");
}

TEST(ListText, OnlyTheThreeCapitalLettersAreAQuote) {
    EXPECT_EQ(decoded("TA TAGTA tag Tag TAg T", LineBreaks::keep), "TA \"TA tag Tag TAg T");
    EXPECT_EQ(decoded("TTAG TATAG TAGAG", LineBreaks::keep), "T\" TA\" \"AG");
}

TEST(ListText, LineBreaksAndTabsAreDroppedOrKept) {
    const std::string json = "{\r\n\t\"a\":\t\"b\"\n}\r";
    EXPECT_EQ(encoded(json, LineBreaks::drop), "{TAGaTAG:TAGbTAG}");
    EXPECT_EQ(encoded(json, LineBreaks::keep), "{\r\n\tTAGaTAG:\tTAGbTAG\n}\r");
    EXPECT_EQ(decoded("{\r\n\tTAGaTAG:\t1\n}\r", LineBreaks::drop), "{\"a\":1}");
    EXPECT_EQ(decoded("{\r\n\tTAGaTAG:\t1\n}\r", LineBreaks::keep), "{\r\n\t\"a\":\t1\n}\r");
    EXPECT_EQ(encoded("a b\v\f\bc", LineBreaks::drop), "a b\v\f\bc");
}

TEST(ListText, DecodingGivesBackWhatWasEncoded) {
    const std::string json = R"({"data":[{"name":"a b","code":"0x0D\n"}],"":""})";
    EXPECT_EQ(decoded(encoded(json, LineBreaks::drop), LineBreaks::drop), json);
}

TEST(ListText, TextsOfNothingButQuotesAreWhole) {
    const std::string quotes(100000, '"');
    const std::string tags = encoded(quotes, LineBreaks::drop);
    EXPECT_EQ(tags.size(), 300000U);
    EXPECT_EQ(decoded(tags, LineBreaks::drop), quotes);
}

TEST(ListText, AWordThatALineBreakPartsIsAQuoteOnceTheBreakIsDropped) {
    char* dropped = decode_list_text("T\nAGaTA\r\tGTTAGAG", LineBreaks::drop);
    EXPECT_STREQ(dropped, "\"a\"T\"AG");
    free(dropped);
    char* kept = decode_list_text("T\nAGaTAG", LineBreaks::keep);
    EXPECT_STREQ(kept, "T\nAGa\"");
    free(kept);
}

}  // namespace
