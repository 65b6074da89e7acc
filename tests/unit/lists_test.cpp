#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "cgi/uploads.h"
#include "tests/support/outcome.h"
#include "tests/support/recorder.h"

namespace {

Outcome store(int (*handler)(const char*), const std::string& content) {
    reset_recorder();
    const int result = handler(content.c_str());
    return {result, recorded_trace()};
}

Outcome refused() {
    return {0, ""};
}

std::string example(const std::string& name) {
    std::ifstream file(std::string(EXAMPLES_DIR) + "/" + name);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

// A file without its line ends and tabs and with TAG for each double quote.
std::string stored_form(const std::string& json) {
    std::string stored;
    for (const char c : json) {
        if (c == '"') {
            stored += "TAG";
        } else if (c != '\r' && c != '\n' && c != '\t') {
            stored += c;
        }
    }
    return stored;
}

// Every JSON value that is no object, and what is not JSON at all.
const char* const no_objects[] = {"[]", "[1,2]", "true", "null", "3", "\"data\""};
const char* const no_json[] = {"", " ", "x", "{", "{\"data\":", "{\"data\":{\"setting\":}}"};

// --- RS-232 --------------------------------------------------------------------------------------

std::string rs232_trace(const std::string& stored) {
    return "replace /user_data2/rs232_list.json " + stored +
           "\nshell cp /user_data2/rs232_list.json /var/tmp/rs232_list.json\n";
}

TEST(Rs232List, IsStoredAsUploadedWithTagsForQuotesAndWithoutLineBreaks) {
    EXPECT_EQ(store(store_rs232_list, "{\"data\":\r\n\t{\"setting\" : {}, \"x\": \"a\tb\"}}\n"),
              (Outcome{1, rs232_trace("{TAGdataTAG:{TAGsettingTAG : {}, TAGxTAG: TAGabTAG}}")}));
}

TEST(Rs232List, TheSettingMayBeOfAnyType) {
    for (const char* setting : {"{}", "[]", "null", "true", "0", "\"\""}) {
        const std::string text = std::string("{\"data\":{\"setting\":") + setting + "}}";
        EXPECT_EQ(store(store_rs232_list, text), (Outcome{1, rs232_trace(stored_form(text))}));
    }
}

TEST(Rs232List, KeysAreFoundIgnoringCase) {
    EXPECT_EQ(store(store_rs232_list, R"({"DATA":{"Setting":1}})"),
              (Outcome{1, rs232_trace("{TAGDATATAG:{TAGSettingTAG:1}}")}));
}

TEST(Rs232List, WithoutASettingIsRefused) {
    for (const char* text : {"{}", R"({"data":{}})", R"({"setting":1})", R"({"data":"setting"})",
                             R"({"data":["setting"]})", R"({"data":[{"setting":1}]})",
                             R"({"data":null})", R"({"data":1})", R"({"data":true})"}) {
        EXPECT_EQ(store(store_rs232_list, text), refused()) << text;
    }
}

TEST(Rs232List, OtherTextsAreRefused) {
    for (const char* text : no_objects) {
        EXPECT_EQ(store(store_rs232_list, text), refused()) << text;
    }
    for (const char* text : no_json) {
        EXPECT_EQ(store(store_rs232_list, text), refused()) << text;
    }
}

TEST(Rs232List, LettersTagAreStoredUnchanged) {
    EXPECT_EQ(store(store_rs232_list, R"({"data":{"setting":"TAG"}})"),
              (Outcome{1, rs232_trace("{TAGdataTAG:{TAGsettingTAG:TAGTAGTAG}}")}));
}

TEST(Rs232List, BackslashesAreReadAsTheUnitsShellReadsThem) {
    EXPECT_EQ(store(store_rs232_list, R"({"data":{"setting":"a\nb\\x41\\\\\/\"\u0041\\c"}})"),
              (Outcome{1, rs232_trace("{TAGdataTAG:{TAGsettingTAG:TAGa\nbA\\\\/\\TAG\\u0041")}));
}

TEST(Rs232List, AnExpansionGoesThroughTheShell) {
    EXPECT_EQ(store(store_rs232_list, R"({"data":{"setting":"$HOME %s \\n"}})"),
              (Outcome{1,
                       "shell echo -ne \"{TAGdataTAG:{TAGsettingTAG:TAG$HOME %s \\\\nTAG}}\" > "
                       "/user_data2/rs232_list.json\n"
                       "shell cp /user_data2/rs232_list.json /var/tmp/rs232_list.json\n"}));
}

