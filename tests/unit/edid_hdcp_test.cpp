#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/blocks.h"
#include "unitconf/sections.h"

namespace {

class EdidAndHdcpSections : public testing::Test {
  protected:
    void SetUp() override {
        reset_recorder();
    }
};

const std::vector<std::string> texts_of_every_json_value = {"\"\"", "\"x\"", "\"5\"", "\"-\""};

// --- EDID ----------------------------------------------------------------------------------------

const IdleRows input_rows = {
    {"copy_edid", "pause 1\n"}, {"predefined", "pause 1\n"}, {"upload_edid_name", "pause 1\n"}};

const Block decoder_edid = {
    "decoder",
    apply_decoder_edid_section,
    "{",
    "}",
    "pause 1\n",
    {{"copy_edid", "pause 1\n"}, {"predefined", "pause 1\n"}, {"upload_edid_name", ""}},
    ""};
const Block hdmi_encoder_edid = {"HDMI encoder",
                                 apply_hdmi_encoder_edid_section,
                                 R"({"hdmi":{)",
                                 "}}",
                                 "pause 1\n",
                                 input_rows,
                                 ""};
const Block usbc_edid = {"USB-C encoder, usbc",
                         apply_usbc_encoder_edid_section,
                         R"({"usbc":{)",
                         "}}",
                         "pause 1\n",
                         input_rows,
                         "pause 1\n"};
const Block usbc_hdmi_edid = {"USB-C encoder, hdmi",
                              apply_usbc_encoder_edid_section,
                              R"({"hdmi":{)",
                              "}}",
                              "pause 1\npause 1\n",
                              input_rows,
                              ""};

const Block* const edid_blocks[] = {&decoder_edid, &hdmi_encoder_edid, &usbc_edid, &usbc_hdmi_edid};

TEST_F(EdidAndHdcpSections, FullDecoderEdidIsAppliedInOrderAndCosts3Seconds) {
    const std::string trace = trace_of(apply_decoder_edid_section, R"({
        "upload_edid_name": "Hall 1 display",
        "predefined": "3840x2160@60Hz Deep Color Stereo Audio", "copy_edid": "hdmi"})");
    EXPECT_EQ(trace,
              "pause 1\n"
              "mcu setedidcopy\n"
              "pause 1\n"
              "mcu setedid,6\n"
              "pause 1\n"
              "shell astparam s edid_user_defined2 \"Hall 1 display\"\n");
    EXPECT_EQ(seconds_of(trace), 3U);
}

TEST_F(EdidAndHdcpSections, FullHdmiEncoderEdidIsAppliedInOrderAndCosts4Seconds) {
    const std::string trace = trace_of(apply_hdmi_encoder_edid_section, R"({"hdmi": {
        "upload_edid_name": "Hall 1 display", "predefined": "1920x1080@60Hz 8bit Stereo",
        "copy_edid": "hdmi"}})");
    EXPECT_EQ(trace,
              "pause 1\n"
              "mcu setedidcopy,hdmi\n"
              "pause 1\n"
              "mcu setedid,1\n"
              "pause 1\n"
              "shell astparam s edid_user_defined2 \"Hall 1 display\"\n"
              "pause 1\n");
    EXPECT_EQ(seconds_of(trace), 4U);
}

TEST_F(EdidAndHdcpSections, FullUsbcEncoderEdidTakesUsbcFirstAndCosts8Seconds) {
    const std::string trace = trace_of(apply_usbc_encoder_edid_section, R"({
        "hdmi": {"copy_edid": "hdmi",
                 "predefined": "3840x2160@60Hz 4:2:0 Deep Color Stereo Audio",
                 "upload_edid_name": "Hall 1 projector"},
        "usbc": {"copy_edid": "dp", "predefined": "User Defined",
                 "upload_edid_name": "Hall 1 display"}})");
    EXPECT_EQ(trace,
              "pause 1\n"
              "mcu setedidcopy,1:dp\n"
              "pause 1\n"
              "mcu setedid,1:9\n"
              "pause 1\n"
              "shell astparam s edid_user_defined1 \"Hall 1 display\"\n"
              "pause 1\n"
              "pause 1\n"
              "mcu setedidcopy,2:hdmi\n"
              "pause 1\n"
              "mcu setedid,2:5\n"
              "pause 1\n"
              "shell astparam s edid_user_defined1 \"Hall 1 projector\"\n"
              "pause 1\n");
    EXPECT_EQ(seconds_of(trace), 8U);
}

