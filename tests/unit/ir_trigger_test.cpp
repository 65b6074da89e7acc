#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "tests/support/applying.h"
#include "tests/support/recorder.h"
#include "unitconf/sections.h"

namespace {

std::string apply_ir(const std::string& json) {
    return trace_of(apply_ir_section, json);
}

std::string apply_trigger(const std::string& json) {
    return trace_of(apply_trigger_section, json);
}

// --- Infrared
// -------------------------------------------------------------------------------------

class IrSection : public testing::Test {
  protected:
    void SetUp() override {
        reset_recorder();
    }
};

std::string stored_codes(const std::string& text) {
    return "write /var/tmp/ir_list.json " + text +
           "\n"
           "shell cp /var/tmp/ir_list.json /user_data2/ir_list.json\n"
           "shell rm -rf /var/tmp/ir_list.json\n";
}

TEST_F(IrSection, WithNothingInItDoesNothing) {
    for (const char* section : {"{}", "[]", "true", "null", "3", "\"x\"", R"({"other":1})"}) {
        EXPECT_EQ(apply_ir(section), "") << section;
    }
}

TEST_F(IrSection, AWholeSectionIsAppliedInTheUnitsOrder) {
    EXPECT_EQ(apply_ir(R"({"ir_pass":{"enable":true,"ir_pass_ip_address":"10.0.0.2"},)"
                       R"("data":[{"name":"On","value":"0000 006D"}],)"
                       R"("ir_repeat_delay":110,"ir_repeat_time":2,"ir_delay":100,)"
                       R"("ir_read":{"enable":true}})"),
              "shell astparam s irread 1;e e_chg_ir_read_data_check\n"
              "pause 1\n"
              "shell astparam s ir_setting_delay 100;\n"
              "shell astparam s ir_setting_rpt 2;\n"
              "shell astparam s ir_setting_rpt_delay 110;\n"
              "write /var/tmp/ir_list.json {TAGdataTAG:[{TAGnameTAG:TAGOnTAG,"
              "TAGvalueTAG:TAG0000 006DTAG}]}\n"
              "shell cp /var/tmp/ir_list.json /user_data2/ir_list.json\n"
              "shell rm -rf /var/tmp/ir_list.json\n"
              "shell astparam s ir_unit_conn 10.0.0.2;\n"
              "shell astparam s ir_pass_enable 1;e e_ir_pass 1\n"
              "pause 1\n");
}

TEST_F(IrSection, SwitchesGoOff) {
    EXPECT_EQ(apply_ir(R"({"ir_read":{"enable":false},"ir_pass":{"enable":false}})"),
              "shell astparam s irread 0;e e_chg_ir_read_data_check\n"
              "pause 1\n"
              "shell astparam s ir_pass_enable 0;e e_ir_pass 0\n"
              "pause 1\n");
}

TEST_F(IrSection, SwitchesNeedBooleansOfTheExactKeyInTheirObjects) {
    for (const char* object : {"ir_read", "ir_pass"}) {
        for (const char* value : {"null", "0", "1", "\"true\"", "[]", "{}"}) {
            EXPECT_EQ(apply_ir(std::string("{\"") + object + R"(":{"enable":)" + value + "}}"), "")
                << object << " " << value;
        }
        for (const char* value : {"true", "false", "null", "1", "\"x\"", "[]", "[true]",
                                  R"({"Enable":true})", R"({"on":true})"}) {
            EXPECT_EQ(apply_ir(std::string("{\"") + object + "\":" + value + "}"), "")
                << object << " " << value;
        }
    }
    EXPECT_EQ(apply_ir(R"({"enable":true,"ir_pass_ip_address":"10.0.0.2"})"), "");
}

TEST_F(IrSection, TheObjectsOfSwitchesIgnoreCase) {
    EXPECT_EQ(apply_ir(R"({"IR_Read":{"enable":true},"IR_Pass":{"enable":true}})"),
              "shell astparam s irread 1;e e_chg_ir_read_data_check\n"
              "pause 1\n"
              "shell astparam s ir_pass_enable 1;e e_ir_pass 1\n"
              "pause 1\n");
}

TEST_F(IrSection, TimingTakesIntegersOfAnyValue) {
    const char* const members[][2] = {{"ir_delay", "ir_setting_delay"},
                                      {"IR_Delay", "ir_setting_delay"},
                                      {"ir_repeat_time", "ir_setting_rpt"},
                                      {"ir_repeat_delay", "ir_setting_rpt_delay"}};
    const char* const values[][2] = {{"0", "0"},
                                     {"7", "7"},
                                     {"-7", "-7"},
                                     {"1.9", "1"},
                                     {"2147483647", "2147483647"},
                                     {"2147483648", "2147483647"},
                                     {"-1e12", "-2147483648"}};
    for (const auto& [key, parameter] : members) {
        for (const auto& [given, sent] : values) {
            EXPECT_EQ(apply_ir(std::string("{\"") + key + "\":" + given + "}"),
                      std::string("shell astparam s ") + parameter + " " + sent + ";\n");
        }
        for (const char* wrong : {"true", "null", "\"7\"", "\"\"", "[7]", "{}"}) {
            EXPECT_EQ(apply_ir(std::string("{\"") + key + "\":" + wrong + "}"), "")
                << key << " " << wrong;
        }
    }
}

TEST_F(IrSection, DataOfAnyTypeReplacesTheCodesAndNothingElse) {
    const char* const cases[][2] = {
        {"[]", "{TAGdataTAG:[]}"},
        {"{}", "{TAGdataTAG:{}}"},
        {"null", "{TAGdataTAG:null}"},
        {"true", "{TAGdataTAG:true}"},
        {"3", "{TAGdataTAG:3}"},
        {"\"\"", "{TAGdataTAG:TAGTAG}"},
        {"\"x\"", "{TAGdataTAG:TAGxTAG}"},
        {R"([ {"name" : "A \"b\" $c %s `d` \\ TAG", "n":[1, 2.5]} ])",
         R"({TAGdataTAG:[{TAGnameTAG:TAGA \TAGb\TAG $c %s `d` \\ TAGTAG,TAGnTAG:[1,2.5]}]})"},
        {R"("tab\tline\nreturn\r")", R"({TAGdataTAG:TAGtab\tline\nreturn\rTAG})"},
    };
    for (const auto& [given, text] : cases) {
        EXPECT_EQ(apply_ir(std::string("{\"data\":") + given + "}"), stored_codes(text)) << given;
        EXPECT_EQ(apply_ir(std::string("{\"DATA\":") + given + "}"), stored_codes(text)) << given;
    }
}