TEST(Rs232List, WhatStandsBehindTheDocumentIsStoredToo) {
    EXPECT_EQ(store(store_rs232_list, R"({"data":{"setting":1}} and more)"),
              (Outcome{1, rs232_trace("{TAGdataTAG:{TAGsettingTAG:1}} and more")}));
}

TEST(Rs232List, AListThatCannotBeWrittenKeepsTheOldOneAndIsCopiedAllTheSame) {
    reset_recorder();
    provide_file("/user_data2/rs232_list.json", "old");
    refuse_writing("/user_data2/rs232_list.json");
    EXPECT_EQ(store_rs232_list(R"({"data":{"setting":1}})"), 1);
    EXPECT_EQ(recorded_trace(), "shell cp /user_data2/rs232_list.json /var/tmp/rs232_list.json\n");
    EXPECT_EQ(file_content("/user_data2/rs232_list.json"), "old");
}

TEST(Rs232List, TheLongestUploadIsStoredWhole) {
    std::string text = R"({"data":{"setting":""}})";
    text.insert(text.size() - 3, std::string(512000 - text.size(), 'x'));
    ASSERT_EQ(text.size(), 512000U);
    EXPECT_EQ(store(store_rs232_list, text), (Outcome{1, rs232_trace(stored_form(text))}));
}

TEST(Rs232List, TheExampleIsStored) {
    const std::string text = example("rs232-list.json");
    ASSERT_NE(text, "");
    EXPECT_EQ(store(store_rs232_list, text), (Outcome{1, rs232_trace(stored_form(text))}));
}

// --- IR ------------------------------------------------------------------------------------------

std::string ir_trace(const std::string& stored, const std::string& delay,
                     const std::string& repeats, const std::string& repeat_delay) {
    return "replace /user_data2/ir_list.json " + stored +
           "\nshell cp /user_data2/ir_list.json /var/tmp/ir_list.json\n"
           "shell astparam s ir_setting_delay " +
           delay + ";astparam s ir_setting_rpt " + repeats + ";astparam s ir_setting_rpt_delay " +
           repeat_delay + ";astparam save;\n";
}

TEST(IrList, IsStoredAsUploadedAndSetsTheTiming) {
    EXPECT_EQ(
        store(store_ir_list,
              "{\"delay\":\"100\",\n\t\"rpt\":\"1\",\"rptdelay\":\"110\",\"data\":[]}"),
        (Outcome{1, ir_trace("{TAGdelayTAG:TAG100TAG,TAGrptTAG:TAG1TAG,TAGrptdelayTAG:TAG110TAG,"
                             "TAGdataTAG:[]}",
                             "100", "1", "110")}));
}

TEST(IrList, TimingTextsAreTakenAsTheyStand) {
    const std::string text =
        R"({"Delay":"","RPT":"a %s %d","rptDelay":"1;b","DATA":[{"name":"x"}]})";
    EXPECT_EQ(store(store_ir_list, text),
              (Outcome{1, ir_trace(stored_form(text), "", "a %s %d", "1;b")}));
}

TEST(IrList, LongTimingTextsAreNotCut) {
    const std::string digits(300, '7');
    const std::string text = R"({"delay":")" + digits + R"(","rpt":"1","rptdelay":"2","data":[]})";
    EXPECT_EQ(store(store_ir_list, text),
              (Outcome{1, ir_trace(stored_form(text), digits, "1", "2")}));
}

TEST(IrList, DataThatIsNoArrayIsRefused) {
    for (const char* data : {"{}", "null", "true", "3", "\"[]\""}) {
        EXPECT_EQ(
            store(store_ir_list,
                  std::string(R"({"delay":"1","rpt":"1","rptdelay":"1","data":)") + data + "}"),
            refused())
            << data;
    }
    EXPECT_EQ(store(store_ir_list, R"({"delay":"1","rpt":"1","rptdelay":"1"})"), refused());
}

TEST(IrList, ATimingThatIsMissingOrNoTextIsRefused) {
    const char* const keys[] = {"delay", "rpt", "rptdelay"};
    for (const char* wrong : keys) {
        for (const char* value : {"", "1", "null", "true", "[]", "{}"}) {
            std::string text = "{\"data\":[]";
            for (const char* key : keys) {
                const bool is_wrong = key == wrong;
                if (!is_wrong || *value != '\0') {
                    text += std::string(",\"") + key + "\":" + (is_wrong ? value : "\"1\"");
                }
            }
            EXPECT_EQ(store(store_ir_list, text + "}"), refused()) << text;
        }
    }
}