TEST_F(EdidAndHdcpSections, EdidWithoutAnInputCostsOnlyWhatTheModelAlwaysWaits) {
    for (const char* section : {"{}", "[]", "true", "null", "3", "\"hdmi\"",
                                R"([{"hdmi":{},"usbc":{},"copy_edid":"x"}])"}) {
        EXPECT_EQ(trace_of(apply_decoder_edid_section, section), "pause 1\npause 1\npause 1\n")
            << section;
        EXPECT_EQ(trace_of(apply_hdmi_encoder_edid_section, section), "") << section;
        EXPECT_EQ(trace_of(apply_usbc_encoder_edid_section, section), "pause 1\npause 1\n")
            << section;
    }
    EXPECT_EQ(trace_of(apply_hdmi_encoder_edid_section, R"({"copy_edid":"hdmi","usbc":{}})"), "");
}

TEST_F(EdidAndHdcpSections, AnInputOfAnyTypeTakesItsPauses) {
    for (const std::string& value : every_json_value) {
        EXPECT_EQ(trace_of(apply_hdmi_encoder_edid_section, "{\"hdmi\":" + value + "}"),
                  "pause 1\npause 1\npause 1\npause 1\n")
            << value;
        EXPECT_EQ(trace_of(apply_usbc_encoder_edid_section, "{\"usbc\":" + value + "}"),
                  "pause 1\npause 1\npause 1\npause 1\npause 1\n")
            << value;
        EXPECT_EQ(trace_of(apply_usbc_encoder_edid_section, "{\"hdmi\":" + value + "}"),
                  "pause 1\npause 1\npause 1\npause 1\npause 1\n")
            << value;
    }
}

TEST_F(EdidAndHdcpSections, KeysOfEdidIgnoreCase) {
    EXPECT_EQ(trace_of(apply_decoder_edid_section, R"({"Copy_EDID":"x"})"),
              "pause 1\nmcu setedidcopy\npause 1\npause 1\n");
    EXPECT_EQ(trace_of(apply_hdmi_encoder_edid_section,
                       R"({"HDMI":{"COPY_edid":"x","PREdefined":"user defined"}})"),
              "pause 1\nmcu setedidcopy,x\npause 1\nmcu setedid,9\npause 1\npause 1\n");
    EXPECT_EQ(trace_of(apply_usbc_encoder_edid_section, R"({"UsbC":{"Upload_EDID_name":"x"}})"),
              "pause 1\npause 1\npause 1\nshell astparam s edid_user_defined1 \"x\"\npause 1\n"
              "pause 1\n");
}

TEST_F(EdidAndHdcpSections, DecoderCopiesTheEdidForAnyText) {
    for (const char* text : {"\"\"", "\"hdmi\"", "\"-\"", "\"-copy\"", "\"copy\"", "\"%s\""}) {
        expect_cases(decoder_edid, {{"copy_edid", text, "mcu setedidcopy\npause 1\n"}});
    }
}

TEST_F(EdidAndHdcpSections, EncodersCopyTheEdidOfWhatTheTextNames) {
    const std::pair<const Block*, std::string> commands[] = {{&hdmi_encoder_edid, "setedidcopy,"},
                                                             {&usbc_edid, "setedidcopy,1:"},
                                                             {&usbc_hdmi_edid, "setedidcopy,2:"}};
    for (const auto& [block, command] : commands) {
        for (const char* text : {"", "hdmi", "copy", "a-b", " -", "%s %n", "3"}) {
            expect_cases(*block,
                         {{"copy_edid", json_text(text), "mcu " + command + text + "\npause 1\n"}});
        }
        expect_nothing_sent(*block, "copy_edid", {"\"-\"", "\"--\"", "\"-copy\"", "\"- hdmi\""});
    }
}