TEST_F(IrSection, TheDocumentKeepsItsCodes) {
    cJSON* section = cJSON_Parse(R"({"data":[{"name":"On"}]})");
    apply_ir_section(section);
    char* printed = cJSON_PrintUnformatted(section);
    EXPECT_STREQ(printed, R"({"data":[{"name":"On"}]})");
    cJSON_free(printed);
    cJSON_Delete(section);
}

TEST_F(IrSection, LongCodesAreStoredWhole) {
    const std::string code(300000, '0');
    EXPECT_EQ(apply_ir("{\"data\":\"" + code + "\"}"),
              stored_codes("{TAGdataTAG:TAG" + code + "TAG}"));
}

TEST_F(IrSection, CodesStayWhenTheWorkingFileCannotBeOpened) {
    refuse_writing("/var/tmp/ir_list.json");
    EXPECT_EQ(apply_ir(R"({"ir_delay":1,"data":[1],"ir_pass":{"ir_pass_ip_address":"a"}})"),
              "shell astparam s ir_setting_delay 1;\n"
              "shell astparam s ir_unit_conn a;\n");
}

TEST_F(IrSection, ThePartnerIsATextThatIsNotEmpty) {
    EXPECT_EQ(apply_ir(R"({"ir_pass":{"IR_Pass_IP_Address":"%d $x"}})"),
              "shell astparam s ir_unit_conn %d $x;\n");
    for (const char* value : {"\"\"", "null", "10", "true", "[\"a\"]", "{}"}) {
        EXPECT_EQ(apply_ir(std::string(R"({"ir_pass":{"ir_pass_ip_address":)") + value + "}}"), "")
            << value;
    }
}

// --- Triggers
// -------------------------------------------------------------------------------------