TEST(IrList, OtherTextsAreRefused) {
    for (const char* text : no_objects) {
        EXPECT_EQ(store(store_ir_list, text), refused()) << text;
    }
    for (const char* text : no_json) {
        EXPECT_EQ(store(store_ir_list, text), refused()) << text;
    }
    EXPECT_EQ(store(store_ir_list, "{}"), refused());
}

TEST(IrList, TheExampleIsStored) {
    const std::string text = example("ir-list.json");
    ASSERT_NE(text, "");
    EXPECT_EQ(store(store_ir_list, text),
              (Outcome{1, ir_trace(stored_form(text), "100", "1", "110")}));
}

// --- Triggers ------------------------------------------------------------------------------------

const std::string disconnect_copy =
    "shell cp /user_data2/trigger_video_disconnect_event_list.json "
    "/var/tmp/trigger_video_disconnect_event_list.json\n";

std::string built_in_trace(const std::string& power_on, const std::string& connect,
                           const std::string& disconnect) {
    return "replace /user_data2/trigger_poweron_event_list.json " + power_on +
           "\nshell cp /user_data2/trigger_poweron_event_list.json "
           "/var/tmp/trigger_poweron_event_list.json\n"
           "replace /user_data2/trigger_video_connect_event_list.json " +
           connect +
           "\nshell cp /user_data2/trigger_video_connect_event_list.json "
           "/var/tmp/trigger_video_connect_event_list.json\n"
           "replace /user_data2/trigger_video_disconnect_event_list.json " +
           disconnect + "\n" + disconnect_copy;
}

std::string custom_trace(const std::string& event, const std::string& stored) {
    return "replace /user_data2/trigger_custom_event" + event + "_list.json " + stored + "\n" +
           disconnect_copy;
}

std::string triggers(const std::string& custom) {
    return R"({"data":[{"a":1},[2, 3],"c",)" + custom + "]}";
}

const std::string three_lists = built_in_trace("{TAGaTAG:1}", "[2, 3]", "TAGcTAG");

TEST(TriggerLists, EachBuiltInListIsTheFormattedPrintOfItsElement) {
    EXPECT_EQ(
        store(store_trigger_lists,
              R"({"data":[{"type":"p","data":[{"cmd":"x","delay":5},{}]},{},[],{"data":[]}]})"),
        (Outcome{1, built_in_trace("{TAGtypeTAG:TAGpTAG,TAGdataTAG:[{TAGcmdTAG:TAGxTAG,"
                                   "TAGdelayTAG:5}, {}]}",
                                   "{}", "[]")}));
}

TEST(TriggerLists, WithoutCustomEventsThreeListsAreStored) {
    EXPECT_EQ(store(store_trigger_lists, triggers(R"({"data":[]})")), (Outcome{1, three_lists}));
}

TEST(TriggerLists, EachCustomEventHasAFileOfItsNameWhateverItsLength) {
    for (const std::string& name :
         {std::string("api_event_hall_start"), std::string(), std::string("x"),
          std::string(21, 'y'), std::string(200, 'z')}) {
        EXPECT_EQ(store(store_trigger_lists,
                        triggers(R"({"data":[{"apievent":")" + name + R"(","cmd":1}]})")),
                  (Outcome{1, three_lists + custom_trace(name, "{TAGapieventTAG:TAG" + name +
                                                                   "TAG,TAGcmdTAG:1}")}))
            << name;
    }
}

TEST(TriggerLists, CustomEventsAreStoredInTheirOrder) {
    EXPECT_EQ(store(store_trigger_lists,
                    triggers(R"({"Data":[{"apievent":"b"},{"APIevent":"a"},{"apievent":"b"}]})")),
              (Outcome{1, three_lists + custom_trace("b", "{TAGapieventTAG:TAGbTAG}") +
                              custom_trace("a", "{TAGAPIeventTAG:TAGaTAG}") +
                              custom_trace("b", "{TAGapieventTAG:TAGbTAG}")}));
}

TEST(TriggerLists, AnEventNameThatMeansMoreToTheShellGoesThroughIt) {
    EXPECT_EQ(store(store_trigger_lists, triggers(R"({"data":[{"apievent":"a b"}]})")),
              (Outcome{1, three_lists +
                              "shell echo -ne \"{TAGapieventTAG:TAGa bTAG}\" > "
                              "/user_data2/trigger_custom_eventa b_list.json\n" +
                              disconnect_copy}));
}