TEST_F(EdidAndHdcpSections, CopyEdidIsAText) {
    for (const Block* block : edid_blocks) {
        expect_nothing_sent(*block, "copy_edid", every_json_value_but(texts_of_every_json_value));
    }
}

TEST_F(EdidAndHdcpSections, PredefinedSendsTheCodeOfItsDescription) {
    const std::pair<const char*, int> descriptions[] = {
        {"1920x1080@60 8bit Stereo", 1},
        {"1920x1080@60Hz 8bit Stereo", 1},
        {"1920x1080@60 8bit stereo", 1},
        {"1920x1080@60hz 8bit stereo", 1},
        {"1920x1080@60 8bit High Definition Audio", 2},
        {"1920x1080@60Hz 8bit High Definition Audio", 2},
        {"1920x1080@60 8bit high definition audio", 2},
        {"1920x1080@60hz 8bit high definition audio", 2},
        {"3840x2160@30Hz 8bit Stereo Audio", 3},
        {"3840x2160@30hz 8bit stereo audio", 3},
        {"3840x2160@30Hz Deep Color High Definition Audio", 4},
        {"3840x2160@30hz deep color high definition audio", 4},
        {"3840x2160@60Hz 4:2:0 Deep Color Stereo Audio", 5},
        {"3840x2160@60hz 4:2:0 deep color stereo audio", 5},
        {"3840x2160@60Hz Deep Color Stereo Audio", 6},
        {"3840x2160@60hz deep color stereo audio", 6},
        {"3840x2160@60Hz Deep Color High Definition Audio", 7},
        {"3840x2160@60hz deep color high definition audio", 7},
        {"3840x2160@60Hz Deep Color HDR LPCM 6CH", 8},
        {"3840x2160@60hz deep color hdr lpcm 6ch", 8},
        {"User Defined", 9},
        {"user defined", 9},
    };
    for (const auto& [description, code] : descriptions) {
        const std::string text = json_text(description);
        const std::string number = std::to_string(code);
        expect_cases(decoder_edid, {{"predefined", text, "mcu setedid," + number + "\npause 1\n"}});
        expect_cases(hdmi_encoder_edid,
                     {{"predefined", text, "mcu setedid," + number + "\npause 1\n"}});
        expect_cases(usbc_edid, {{"predefined", text, "mcu setedid,1:" + number + "\npause 1\n"}});
        expect_cases(usbc_hdmi_edid,
                     {{"predefined", text, "mcu setedid,2:" + number + "\npause 1\n"}});
    }
}

TEST_F(EdidAndHdcpSections, PredefinedOfNoUseSendsNothing) {
    std::vector<std::string> wrong = every_json_value;
    wrong.insert(
        wrong.end(),
        {"1", "3", "9", "\"1\"", "\"1920X1080@60Hz 8bit Stereo\"", "\"1920x1080@60HZ 8bit Stereo\"",
         "\"USER DEFINED\"", "\"User defined\"", "\"user defined \"",
         "\"3840x2160@60Hz 4:2:0 deep color stereo audio\"", "\"3840x2160@30 8bit Stereo Audio\""});
    for (const Block* block : edid_blocks) {
        expect_nothing_sent(*block, "predefined", wrong);
    }
}

TEST_F(EdidAndHdcpSections, UploadEdidNameIsStoredBetweenQuotesAsItStands) {
    const std::string name = R"(a b%s'$(x))";
    const std::string long_name(4000, 'n');
    for (const std::string& each : {name, long_name}) {
        const std::string second = "shell astparam s edid_user_defined2 " + json_text(each) + "\n";
        const std::string first =
            "shell astparam s edid_user_defined1 " + json_text(each) + "\npause 1\n";
        expect_cases(decoder_edid, {{"upload_edid_name", json_text(each), second}});
        expect_cases(hdmi_encoder_edid,
                     {{"upload_edid_name", json_text(each), second + "pause 1\n"}});
        expect_cases(usbc_edid, {{"upload_edid_name", json_text(each), first}});
        expect_cases(usbc_hdmi_edid, {{"upload_edid_name", json_text(each), first}});
    }
    expect_cases(decoder_edid, {{"upload_edid_name", R"("a\"b\\")",
                                 "shell astparam s edid_user_defined2 \"a\"b\\\"\n"}});
}