class TriggerSection : public testing::Test {
  protected:
    void SetUp() override {
        reset_recorder();
    }
};

std::string stored_power_on(const std::string& text) {
    return "write /var/tmp/trigger_poweron_event_list.json " + text +
           "\n"
           "shell cp /var/tmp/trigger_poweron_event_list.json "
           "/user_data2/trigger_poweron_event_list.json\n"
           "shell rm -rf /var/tmp/trigger_poweron_event_list.json\n";
}

std::string stored_video_connect(const std::string& text) {
    return "write /var/tmp/trigger_video_connect_event_list.json " + text +
           "\n"
           "shell cp /var/tmp/trigger_video_connect_event_list.json "
           "/user_data2/trigger_video_connect_event_list.json\n"
           "shell rm -rf /var/tmp/trigger_video_connect_event_list.json\n";
}

std::string stored_video_disconnect(const std::string& text) {
    return "write /var/tmp/trigger_video_disconnect_event_list.json " + text +
           "\n"
           "shell cp /var/tmp/trigger_video_disconnect_event_list.json "
           "/user_data2/trigger_video_disconnect_event_list.json\n"
           "shell rm -rf /var/tmp/trigger_video_disconnect_event_list.json\n";
}

const std::string custom_removed = "shell rm -rf /user_data2/trigger_custom_event_*\n";

std::string quoted(const std::string& text) {
    return std::string("\"").append(text).append("\"");
}

std::string lists(const std::string& items) {
    return "{\"trigger_lists\":[" + items + "]}";
}

TEST_F(TriggerSection, WithNothingInItDoesNothing) {
    for (const char* section : {"{}", "[]", "true", "null", "3", "\"x\"", R"({"other":1})"}) {
        EXPECT_EQ(apply_trigger(section), "") << section;
    }
}

TEST_F(TriggerSection, AWholeSectionStoresItsListsThenSwitches) {
    EXPECT_EQ(
        apply_trigger(R"({"enable":true,"trigger_lists":[)"
                      R"({"type":"power_on","data":[{"cmd":"a"}]},)"
                      R"({"type":"video_connect","data":[{"cmd":"b"}]},)"
                      R"({"type":"video_disconnect","data":[{"cmd":"c"}]},)"
                      R"({"type":"custom","data":[{"apievent":"room_on","cmd":"x"},)"
                      R"({"apievent":"room_off","data":[{"cmd":"y","delay":5},{"cmd":"z"}]}]}]})"),
        "write /var/tmp/trigger_poweron_event_list.json {TAGdataTAG:[{TAGcmdTAG:TAGaTAG}]}\n"
        "shell cp /var/tmp/trigger_poweron_event_list.json "
        "/user_data2/trigger_poweron_event_list.json\n"
        "shell rm -rf /var/tmp/trigger_poweron_event_list.json\n"
        "write /var/tmp/trigger_video_connect_event_list.json {TAGdataTAG:[{TAGcmdTAG:TAGbTAG}]}\n"
        "shell cp /var/tmp/trigger_video_connect_event_list.json "
        "/user_data2/trigger_video_connect_event_list.json\n"
        "shell rm -rf /var/tmp/trigger_video_connect_event_list.json\n"
        "write /var/tmp/trigger_video_disconnect_event_list.json "
        "{TAGdataTAG:[{TAGcmdTAG:TAGcTAG}]}\n"
        "shell cp /var/tmp/trigger_video_disconnect_event_list.json "
        "/user_data2/trigger_video_disconnect_event_list.json\n"
        "shell rm -rf /var/tmp/trigger_video_disconnect_event_list.json\n"
        "shell rm -rf /user_data2/trigger_custom_event_*\n"
        "shell echo -ne \"{TAGapieventTAG:TAGroom_onTAG,TAGcmdTAG:TAGxTAG}\" > "
        "/user_data2/trigger_custom_event_room_on.json\n"
        "shell echo -ne \"{TAGapieventTAG:TAGroom_offTAG,TAGdataTAG:[{TAGcmdTAG:TAGyTAG,"
        "TAGdelayTAG:5}, {TAGcmdTAG:TAGzTAG}]}\" > "
        "/user_data2/trigger_custom_event_room_off.json\n"
        "shell astparam s triggerEnable 1;\n");
}