TEST(TriggerLists, AnExpansionInOneListLeavesTheOthersAlone) {
    EXPECT_EQ(store(store_trigger_lists, R"({"data":["\\x41",3,"$5",{"data":[]}]})"),
              (Outcome{1,
                       "replace /user_data2/trigger_poweron_event_list.json TAGATAG\n"
                       "shell cp /user_data2/trigger_poweron_event_list.json "
                       "/var/tmp/trigger_poweron_event_list.json\n"
                       "replace /user_data2/trigger_video_connect_event_list.json 3\n"
                       "shell cp /user_data2/trigger_video_connect_event_list.json "
                       "/var/tmp/trigger_video_connect_event_list.json\n"
                       "shell echo -ne \"TAG$5TAG\" > "
                       "/user_data2/trigger_video_disconnect_event_list.json\n" +
                           disconnect_copy}));
}

TEST(TriggerLists, DataThatIsNotFourElementsIsRefusedBeforeAnythingIsStored) {
    for (const char* data :
         {"[]", "[1]", "[1,2,3]", "[1,2,3,{\"data\":[]},5]", "{}", "null", "true", "3", "\"x\""}) {
        EXPECT_EQ(store(store_trigger_lists, std::string("{\"data\":") + data + "}"), refused())
            << data;
    }
    EXPECT_EQ(store(store_trigger_lists, "{}"), refused());
}

TEST(TriggerLists, OtherTextsAreRefused) {
    for (const char* text : no_objects) {
        EXPECT_EQ(store(store_trigger_lists, text), refused()) << text;
    }
    for (const char* text : no_json) {
        EXPECT_EQ(store(store_trigger_lists, text), refused()) << text;
    }
}

TEST(TriggerLists, AFourthElementWithoutAListIsRefusedBehindTheThreeOthers) {
    for (const char* custom : {"{}", "[]", "null", "true", "3", "\"x\"", R"({"data":{}})",
                               R"({"data":null})", R"({"data":"x"})", R"({"data":1})"}) {
        EXPECT_EQ(store(store_trigger_lists, triggers(custom)), (Outcome{0, three_lists}))
            << custom;
    }
}

TEST(TriggerLists, AnEventWithoutANameKeepsAllCustomListsFromBeingStored) {
    for (const char* event :
         {"{}", "[]", "null", "true", "3", "\"x\"", R"({"apievent":1})", R"({"apievent":null})",
          R"({"apievent":[]})", R"({"apievent":{}})", R"({"apievent":true})"}) {
        for (const std::string& events :
             {std::string(event), R"({"apievent":"a"},)" + std::string(event),
              std::string(event) + R"(,{"apievent":"a"})"}) {
            EXPECT_EQ(store(store_trigger_lists, triggers("{\"data\":[" + events + "]}")),
                      (Outcome{0, three_lists}))
                << events;
        }
    }
}

TEST(TriggerLists, TheExampleIsStored) {
    const std::string text = example("trigger-lists.json");
    ASSERT_NE(text, "");
    const std::string start =
        "{TAGapieventTAG:TAGapi_event_hall_startTAG,TAGnameTAG:TAGLecture startsTAG,TAGdataTAG:"
        "[{TAGnameTAG:TAGDisplay onTAG,TAGcmdTAG:TAGka 01 01TAG,TAGdelayTAG:0}]}";
    const std::string close =
        "{TAGapieventTAG:TAGapi_event_hall_closeTAG,TAGnameTAG:TAGHall closesTAG,TAGdataTAG:"
        "[{TAGnameTAG:TAGDisplay offTAG,TAGcmdTAG:TAGka 01 00TAG,TAGdelayTAG:0}]}";
    EXPECT_EQ(
        store(store_trigger_lists, text),
        (Outcome{
            1,
            built_in_trace(
                "{TAGtypeTAG:TAGpower_onTAG,TAGdataTAG:[{TAGnameTAG:TAGDisplay onTAG,"
                "TAGcmdTAG:TAGka 01 01TAG,TAGdelayTAG:5}]}",
                "{TAGtypeTAG:TAGvideo_connectTAG,TAGdataTAG:[{TAGnameTAG:TAGDisplay onTAG,"
                "TAGcmdTAG:TAGka 01 01TAG,TAGdelayTAG:0}, {TAGnameTAG:TAGDisplay input HDMI 1TAG,"
                "TAGcmdTAG:TAGxb 01 90TAG,TAGdelayTAG:8}]}",
                "{TAGtypeTAG:TAGvideo_disconnectTAG,TAGdataTAG:[{TAGnameTAG:TAGDisplay offTAG,"
                "TAGcmdTAG:TAGka 01 00TAG,TAGdelayTAG:60}]}") +
                custom_trace("api_event_hall_start", start) +
                custom_trace("api_event_hall_close", close)}));
}

}  // namespace