TEST_F(EdidAndHdcpSections, UploadEdidNameIsATextThatIsNotEmpty) {
    for (const Block* block : edid_blocks) {
        expect_nothing_sent(*block, "upload_edid_name",
                            every_json_value_but({"\"x\"", "\"5\"", "\"-\""}));
    }
}

// --- HDCP ----------------------------------------------------------------------------------------

const Block decoder_hdcp = {
    "decoder",   apply_decoder_hdcp_section,
    "{",         "}",
    "pause 1\n", {{"local_hdmi_compatibility", "pause 1\n"}, {"output_hdcp_mode", ""}},
    ""};
const Block hdmi_encoder_hdcp = {"HDMI encoder",
                                 apply_hdmi_encoder_hdcp_section,
                                 "{",
                                 "}",
                                 "pause 1\n",
                                 {{"hdmi_compatibility", "pause 1\n"}, {"output_hdcp_mode", ""}},
                                 ""};
const Block usbc_encoder_hdcp = {"USB-C encoder",
                                 apply_usbc_encoder_hdcp_section,
                                 "{",
                                 "}",
                                 "pause 1\n",
                                 {{"hdmi_compatibility", "pause 1\n"},
                                  {"usbc_compatibility", "pause 1\n"},
                                  {"output_hdcp_mode", ""}},
                                 ""};

const Block* const hdcp_blocks[] = {&decoder_hdcp, &hdmi_encoder_hdcp, &usbc_encoder_hdcp};

TEST_F(EdidAndHdcpSections, FullHdcpSectionsAreAppliedInOrder) {
    const std::string decoder_trace =
        trace_of(apply_decoder_hdcp_section,
                 R"({"output_hdcp_mode": "hdcp 2.2", "local_hdmi_compatibility": true})");
    EXPECT_EQ(decoder_trace, "pause 1\nmcu hdcpadvertising,on\npause 1\nmcu hdcp2x,on\npause 1\n");
    EXPECT_EQ(seconds_of(decoder_trace), 3U);
    const std::string hdmi_trace =
        trace_of(apply_hdmi_encoder_hdcp_section,
                 R"({"output_hdcp_mode": "hdcp 1.4", "hdmi_compatibility": false})");
    EXPECT_EQ(hdmi_trace, "pause 1\nmcu hdcpadvertising,off\npause 1\nmcu hdcp1x,on\npause 1\n");
    EXPECT_EQ(seconds_of(hdmi_trace), 3U);
    const std::string usbc_trace =
        trace_of(apply_usbc_encoder_hdcp_section,
                 R"({"output_hdcp_mode": "follow display", "usbc_compatibility": true,
            "hdmi_compatibility": true})");
    EXPECT_EQ(usbc_trace,
              "pause 1\n"
              "mcu hdcpadvertising,2:on\n"
              "pause 1\n"
              "mcu hdcpadvertising,1:on\n"
              "pause 1\n"
              "mcu hdcpfollowdisplay\n"
              "pause 1\n");
    EXPECT_EQ(seconds_of(usbc_trace), 4U);
}

TEST_F(EdidAndHdcpSections, EmptyOrWronglyTypedHdcpTakesTheConstantPausesOnly) {
    for (const Block* block : hdcp_blocks) {
        for (const char* section : {"{}", "[]", "true", "null", "3", "\"output_hdcp_mode\"",
                                    R"([{"hdmi_compatibility":true}])"}) {
            EXPECT_EQ(trace_of(block->apply, section), expected_in(*block, "", ""))
                << block->name << ": " << section;
        }
    }
    EXPECT_EQ(trace_of(apply_decoder_hdcp_section, "{}"), "pause 1\npause 1\n");
    EXPECT_EQ(trace_of(apply_usbc_encoder_hdcp_section, "{}"), "pause 1\npause 1\npause 1\n");
}

struct Compatibility {
    const Block* block;
    const char* key;
    std::string on;
    std::string off;
};