TEST_F(TriggerSection, EnableIsABooleanOfTheExactKeyAndTakesNoPause) {
    EXPECT_EQ(apply_trigger(R"({"enable":true})"), "shell astparam s triggerEnable 1;\n");
    EXPECT_EQ(apply_trigger(R"({"enable":false})"), "shell astparam s triggerEnable 0;\n");
    EXPECT_EQ(apply_trigger(R"({"Enable":true})"), "");
    for (const char* value : {"null", "0", "1", "\"true\"", "[]", "{}"}) {
        EXPECT_EQ(apply_trigger(std::string("{\"enable\":") + value + "}"), "") << value;
    }
}

TEST_F(TriggerSection, ListsThatAreNoArrayOrOfAnotherCaseAreIgnored) {
    for (const char* value :
         {"null", "true", "3", "\"x\"", "{}", "[]", R"({"a":{"type":"power_on","data":[]}})"}) {
        EXPECT_EQ(apply_trigger(std::string("{\"enable\":true,\"trigger_lists\":") + value + "}"),
                  "shell astparam s triggerEnable 1;\n")
            << value;
    }
    EXPECT_EQ(apply_trigger(R"({"Trigger_Lists":[{"type":"power_on","data":[]}]})"), "");
}

TEST_F(TriggerSection, MissingPositionsAreSkipped) {
    EXPECT_EQ(
        apply_trigger(lists(R"({"type":"power_on","data":1},{"type":"video_connect","data":2})")),
        stored_power_on("{TAGdataTAG:1}") + stored_video_connect("{TAGdataTAG:2}"));
    EXPECT_EQ(apply_trigger(lists(R"({"type":"power_on","data":1})")),
              stored_power_on("{TAGdataTAG:1}"));
}

TEST_F(TriggerSection, APositionThatIsNoUsableListIsPassedOver) {
    const char* const others[] = {"null", "true", "3", "\"power_on\"", "[]", "{}"};
    for (const std::string other : others) {
        EXPECT_EQ(apply_trigger(lists(other + "," + other +
                                      R"(,{"type":"video_disconnect","data":[]},)" + other)),
                  stored_video_disconnect("{TAGdataTAG:[]}"))
            << other;
    }
}

TEST_F(TriggerSection, AListAtTheWrongPositionIsIgnored) {
    const std::string power_on = R"({"type":"power_on","data":[]})";
    const std::string connect = R"({"type":"video_connect","data":[]})";
    const std::string disconnect = R"({"type":"video_disconnect","data":[]})";
    const std::string custom = R"({"type":"custom","data":[]})";
    EXPECT_EQ(apply_trigger(lists(connect + "," + disconnect + "," + custom + "," + power_on)), "");
    EXPECT_EQ(apply_trigger(lists(custom + "," + power_on + "," + connect + "," + disconnect)), "");
    // A fifth list has no position.
    EXPECT_EQ(apply_trigger(lists("{},{},{},{}," + custom)), "");
}

TEST_F(TriggerSection, TheTypeHoldsTheWordAnywhere) {
    const struct {
        const char* before;
        const char* word;
        std::string expected;
    } positions[] = {
        {"", "power_on", stored_power_on("{TAGdataTAG:[]}")},
        {"{},", "video_connect", stored_video_connect("{TAGdataTAG:[]}")},
        {"{},{},", "video_disconnect", stored_video_disconnect("{TAGdataTAG:[]}")},
        {"{},{},{},", "custom", custom_removed},
    };
    for (const auto& each : positions) {
        const std::string word = each.word;
        const auto with_type = [&each](const std::string& type) {
            return apply_trigger(lists(each.before + ("{\"type\":" + type) + ",\"data\":[]}"));
        };
        EXPECT_EQ(with_type(quoted(word)), each.expected);
        EXPECT_EQ(with_type(quoted("the " + word + "_list")), each.expected);
        EXPECT_EQ(with_type(quoted(word.substr(1))), "") << word;
        EXPECT_EQ(with_type(quoted(word.substr(0, word.size() - 1))), "") << word;
        for (const char* type : {"\"\"", "null", "1", "true", "[]", "{}"}) {
            EXPECT_EQ(with_type(type), "") << word << " " << type;
        }
        EXPECT_EQ(with_type(std::string("[").append(quoted(word)).append("]")), "") << word;
        EXPECT_EQ(apply_trigger(lists(each.before + std::string("{\"data\":[]}"))), "") << word;
        EXPECT_EQ(apply_trigger(lists(each.before + ("{\"Type\":\"" + word) + "\",\"Data\":[]}")),
                  each.expected);
    }
    EXPECT_EQ(apply_trigger(lists(R"({"type":"Power_On","data":[]})")), "");
}

