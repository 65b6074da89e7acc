#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "tests/support/applying.h"
#include "tests/support/recorder.h"
#include "unitconf/sections.h"

namespace {

const char* const kept_list = "/user_data2/rs232_list.json";
const char* const working_list = "/var/tmp/rs232_list.json";

// The form in which lists are stored.
std::string stored(const std::string& json) {
    std::string text;
    for (const char byte : json) {
        text += byte == '"' ? std::string("TAG") : std::string(1, byte);
    }
    return text;
}

std::string line(const std::string& baud, const std::string& frame) {
    return "shell astparam s s0_baudrate " + baud + "-" + frame + ";lmparam s S0_BAUDRATE " + baud +
           "-" + frame + ";change_serial -f /dev/ttyS0 -b " + baud + ";\npause 1\n";
}

std::string merged(const std::string& json) {
    return "shell cp /user_data2/rs232_list.json /var/tmp/rs232_list.json\n"
           "write /var/tmp/rs232_list.json " +
           stored(json) +
           "\n"
           "shell cp /var/tmp/rs232_list.json /user_data2/rs232_list.json\n"
           "shell rm -rf /var/tmp/rs232_list.json\n";
}

std::string apply(const std::string& json) {
    return trace_of(apply_serial_section, json);
}

std::string setting(const std::string& members) {
    return "{\"setting\":{" + members + "}}";
}

// A kept list of which every member that the section can change holds something else, so that each
// change and each omission shows.
std::string list(const std::string& baud, const std::string& databit, const std::string& parity,
                 const std::string& stopbit, const std::string& ending, const std::string& format) {
    return R"({"data":{"setting":{"baud":)" + baud + R"(,"databit":)" + databit + R"(,"parity":)" +
           parity + R"(,"stopbit":)" + stopbit + R"(,"type":"9","ending":)" + ending +
           R"(,"format":)" + format + R"(},"userdefined":[]}})";
}

const std::string old_list = list("300", "5", "\"x\"", "7", "\"y\"", "\"z\"");

// Starts from a unit that keeps nothing but this list.
void keep_list(const std::string& json) {
    reset_recorder();
    provide_file(kept_list, stored(json));
}

class SerialSection : public testing::Test {
  protected:
    void SetUp() override {
        reset_recorder();
    }
};

// --- The port's line
// ------------------------------------------------------------------------------

TEST_F(SerialSection, WithNothingInItOnlyReadsThePresentValues) {
    for (const char* section : {"{}", "[]", "[{\"setting\":{}}]", "true", "null", "3", "\"x\"",
                                R"({"other":1})", R"({"data":{"setting":{}}})"}) {
        EXPECT_EQ(apply(section), snapshot_trace) << section;
    }
}

TEST_F(SerialSection, BaudAloneSetsTheLineOnceWithThePresentFrame) {
    set_lm_value("S0_BAUDRATE", "9600-8n1");
    EXPECT_EQ(apply(R"({"setting":{"baud":115200}})"),
              "shell cp /dev/shm/rwparam /dev/shm/rwparam_temp\n"
              "shell astparam s s0_baudrate 115200-8n1;lmparam s S0_BAUDRATE 115200-8n1;"
              "change_serial -f /dev/ttyS0 -b 115200;\n"
              "pause 1\n");
}

TEST_F(SerialSection, SettingOrUserDefinedOfAnyTypeSetsTheLineToThePresentValues) {
    set_lm_value("S0_BAUDRATE", "19200-7e2");
    for (const char* key : {"setting", "userdefined", "SETTING", "UserDefined"}) {
        for (const char* value : {"{}", "[]", "[1]", "true", "false", "null", "3", "\"x\""}) {
            const std::string section = std::string("{\"") + key + "\":" + value + "}";
            EXPECT_EQ(apply(section), snapshot_trace + line("19200", "7e2")) << section;
        }
    }
    EXPECT_EQ(apply(R"({"setting":{},"userdefined":[]})"), snapshot_trace + line("19200", "7e2"));
}

TEST_F(SerialSection, ThePresentLineIsTakenApartAtItsHyphens) {
    const struct {
        const char* present;
        const char* baud;
        const char* frame;
    } cases[] = {
        {"115200-8n1", "115200", "8n1"},
        {"115200", "115200", "8n1"},
        {"115200-", "115200", "8n1"},
        {"", "9600", "8n1"},
        {"-", "9600", "8n1"},
        {"--", "9600", "8n1"},
        {"-8n1", "8n1", "8n1"},
        {"4800--7o2", "4800", "7o2"},
        {"-4800-7o2-", "4800", "7o2"},
        {"4800-7o2-5s1", "4800", "7o2"},
        {"4800-7o", "4800", "7o"},
        {"4800-7", "4800", "7"},
        {"4800-7o25", "4800", "7o2"},
        {"1234567890123456789012345678901-7o2", "1234567890123456789012345678901", "7o2"},
        {"12345678901234567890123456789012-7o2", "1234567890123456789012345678901", "7o2"},
    };
    for (const auto& each : cases) {
        reset_recorder();
        set_lm_value("S0_BAUDRATE", each.present);
        EXPECT_EQ(apply(R"({"setting":{}})"), snapshot_trace + line(each.baud, each.frame))
            << each.present;
    }
}

TEST_F(SerialSection, WithoutAnyPresentValueTheUsualLineCounts) {
    EXPECT_EQ(apply(R"({"setting":{}})"), snapshot_trace + line("9600", "8n1"));
    set_lm_value("HOSTNAME", "unit");
    EXPECT_EQ(apply(R"({"setting":{}})"), snapshot_trace + line("9600", "8n1"));
}

TEST_F(SerialSection, WithoutTheLiveStoreTheValueThatSharesTheSlotCounts) {
    set_rw_value("fplock", "1");
    EXPECT_EQ(apply(R"({"setting":{}})"), snapshot_trace + line("1", "8n1"));
}

TEST_F(SerialSection, BaudDataBitsAndStopBitsAreNumbersOrTexts) {
    set_lm_value("S0_BAUDRATE", "9600-8n1");
    const struct {
        const char* value;
        const char* baud;
        const char* data_bits;
        const char* stop_bits;
    } cases[] = {
        {"7", "7", "7", "7"},
        {"0", "0", "0", "0"},
        {"-7", "-7", "-7", "-7"},
        {"1.9", "1", "1", "1"},
        {"1e12", "2147483647", "2147483647", "2147483647"},
        {"-1e12", "-2147483648", "-2147483648", "-2147483648"},
        {"\"38400\"", "38400", "38400", "38400"},
        {"\"a $b %s\"", "a $b %s", "a $b %s", "a $b %s"},
        {"\"\"", "", "", ""},
        {"\"123456789012345\"", "123456789012345", "123456789012345", "123456789012345"},
        {"\"1234567890123456\"", "1234567890123456", "123456789012345", "123456789012345"},
        {"\"1234567890123456789012345678901\"", "1234567890123456789012345678901",
         "123456789012345", "123456789012345"},
        {"\"12345678901234567890123456789012\"", "1234567890123456789012345678901",
         "123456789012345", "123456789012345"},
        {"true", "9600", "8", "1"},
        {"null", "9600", "8", "1"},
        {"[7]", "9600", "8", "1"},
        {"{}", "9600", "8", "1"},
    };
    for (const auto& each : cases) {
        const std::string value = each.value;
        EXPECT_EQ(apply(setting("\"baud\":" + value)), snapshot_trace + line(each.baud, "8n1"))
            << value;
        EXPECT_EQ(apply(setting("\"databit\":" + value)),
                  snapshot_trace + line("9600", std::string(each.data_bits) + "n1"))
            << value;
        EXPECT_EQ(apply(setting("\"stopbit\":" + value)),
                  snapshot_trace + line("9600", std::string("8n") + each.stop_bits))
            << value;
    }
}

TEST_F(SerialSection, KeysOfTheLineIgnoreCase) {
    EXPECT_EQ(
        apply(R"({"Setting":{"BAUD":4800,"DataBit":7,"Parity":"even","StopBit":2,"Ending":"cr"}})"),
        snapshot_trace + line("4800", "7e2") + line("4800", "7e2"));
}

TEST_F(SerialSection, ParityIsAWordOrThePresentLetter) {
    set_lm_value("S0_BAUDRATE", "9600-8x1");
    const struct {
        const char* parity;
        const char* letter;
    } cases[] = {
        {"\"none\"", "n"},  {"\"even\"", "e"}, {"\"odd\"", "o"}, {"\"mark\"", "m"},
        {"\"space\"", "s"}, {"\"None\"", "x"}, {"\"n\"", "x"},   {"\"\"", "x"},
        {"0", "x"},         {"true", "x"},     {"null", "x"},    {"[\"even\"]", "x"},
        {"{}", "x"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(apply(setting(std::string("\"parity\":") + each.parity)),
                  snapshot_trace + line("9600", std::string("8") + each.letter + "1"))
            << each.parity;
    }
}

// --- The list
// -------------------------------------------------------------------------------------

TEST_F(SerialSection, UserDefinedAloneSetsThePresentLineAndReplacesTheSlots) {
    set_lm_value("S0_BAUDRATE", "115200-7e2");
    provide_file(kept_list, stored(old_list));
    EXPECT_EQ(
        apply(R"({"userdefined":[{"name":"On","value":"ka 01\n"},{"x":[1,null,true]},"y"]})"),
        "shell cp /dev/shm/rwparam /dev/shm/rwparam_temp\n"
        "shell astparam s s0_baudrate 115200-7e2;lmparam s S0_BAUDRATE 115200-7e2;"
        "change_serial -f /dev/ttyS0 -b 115200;\n"
        "pause 1\n"
        "shell cp /user_data2/rs232_list.json /var/tmp/rs232_list.json\n"
        "write /var/tmp/rs232_list.json {TAGdataTAG:{TAGsettingTAG:{TAGbaudTAG:115200,"
        "TAGdatabitTAG:7,TAGparityTAG:TAGeTAG,TAGstopbitTAG:2,TAGtypeTAG:TAG9TAG,"
        "TAGendingTAG:TAGnullTAG,TAGformatTAG:TAGaTAG},TAGuserdefinedTAG:["
        "{TAGnameTAG:TAGOnTAG,TAGvalueTAG:TAGka 01\\nTAG},{TAGxTAG:[1,null,true]},TAGyTAG]}}\n"
        "shell cp /var/tmp/rs232_list.json /user_data2/rs232_list.json\n"
        "shell rm -rf /var/tmp/rs232_list.json\n");
}

TEST_F(SerialSection, AWholeSettingSetsLineAndListTwice) {
    set_lm_value("S0_BAUDRATE", "9600-8n1");
    provide_file(kept_list, stored(old_list));
    const std::string once =
        line("115200", "7e2") +
        merged(R"({"data":{"setting":{"baud":115200,"databit":7,"parity":"e","stopbit":2,)"
               R"("type":"2","ending":"CRLF","format":"h","mode1":false,"mode2":true},)"
               R"("userdefined":[{"name":"On"}]}})");
    EXPECT_EQ(apply(R"({"setting":{"baud":115200,"databit":7,"parity":"even","stopbit":2,)"
                    R"("format":"hex","ending":"crlf"},"userdefined":[{"name":"On"}]})"),
              snapshot_trace + once + once);
}

TEST_F(SerialSection, ALineThatChangesNothingIsSetAllTheSame) {
    set_lm_value("S0_BAUDRATE", "9600-8n1");
    EXPECT_EQ(apply(setting(R"("baud":9600,"databit":8,"parity":"none","stopbit":1)")),
              snapshot_trace + line("9600", "8n1"));
}

// In the second pass the list is still the one provided: the recorder runs no copy lines.
TEST_F(SerialSection, TheSecondPassTakesNumbersOnlyFromNumbers) {
    provide_file(kept_list, stored(old_list));
    EXPECT_EQ(apply(setting(R"("baud":"4800","databit":7,"stopbit":"2","parity":"odd",)"
                            R"("ending":"lf")")),
              snapshot_trace + line("4800", "7o2") +
                  merged(list("4800", "7", "\"o\"", "2", "\"LF\"", "\"a\"")) + line("4800", "7o2") +
                  merged(list("300", "7", "\"o\"", "7", "\"LF\"", "\"a\"")));
    EXPECT_EQ(apply(setting(R"("baud":-5,"databit":"8 ","stopbit":1.9,"parity":"odd",)"
                            R"("ending":"lf")")),
              snapshot_trace + line("-5", "8 o1") +
                  merged(list("300", "5", "\"o\"", "1", "\"LF\"", "\"a\"")) + line("-5", "8 o1") +
                  merged(list("-5", "5", "\"o\"", "1", "\"LF\"", "\"a\"")));
}

TEST_F(SerialSection, TheSecondPassTakesThePresentNumbersForItsLineButNotForTheList) {
    set_lm_value("S0_BAUDRATE", "19200-7e2");
    provide_file(kept_list, stored(old_list));
    EXPECT_EQ(apply(setting(R"("parity":"mark","ending":"null")")),
              snapshot_trace + line("19200", "7m2") +
                  merged(list("19200", "7", "\"m\"", "2", "\"NULL\"", "\"a\"")) +
                  line("19200", "7m2") +
                  merged(list("300", "5", "\"m\"", "7", "\"NULL\"", "\"a\"")));
}

TEST_F(SerialSection, AnUnknownParityIsThePresentLetterFirstAndEmptyInTheSecondPass) {
    set_lm_value("S0_BAUDRATE", "9600-8x1");
    provide_file(kept_list, stored(old_list));
    for (const char* parity : {"\"n\"", "\"EVEN\"", "\"\""}) {
        EXPECT_EQ(apply(setting(std::string(R"("ending":"cr","parity":)") + parity)),
                  snapshot_trace + line("9600", "8x1") +
                      merged(list("9600", "8", "\"x\"", "1", "\"CR\"", "\"a\"")) +
                      line("9600", "81") + merged(list("300", "5", "\"\"", "7", "\"CR\"", "\"a\"")))
            << parity;
    }
}

TEST_F(SerialSection, TheWordsOfParityReachTheListInBothPasses) {
    provide_file(kept_list, stored(old_list));
    const char* const words[][2] = {
        {"none", "n"}, {"even", "e"}, {"odd", "o"}, {"mark", "m"}, {"space", "s"}};
    for (const auto& [word, code] : words) {
        const std::string frame = std::string("8") + code + "1";
        const std::string in_list = std::string("\"") + code + "\"";
        EXPECT_EQ(apply(setting(std::string(R"("ending":"cr","parity":")") + word + "\"")),
                  snapshot_trace + line("9600", frame) +
                      merged(list("9600", "8", in_list, "1", "\"CR\"", "\"a\"")) +
                      line("9600", frame) +
                      merged(list("300", "5", in_list, "7", "\"CR\"", "\"a\"")))
            << word;
    }
}

TEST_F(SerialSection, OnlyAWholeSettingIsAppliedTwice) {
    const std::string whole = R"("baud":1,"databit":2,"stopbit":3,"parity":"odd","ending":"cr")";
    EXPECT_EQ(apply(setting(whole)), snapshot_trace + line("1", "2o3") + line("1", "2o3"));
    const struct {
        const char* members;
        const char* baud;
        const char* frame;
    } once[] = {
        {R"("baud":"","databit":2,"stopbit":3,"parity":"odd","ending":"cr")", "", "2o3"},
        {R"("baud":1,"databit":"","stopbit":3,"parity":"odd","ending":"cr")", "1", "o3"},
        {R"("baud":1,"databit":2,"stopbit":"","parity":"odd","ending":"cr")", "1", "2o"},
        {R"("baud":1,"databit":2,"stopbit":3,"ending":"cr")", "1", "2n3"},
        {R"("baud":1,"databit":2,"stopbit":3,"parity":4,"ending":"cr")", "1", "2n3"},
        {R"("baud":1,"databit":2,"stopbit":3,"parity":null,"ending":"cr")", "1", "2n3"},
        {R"("baud":1,"databit":2,"stopbit":3,"parity":"odd")", "1", "2o3"},
        {R"("baud":1,"databit":2,"stopbit":3,"parity":"odd","ending":"")", "1", "2o3"},
        {R"("baud":1,"databit":2,"stopbit":3,"parity":"odd","ending":1)", "1", "2o3"},
        {R"("baud":1,"databit":2,"stopbit":3,"parity":"odd","ending":null)", "1", "2o3"},
    };
    for (const auto& each : once) {
        EXPECT_EQ(apply(setting(each.members)), snapshot_trace + line(each.baud, each.frame))
            << each.members;
    }
}

TEST_F(SerialSection, AShortPresentFrameKeepsTheSecondPassAway) {
    set_lm_value("S0_BAUDRATE", "9600-8n");
    EXPECT_EQ(apply(setting(R"("parity":"odd","ending":"cr")")),
              snapshot_trace + line("9600", "8o"));
}

TEST_F(SerialSection, OnlyDigitTextsBecomeNumbersOfTheListAndStopAtTheLargestInteger) {
    const struct {
        const char* value;
        const char* in_line;
        const char* in_list;  // the old 300 where the text is no number
    } cases[] = {
        {"\"0\"", "0", "0"},
        {"\"0115200\"", "0115200", "115200"},
        {"\"2147483646\"", "2147483646", "2147483646"},
        {"\"2147483647\"", "2147483647", "2147483647"},
        {"\"2147483648\"", "2147483648", "2147483647"},
        {"\"9999999999999999999999999999999\"", "9999999999999999999999999999999", "2147483647"},
        {"1e12", "2147483647", "2147483647"},
        {"4800", "4800", "4800"},
        {"-4800", "-4800", "300"},
        {"\"\"", "", "300"},
        {"\" 4800\"", " 4800", "300"},
        {"\"4800 \"", "4800 ", "300"},
        {"\"+4800\"", "+4800", "300"},
        {"\"48x00\"", "48x00", "300"},
        {"\"4800.5\"", "4800.5", "300"},
    };
    for (const auto& each : cases) {
        keep_list(old_list);
        EXPECT_EQ(apply(setting(std::string("\"baud\":") + each.value)),
                  snapshot_trace + line(each.in_line, "8n1") +
                      merged(list(each.in_list, "8", "\"n\"", "1", "\"null\"", "\"a\"")))
            << each.value;
    }
}

TEST_F(SerialSection, DataAndStopBitsReachTheListLikeTheBaudRate) {
    keep_list(old_list);
    EXPECT_EQ(apply(setting(R"("databit":"7","stopbit":"99999999999")")),
              snapshot_trace + line("9600", "7n99999999999") +
                  merged(list("9600", "7", "\"n\"", "2147483647", "\"null\"", "\"a\"")));
    keep_list(old_list);
    EXPECT_EQ(apply(setting(R"("databit":"a","stopbit":"1.5")")),
              snapshot_trace + line("9600", "an1.5") +
                  merged(list("9600", "5", "\"n\"", "7", "\"null\"", "\"a\"")));
}

TEST_F(SerialSection, EndingsReachTheListByTheirWords) {
    const struct {
        const char* ending;
        const char* in_list;
        bool twice;
    } cases[] = {
        {"\"null\"", "\"NULL\"", true}, {"\"cr\"", "\"CR\"", true}, {"\"lf\"", "\"LF\"", true},
        {"\"crlf\"", "\"CRLF\"", true}, {"\"CR\"", "\"\"", true},   {"\"cr \"", "\"\"", true},
        {"\"\"", "\"\"", false},        {"1", "\"null\"", false},   {"null", "\"null\"", false},
        {"true", "\"null\"", false},    {"[]", "\"null\"", false},  {"{}", "\"null\"", false},
    };
    for (const auto& each : cases) {
        keep_list(old_list);
        const std::string first =
            line("9600", "8n1") + merged(list("9600", "8", "\"n\"", "1", each.in_list, "\"a\""));
        const std::string second =
            line("9600", "8n1") + merged(list("300", "5", "\"n\"", "7", each.in_list, "\"a\""));
        EXPECT_EQ(apply(setting(std::string(R"("parity":"none","ending":)") + each.ending)),
                  snapshot_trace + first + (each.twice ? second : ""))
            << each.ending;
    }
}

TEST_F(SerialSection, TheEndingOfTheWorkingCopyStandsInForAMissingOne) {
    const struct {
        const char* working;
        const char* in_list;
    } cases[] = {
        {R"({"data":{"setting":{"ending":"CRLF"}}})", "\"CRLF\""},
        {R"({"data":{"setting":{"ending":"any"}}})", "\"any\""},
        {R"({"data":{"setting":{"ending":""}}})", "\"\""},
        {R"({"data":{"setting":{"ending":"123456789012345"}}})", "\"123456789012345\""},
        {R"({"data":{"setting":{"ending":"1234567890123456"}}})", "\"123456789012345\""},
        {"{\"data\":\n\t{\"setting\":{\"ending\":\"LF\"}}}\r\n", "\"LF\""},
        {R"({"data":{"setting":{"ending":4}}})", "\"null\""},
        {R"({"data":{"setting":{"ending":null}}})", "\"null\""},
        {R"({"data":{"setting":{}}})", "\"null\""},
        {R"({"data":{"setting":[]}})", "\"null\""},
        {R"({"data":"no object"})", "\"null\""},
        {R"({"no data":true})", "\"null\""},
        {R"({"data":{"setting":{"ending":"CR")", "\"null\""},
        {"no JSON at all", "\"null\""},
        {"{\"data\":1", "\"null\""},
        {"{}", "\"null\""},
        {"", "\"null\""},
    };
    for (const auto& each : cases) {
        keep_list(old_list);
        provide_file(working_list, stored(each.working));
        EXPECT_EQ(apply(setting(R"("parity":"even")")),
                  snapshot_trace + line("9600", "8e1") +
                      merged(list("9600", "8", "\"e\"", "1", each.in_list, "\"a\"")))
            << each.working;
    }
}

TEST_F(SerialSection, TheDocumentsEndingComesBeforeThatOfTheWorkingCopy) {
    provide_file(kept_list, stored(old_list));
    provide_file(working_list, stored(R"({"data":{"setting":{"ending":"CRLF"}}})"));
    EXPECT_EQ(apply(setting(R"("ending":"cr")")),
              snapshot_trace + line("9600", "8n1") +
                  merged(list("9600", "8", "\"n\"", "1", "\"CR\"", "\"a\"")));
    provide_file(working_list, stored(R"({"data":{"setting":{"ending":"CRLF"}}})"));
    EXPECT_EQ(apply(setting(R"("ending":"other")")),
              snapshot_trace + line("9600", "8n1") +
                  merged(list("9600", "8", "\"n\"", "1", "\"\"", "\"a\"")));
}

TEST_F(SerialSection, AFormatTextSetsCodeTypeAndModes) {
    const struct {
        const char* format;
        const char* code;
        bool ascii;
    } cases[] = {
        {"ascii", "a", true}, {"hex", "h", false}, {"hex-ascii", "", true}, {"asciihex", "", true},
        {"ASCII", "", false}, {"asci", "", false}, {"as cii", "", false},   {"", "", false},
        {"other", "", false}, {"a", "", false},
    };
    for (const auto& each : cases) {
        keep_list(old_list);
        const std::string behind_parity =
            std::string(R"("type":")") + (each.ascii ? "1" : "2") +
            R"(","ending":"CR","format":")" + each.code +
            (each.ascii ? R"(","mode1":true,"mode2":false)" : R"(","mode1":false,"mode2":true)") +
            R"(},"userdefined":[]}})";
        EXPECT_EQ(
            apply(setting(std::string(R"("parity":"none","ending":"cr","format":")") + each.format +
                          "\"")),
            snapshot_trace + line("9600", "8n1") +
                merged(R"({"data":{"setting":{"baud":9600,"databit":8,"parity":"n","stopbit":1,)" +
                       behind_parity) +
                line("9600", "8n1") +
                merged(R"({"data":{"setting":{"baud":300,"databit":5,"parity":"n","stopbit":7,)" +
                       behind_parity))
            << each.format;
    }
}

TEST_F(SerialSection, AFormatThatIsNoTextCountsAsAsciiAndLeavesTypeAndModes) {
    for (const char* format : {"1", "true", "null", "[\"hex\"]", "{}"}) {
        keep_list(old_list);
        EXPECT_EQ(apply(setting(std::string("\"format\":") + format)),
                  snapshot_trace + line("9600", "8n1") +
                      merged(list("9600", "8", "\"n\"", "1", "\"null\"", "\"a\"")))
            << format;
    }
}

TEST_F(SerialSection, ModesAreSwitchedWhereTheyStandAndTheRestIsOnlyReplaced) {
    const struct {
        const char* before;
        const char* after;
    } cases[] = {
        {R"({"data":{"setting":{"mode2":true,"x":1,"mode1":false,"type":"2"}}})",
         R"({"data":{"setting":{"mode2":false,"x":1,"mode1":true,"type":"1"}}})"},
        {R"({"data":{"setting":{"mode1":"text","mode2":{"a":1}}}})",
         R"({"data":{"setting":{"mode1":true,"mode2":false}}})"},
        {R"({"data":{"setting":{"mode2":true}}})",
         R"({"data":{"setting":{"mode2":false,"mode1":true}}})"},
        {R"({"data":{"setting":{}}})", R"({"data":{"setting":{"mode1":true,"mode2":false}}})"},
        {R"({"data":{"setting":{"MODE1":1,"mode2":2,"TYPE":3}}})",
         R"({"data":{"setting":{"MODE1":1,"mode2":false,"type":"1","mode1":true}}})"},
    };
    for (const auto& each : cases) {
        keep_list(each.before);
        EXPECT_EQ(apply(R"({"setting":{"format":"ascii"},"userdefined":[1]})"),
                  snapshot_trace + line("9600", "8n1") + merged(each.after))
            << each.before;
    }
}

TEST_F(SerialSection, UserDefinedThatIsNoArrayLeavesTheSlots) {
    for (const char* slots : {"{}", "{\"a\":1}", "true", "null", "3", "\"x\""}) {
        keep_list(R"({"data":{"userdefined":[7]}})");
        EXPECT_EQ(apply(std::string("{\"userdefined\":") + slots + "}"),
                  snapshot_trace + line("9600", "8n1") + merged(R"({"data":{"userdefined":[7]}})"))
            << slots;
    }
}

TEST_F(SerialSection, AListWithoutASettingStillGetsItsSlots) {
    const struct {
        const char* before;
        const char* after;
    } cases[] = {
        {R"({"data":{"userdefined":[1,2]}})", R"({"data":{"userdefined":[]}})"},
        {R"({"data":{"userdefined":"x"}})", R"({"data":{"userdefined":[]}})"},
        {R"({"data":{"setting":[],"userdefined":[1]}})",
         R"({"data":{"setting":[],"userdefined":[]}})"},
        {R"({"data":{"setting":"x"}})", R"({"data":{"setting":"x"}})"},
        {R"({"data":{}})", R"({"data":{}})"},
        {R"({"data":[1]})", R"({"data":[1]})"},
        {R"({"a":1})", R"({"a":1})"},
        {"[]", "[]"},
        {"3", "3"},
    };
    for (const auto& each : cases) {
        keep_list(each.before);
        EXPECT_EQ(apply(R"({"setting":{"format":"ascii"},"userdefined":[]})"),
                  snapshot_trace + line("9600", "8n1") + merged(each.after))
            << each.before;
    }
}

TEST_F(SerialSection, WithoutAListOnlyTheLineIsSet) {
    EXPECT_EQ(apply(R"({"setting":{"baud":1},"userdefined":[]})"),
              snapshot_trace + line("1", "8n1"));
}

TEST_F(SerialSection, AnEmptyListIsReplacedByTheDefaultWithTheSectionMergedIn) {
    for (const char* empty : {"", "\r\n", "\t\n\r\t"}) {
        reset_recorder();
        provide_file(kept_list, empty);
        EXPECT_EQ(
            apply(setting(R"("baud":115200,"parity":"even")")),
            snapshot_trace + line("115200", "8e1") +
                merged(R"({"data":{"setting":{"baud":115200,"databit":8,"parity":"e","stopbit":1,)"
                       R"("type":"1","ending":"null","mode1":true,"mode2":false},)"
                       R"("userdefined":[{"name":"User-defined 1","value":""},)"
                       R"({"name":"User-defined 2","value":""},)"
                       R"({"name":"User-defined 3","value":""},)"
                       R"({"name":"User-defined 4","value":""},)"
                       R"({"name":"User-defined 5","value":""}]}})"));
    }
}

TEST_F(SerialSection, ADefaultListTakesHexAndItsSlots) {
    provide_file(kept_list, "");
    const std::string setting_of_the_list =
        R"({"data":{"setting":{"baud":9600,"databit":8,"parity":"s","stopbit":1,"type":"2",)"
        R"("ending":"LF","mode1":false,"mode2":true},"userdefined":[{"name":"a","value":"b"}]}})";
    // The recorder's kept list stays empty, so the second pass starts from the default again.
    EXPECT_EQ(apply(R"({"setting":{"parity":"space","ending":"lf","format":"hex"},)"
                    R"("userdefined":[{"name":"a","value":"b"}]})"),
              snapshot_trace + line("9600", "8s1") + merged(setting_of_the_list) +
                  line("9600", "8s1") + merged(setting_of_the_list));
}

TEST_F(SerialSection, AListThatIsNotJsonIsLeftAlone) {
    for (const char* text : {" ", "no JSON", "{TAGdataTAG:{TAGsettingTAG:", "{\"data\":{]"}) {
        reset_recorder();
        provide_file(kept_list, text);
        EXPECT_EQ(apply(R"({"setting":{"baud":1},"userdefined":[]})"),
                  snapshot_trace + line("1", "8n1"))
            << text;
        EXPECT_EQ(file_content(kept_list), text);
    }
}

TEST_F(SerialSection, ControlCharactersInTheListAreDropped) {
    provide_file(kept_list, stored("{\"data\":\r\n\t{\"user\tdefined\":\n[1, 2]}}\r\n"));
    EXPECT_EQ(apply(R"({"userdefined":[3]})"),
              snapshot_trace + line("9600", "8n1") + merged(R"({"data":{"userdefined":[3]}})"));
}

TEST_F(SerialSection, WhenTheWorkingCopyCannotBeOpenedTheListStays) {
    provide_file(kept_list, stored(old_list));
    refuse_writing(working_list);
    const std::string once =
        line("9600", "8n1") + "shell cp /user_data2/rs232_list.json /var/tmp/rs232_list.json\n";
    EXPECT_EQ(apply(setting(R"("parity":"none","ending":"cr")")), snapshot_trace + once + once);
    EXPECT_EQ(file_content(kept_list), stored(old_list));
}

TEST_F(SerialSection, LongSlotsAreStoredWhole) {
    provide_file(kept_list, stored(R"({"data":{"userdefined":[]}})"));
    const std::string value(300000, 'v');
    EXPECT_EQ(apply("{\"userdefined\":[\"" + value + "\"]}"),
              snapshot_trace + line("9600", "8n1") +
                  merged("{\"data\":{\"userdefined\":[\"" + value + "\"]}}"));
}

// --- Tunnelling and pass-through
// -------------------------------------------------------------------

TEST_F(SerialSection, TunnellingFollowsTheLineInItsOrder) {
    EXPECT_EQ(apply(R"({"setting":{"ip_ssh_tunnel":true,"ip_tunnel":true}})"),
              snapshot_trace + line("9600", "8n1") +
                  "shell astparam s ip_rs232_tunneling 1;e e_chg_ip_rs232_tunneling\n"
                  "pause 1\n"
                  "shell astparam s ip_ssh_rs232_tunneling 1;e e_chg_ip_ssh_rs232_tunneling\n"
                  "pause 1\n");
    EXPECT_EQ(apply(R"({"setting":{"ip_tunnel":false,"ip_ssh_tunnel":false}})"),
              snapshot_trace + line("9600", "8n1") +
                  "shell astparam s ip_rs232_tunneling 0;e e_chg_ip_rs232_tunneling\n"
                  "pause 1\n"
                  "shell astparam s ip_ssh_rs232_tunneling 0;e e_chg_ip_ssh_rs232_tunneling\n"
                  "pause 1\n");
}

TEST_F(SerialSection, TunnellingNeedsBooleansOfTheExactKeyInTheSetting) {
    for (const char* value : {"null", "0", "1", "\"true\"", "\"\"", "[]", "{}"}) {
        for (const char* key : {"ip_tunnel", "ip_ssh_tunnel"}) {
            EXPECT_EQ(apply(setting(std::string("\"") + key + "\":" + value)),
                      snapshot_trace + line("9600", "8n1"))
                << key << " " << value;
        }
    }
    EXPECT_EQ(apply(R"({"setting":{"IP_tunnel":true,"ip_SSH_tunnel":true}})"),
              snapshot_trace + line("9600", "8n1"));
    EXPECT_EQ(apply(R"({"ip_tunnel":true,"ip_ssh_tunnel":true,"userdefined":[]})"),
              snapshot_trace + line("9600", "8n1"));
}

TEST_F(SerialSection, PassThroughTakesAddressThenSwitch) {
    EXPECT_EQ(apply(R"({"serial_pass":{"enable":true,"serial_pass_ip_address":"10.0.0.2"}})"),
              snapshot_trace +
                  "shell astparam s serial_unit_conn 10.0.0.2;\n"
                  "shell astparam s serial_pass_enable 1;e e_serial_pass 1\n"
                  "pause 1\n");
    EXPECT_EQ(apply(R"({"serial_pass":{"enable":false}})"),
              snapshot_trace +
                  "shell astparam s serial_pass_enable 0;e e_serial_pass 0\n"
                  "pause 1\n");
    EXPECT_EQ(apply(R"({"Serial_Pass":{"Serial_Pass_IP_Address":"%s %d $x"}})"),
              snapshot_trace + "shell astparam s serial_unit_conn %s %d $x;\n");
}

TEST_F(SerialSection, PassThroughPassesOverWhatItCannotUse) {
    for (const char* pass : {"true", "null", "3", "\"x\"", "[]", "{}", R"({"Enable":true})",
                             R"({"serial_pass_ip_address":""})"}) {
        EXPECT_EQ(apply(std::string("{\"serial_pass\":") + pass + "}"), snapshot_trace) << pass;
    }
    for (const char* value : {"null", "0", "1", "\"true\"", "[]", "{}"}) {
        EXPECT_EQ(apply(std::string(R"({"serial_pass":{"enable":)") + value + "}}"), snapshot_trace)
            << value;
    }
    for (const char* value : {"null", "0", "true", "[]", "{}"}) {
        EXPECT_EQ(apply(std::string(R"({"serial_pass":{"serial_pass_ip_address":)") + value + "}}"),
                  snapshot_trace)
            << value;
    }
}

// --- A whole document
// -----------------------------------------------------------------------------

TEST_F(SerialSection, TheExampleOfADecoderIsAppliedWhole) {
    std::ifstream file(EXAMPLES_DIR "/unit-configuration.ZAVO-DEC-D200-DA.json");
    std::ostringstream text;
    text << file.rdbuf();
    cJSON* document = cJSON_Parse(text.str().c_str());
    set_lm_value("S0_BAUDRATE", "9600-8n1");
    provide_file(kept_list, "");
    apply_serial_section(cJSON_GetObjectItem(document, "serial"));
    cJSON_Delete(document);

    const std::string once =
        line("115200", "8n1") +
        merged(R"({"data":{"setting":{"baud":115200,"databit":8,"parity":"n","stopbit":1,)"
               R"("type":"1","ending":"CR","mode1":true,"mode2":false},"userdefined":[)"
               R"({"name":"Display on","value":"ka 01 01"},)"
               R"({"name":"Display off","value":"ka 01 00"},)"
               R"({"name":"Display input HDMI 1","value":"xb 01 90"},)"
               R"({"name":"Display mute","value":"ke 01 00"},)"
               R"({"name":"User-defined 5","value":""}]}})");
    EXPECT_EQ(recorded_trace(), snapshot_trace + once + once +
                                    "shell astparam s ip_rs232_tunneling 0;"
                                    "e e_chg_ip_rs232_tunneling\n"
                                    "pause 1\n"
                                    "shell astparam s ip_ssh_rs232_tunneling 0;"
                                    "e e_chg_ip_ssh_rs232_tunneling\n"
                                    "pause 1\n"
                                    "shell astparam s serial_unit_conn 10.20.20.11;\n"
                                    "shell astparam s serial_pass_enable 1;e e_serial_pass 1\n"
                                    "pause 1\n");
}

}  // namespace