const Compatibility compatibilities[] = {
    {&decoder_hdcp, "local_hdmi_compatibility", "hdcpadvertising,on", "hdcpadvertising,off"},
    {&hdmi_encoder_hdcp, "hdmi_compatibility", "hdcpadvertising,on", "hdcpadvertising,off"},
    {&usbc_encoder_hdcp, "hdmi_compatibility", "hdcpadvertising,2:on", "hdcpadvertising,2:off"},
    {&usbc_encoder_hdcp, "usbc_compatibility", "hdcpadvertising,1:on", "hdcpadvertising,1:off"},
};

TEST_F(EdidAndHdcpSections, CompatibilitySendsOnOrOffAndOtherwiseAnEmptyCommand) {
    for (const Compatibility& each : compatibilities) {
        expect_cases(*each.block, {{each.key, "true", "mcu " + each.on + "\npause 1\n"},
                                   {each.key, "false", "mcu " + each.off + "\npause 1\n"}});
        for (const std::string& value : every_json_value_but({"true", "false"})) {
            expect_cases(*each.block, {{each.key, value, "mcu \npause 1\n"}});
        }
    }
}

TEST_F(EdidAndHdcpSections, CompatibilityIsLookedUpByExactCaseAndByItsModelOnly) {
    expect_nothing_sent(decoder_hdcp, "Local_hdmi_compatibility", {"true", "3"});
    expect_nothing_sent(decoder_hdcp, "hdmi_compatibility", {"true", "3"});
    expect_nothing_sent(hdmi_encoder_hdcp, "HDMI_compatibility", {"true", "3"});
    expect_nothing_sent(hdmi_encoder_hdcp, "usbc_compatibility", {"true", "3"});
    expect_nothing_sent(usbc_encoder_hdcp, "Hdmi_compatibility", {"true", "3"});
    expect_nothing_sent(usbc_encoder_hdcp, "USBC_compatibility", {"true", "3"});
    expect_nothing_sent(usbc_encoder_hdcp, "local_hdmi_compatibility", {"true", "3"});
}

TEST_F(EdidAndHdcpSections, OutputHdcpModeSendsTheCommandOfItsWordOrNumber) {
    for (const Block* block : hdcp_blocks) {
        expect_cases(
            *block, {{"output_hdcp_mode", "\"follow display\"", "mcu hdcpfollowdisplay\npause 1\n"},
                     {"output_hdcp_mode", "1", "mcu hdcpfollowdisplay\npause 1\n"},
                     {"output_hdcp_mode", "1.9", "mcu hdcpfollowdisplay\npause 1\n"},
                     {"output_hdcp_mode", "\"hdcp 1.4\"", "mcu hdcp1x,on\npause 1\n"},
                     {"output_hdcp_mode", "2", "mcu hdcp1x,on\npause 1\n"},
                     {"output_hdcp_mode", "\"hdcp 2.2\"", "mcu hdcp2x,on\npause 1\n"},
                     {"output_hdcp_mode", "3", "mcu hdcp2x,on\npause 1\n"}});
        EXPECT_EQ(trace_in(*block, member("Output_HDCP_Mode", "3")),
                  expected_in(*block, "output_hdcp_mode", "mcu hdcp2x,on\npause 1\n"));
    }
}

TEST_F(EdidAndHdcpSections, TheEmptyHdcpModeIsAWordOfTheTablesAlthoughItSetsNothing) {
    for (const SectionTable* table :
         {&decoder_hdcp_table, &hdmi_encoder_hdcp_table, &usbc_encoder_hdcp_table}) {
        const Word* word = find_word("", row_of(*table, "output_hdcp_mode").words);
        ASSERT_NE(word, nullptr);
        EXPECT_EQ(word->code, 0);
        EXPECT_EQ(word->text, nullptr);
    }
}

TEST_F(EdidAndHdcpSections, OutputHdcpModeOfNoUseSendsNothingAndTakesNoPause) {
    std::vector<std::string> wrong = every_json_value;
    wrong.insert(wrong.end(), {"4", "2147483647", "-1e99", "\"HDCP 2.2\"", "\"Follow display\"",
                               "\"hdcp 2.2 \"", "\"3\"", "\"hdcp2x,on\""});
    for (const Block* block : hdcp_blocks) {
        expect_nothing_sent(*block, "output_hdcp_mode", wrong);
    }
}

}  // namespace