TEST_F(TriggerSection, TheFirstThreeListsTakeDataOfAnyType) {
    const char* const cases[][2] = {
        {"[]", "{TAGdataTAG:[]}"},
        {"{}", "{TAGdataTAG:{}}"},
        {"null", "{TAGdataTAG:null}"},
        {"false", "{TAGdataTAG:false}"},
        {"3", "{TAGdataTAG:3}"},
        {"\"x\"", "{TAGdataTAG:TAGxTAG}"},
        {R"([{"cmd":"a \"b\"\n$c %s"}, {}])",
         R"({TAGdataTAG:[{TAGcmdTAG:TAGa \TAGb\TAG\n$c %sTAG},{}]})"},
    };
    for (const auto& [data, text] : cases) {
        const std::string end = std::string("\",\"data\":") + data + "}";
        EXPECT_EQ(
            apply_trigger(lists("{\"type\":\"power_on" + end + ",{\"type\":\"video_connect" + end +
                                ",{\"type\":\"video_disconnect" + end)),
            stored_power_on(text) + stored_video_connect(text) + stored_video_disconnect(text))
            << data;
    }
    EXPECT_EQ(apply_trigger(lists(R"({"type":"power_on"},{"type":"video_connect"},)"
                                  R"({"type":"video_disconnect"})")),
              "");
}

TEST_F(TriggerSection, AListStaysWhenItsWorkingFileCannotBeOpened) {
    const std::string all =
        lists(R"({"type":"power_on","data":1},{"type":"video_connect","data":2},)"
              R"({"type":"video_disconnect","data":3})");
    refuse_writing("/var/tmp/trigger_video_connect_event_list.json");
    EXPECT_EQ(apply_trigger(all),
              stored_power_on("{TAGdataTAG:1}") + stored_video_disconnect("{TAGdataTAG:3}"));
    refuse_writing("/var/tmp/trigger_poweron_event_list.json");
    refuse_writing("/var/tmp/trigger_video_disconnect_event_list.json");
    EXPECT_EQ(apply_trigger(all), "");
}

std::string custom(const std::string& data) {
    return lists(R"({},{},{},{"type":"custom","data":)" + data + "}");
}

TEST_F(TriggerSection, AnEmptyCustomListRemovesAllThatAreStored) {
    EXPECT_EQ(apply_trigger(custom("[]")), "shell rm -rf /user_data2/trigger_custom_event_*\n");
}

TEST_F(TriggerSection, CustomDataThatIsNoArrayChangesNothing) {
    for (const char* data :
         {"null", "true", "3", "\"x\"", "{}", R"({"a":{"apievent":"room_on"}})"}) {
        EXPECT_EQ(apply_trigger(custom(data)), "") << data;
    }
    EXPECT_EQ(apply_trigger(lists(R"({},{},{},{"type":"custom"})")), "");
}

TEST_F(TriggerSection, CustomListsWithoutATextForTheirEventAreSkipped) {
    for (const char* element : {"{}", "null", "true", "3", "\"apievent\"", "[]",
                                R"({"apievent":null})", R"({"apievent":5})", R"({"apievent":true})",
                                R"({"apievent":["a"]})", R"({"apievent":{}})", R"({"cmd":"x"})"}) {
        EXPECT_EQ(apply_trigger(custom(std::string("[") + element + R"(,{"ApiEvent":"b"}])")),
                  custom_removed +
                      "shell echo -ne \"{TAGApiEventTAG:TAGbTAG}\" > "
                      "/user_data2/trigger_custom_event_b.json\n")
            << element;
    }
}

TEST_F(TriggerSection, CustomListsAreNamedByTheirEventAsGiven) {
    EXPECT_EQ(apply_trigger(custom(R"([{"apievent":""},{"apievent":"a b %s"},)"
                                   R"({"apievent":"api_event_hall_start"}])")),
              custom_removed +
                  "shell echo -ne \"{TAGapieventTAG:TAGTAG}\" > "
                  "/user_data2/trigger_custom_event_.json\n"
                  "shell echo -ne \"{TAGapieventTAG:TAGa b %sTAG}\" > "
                  "/user_data2/trigger_custom_event_a b %s.json\n"
                  "shell echo -ne \"{TAGapieventTAG:TAGapi_event_hall_startTAG}\" > "
                  "/user_data2/trigger_custom_event_api_event_hall_start.json\n");
}

TEST_F(TriggerSection, CustomListsKeepTheEscapesOfTheirTexts) {
    EXPECT_EQ(apply_trigger(custom(R"([{"apievent":"e","cmd":"a\tb\r\n \"c\" $d \\","n":[ ]}])")),
              custom_removed +
                  "shell echo -ne \"{TAGapieventTAG:TAGeTAG,"
                  "TAGcmdTAG:TAGa\\tb\\r\\n \\TAGc\\TAG $d \\\\TAG,TAGnTAG:[]}\" > "
                  "/user_data2/trigger_custom_event_e.json\n");
}

TEST_F(TriggerSection, ALongCustomListIsWrittenByOneWholeLine) {
    const std::string command(300000, 'c');
    EXPECT_EQ(apply_trigger(custom(R"([{"apievent":"e","cmd":")" + command + "\"}]")),
              custom_removed + "shell echo -ne \"{TAGapieventTAG:TAGeTAG,TAGcmdTAG:TAG" + command +
                  "TAG}\" > /user_data2/trigger_custom_event_e.json\n");
}

// --- A whole document
// -----------------------------------------------------------------------------

TEST_F(TriggerSection, TheExampleOfAnEncoderIsAppliedWhole) {
    std::ifstream file(EXAMPLES_DIR "/unit-configuration.ZAVO-ENC-U300-DA.json");
    std::ostringstream text;
    text << file.rdbuf();
    cJSON* document = cJSON_Parse(text.str().c_str());
    apply_trigger_section(cJSON_GetObjectItem(document, "trigger"));
    cJSON_Delete(document);
    EXPECT_EQ(recorded_trace(),
              stored_power_on("{TAGdataTAG:[{TAGnameTAG:TAGDisplay onTAG,TAGcmdTAG:TAGka 01 01TAG,"
                              "TAGdelayTAG:5}]}") +
                  stored_video_connect(
                      "{TAGdataTAG:[{TAGnameTAG:TAGDisplay onTAG,TAGcmdTAG:TAGka 01 01TAG,"
                      "TAGdelayTAG:0},{TAGnameTAG:TAGDisplay input HDMI 1TAG,"
                      "TAGcmdTAG:TAGxb 01 90TAG,TAGdelayTAG:8}]}") +
                  stored_video_disconnect("{TAGdataTAG:[{TAGnameTAG:TAGDisplay offTAG,"
                                          "TAGcmdTAG:TAGka 01 00TAG,TAGdelayTAG:60}]}") +
                  custom_removed +
                  "shell echo -ne \"{TAGapieventTAG:TAGapi_event_hall_startTAG,"
                  "TAGnameTAG:TAGLecture startsTAG,TAGdataTAG:[{TAGnameTAG:TAGDisplay onTAG,"
                  "TAGcmdTAG:TAGka 01 01TAG,TAGdelayTAG:0}]}\" > "
                  "/user_data2/trigger_custom_event_api_event_hall_start.json\n"
                  "shell echo -ne \"{TAGapieventTAG:TAGapi_event_hall_closeTAG,"
                  "TAGnameTAG:TAGHall closesTAG,TAGdataTAG:[{TAGnameTAG:TAGDisplay offTAG,"
                  "TAGcmdTAG:TAGka 01 00TAG,TAGdelayTAG:0}]}\" > "
                  "/user_data2/trigger_custom_event_api_event_hall_close.json\n"
                  "shell astparam s triggerEnable 1;\n");
}

}  // namespace
