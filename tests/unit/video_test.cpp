#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/rows.h"
#include "unitconf/sections.h"

namespace {

using Apply = void (*)(const cJSON* section);

struct Model {
    const char* name;
    Apply apply;
    IdleRows rows;
};

const Model decoder_model = {"decoder",
                             apply_decoder_video_section,
                             {{"stream_number", "pause 1\n"},
                              {"video_mute", "pause 1\n"},
                              {"latency_mode", ""},
                              {"output_scaling", "pause 1\n"},
                              {"output_selection", "pause 1\n"},
                              {"auto_switching_enable", "pause 1\n"},
                              {"auto_switching_prio", "pause 1\n"},
                              {"color_space", "pause 1\n"},
                              {"cast_mode", ""},
                              {"hdmi_out_enable", "pause 1\n"},
                              {"no_stream_setting", "pause 1\n"}}};

const Model hdmi_encoder_model = {"HDMI encoder",
                                  apply_hdmi_encoder_video_section,
                                  {{"stream_number", "pause 1\n"},
                                   {"video_mute_stream", "pause 1\n"},
                                   {"latency_mode", "pause 1\n"},
                                   {"color_space", "pause 1\n"},
                                   {"hdmi_loopout", "pause 1\n"},
                                   {"enable", "pause 1\n"},
                                   {"cast_mode", ""},
                                   {"custom_multicast_address", "pause 1\n"},
                                   {"custom_multicast", ""}}};

const Model usbc_encoder_model = {"USB-C encoder",
                                  apply_usbc_encoder_video_section,
                                  {{"stream_number", "pause 1\n"},
                                   {"video_mute_stream", "pause 1\n"},
                                   {"latency_mode", "pause 1\n"},
                                   {"color_space", "pause 1\n"},
                                   {"hdmi_loopout", "pause 1\n"},
                                   {"usbc_charging_enable", "pause 1\n"},
                                   {"auto_switching_enable", "pause 1\n"},
                                   {"auto_switching_prio", "pause 1\n"},
                                   {"source_selection", "pause 1\n"},
                                   {"enable", "pause 3\n"},
                                   {"cast_mode", ""},
                                   {"custom_multicast_address", "pause 1\n"},
                                   {"custom_multicast", ""}}};

const Model* const models[] = {&decoder_model, &hdmi_encoder_model, &usbc_encoder_model};
const Model* const encoders[] = {&hdmi_encoder_model, &usbc_encoder_model};

class VideoSection : public testing::Test {
  protected:
    void SetUp() override {
        reset_recorder();
    }
};

std::string document(const std::string& key, const std::string& value) {
    return "{\"" + key + "\":" + value + "}";
}

void expect_cases(const Model& model, const std::vector<RowCase>& cases) {
    for (const RowCase& each : cases) {
        EXPECT_EQ(trace_of(model.apply, document(each.key, each.value)),
                  snapshot_trace + trace_with(model.rows, each.key, each.trace))
            << model.name << ": " << each.key << " " << each.value;
    }
}

void expect_nothing_sent(const Model& model, const std::string& key,
                         const std::vector<std::string>& values) {
    for (const std::string& value : values) {
        EXPECT_EQ(trace_of(model.apply, document(key, value)),
                  snapshot_trace + idle_trace(model.rows))
            << model.name << ": " << key << " " << value;
    }
}

// --- Whole sections
// -------------------------------------------------------------------------------

TEST_F(VideoSection, FullDecoderDocumentIsAppliedInOrderAndCosts15Seconds) {
    set_rw_value("v_eng_drv_option", "0x80000000");
    const std::string trace = trace_of(apply_decoder_video_section, R"({
        "no_stream_setting": "image", "hdmi_out_enable": true, "cast_mode": "multicast",
        "color_space": "auto", "auto_switching_prio": "prio hdmi, stream",
        "auto_switching_enable": false, "output_selection": "enc stream",
        "output_scaling": "3840x2160p60", "latency_mode": "normal", "video_mute": false,
        "stream_number": "11"})");
    EXPECT_EQ(trace, snapshot_trace +
                         "shell e e_reconnect::11::v\n"
                         "pause 3\n"
                         "pause 1\n"
                         "mcu videomute,off\n"
                         "pause 1\n"
                         "shell astparam s v_eng_drv_option 0x80100000;"
                         "echo 0 > /sys/devices/platform/videoip/ull\n"
                         "pause 1\n"
                         "shell astparam s v_output_timing_convert 8100006A;"
                         "lmparam s V_OUTPUT_TIMING_CONVERT 8100006A;\n"
                         "pause 1\n"
                         "pause 1\n"
                         "mcu set,1\n"
                         "pause 1\n"
                         "mcu autoswitch,off\n"
                         "pause 1\n"
                         "mcu autoswitchprio,1\n"
                         "pause 1\n"
                         "mcu setcolorspace,0\n"
                         "pause 1\n"
                         "shell astparam s multicast_on y;lmparam s MULTICAST_ON y;"
                         "e e_chg_multicast_mode 1;\n"
                         "pause 1\n"
                         "mcu hdmiout,on\n"
                         "pause 1\n"
                         "pause 1\n");
    EXPECT_EQ(seconds_of(trace), 15U);
}

TEST_F(VideoSection, FullHdmiEncoderDocumentIsAppliedInOrderAndCosts13Seconds) {
    set_rw_value("v_eng_drv_option", "0x80100000");
    const std::string trace = trace_of(apply_hdmi_encoder_video_section, R"({
        "custom_multicast": true, "custom_multicast_address": "239.20.20.12",
        "cast_mode": "multicast", "enable": true, "hdmi_loopout": true, "color_space": "ycbcr",
        "latency_mode": "ull", "video_mute_stream": false, "stream_number": "12"})");
    EXPECT_EQ(trace, snapshot_trace +
                         "shell astparam s ch_select 12\n"
                         "pause 3\n"
                         "pause 1\n"
                         "mcu videomute,off\n"
                         "pause 1\n"
                         "shell astparam s v_eng_drv_option 0x80000000;"
                         "echo 1 > /sys/devices/platform/videoip/ull\n"
                         "pause 1\n"
                         "mcu setcolorspace,2\n"
                         "pause 1\n"
                         "mcu hdmiloop,on\n"
                         "pause 1\n"
                         "shell astparam s streamEnable 1;\n"
                         "pause 1\n"
                         "shell astparam s multicast_on y;\n"
                         "pause 3\n"
                         "shell astparam s cus_multicast_address 239.20.20.12 > /dev/null 2>&1\n"
                         "pause 1\n"
                         "shell astparam s cus_multicast_enable 1;\n");
    EXPECT_EQ(seconds_of(trace), 13U);
}

TEST_F(VideoSection, FullUsbcEncoderDocumentIsAppliedInOrderAndCosts19Seconds) {
    set_rw_value("v_eng_drv_option", "0x00000000");
    const std::string trace = trace_of(apply_usbc_encoder_video_section, R"({
        "custom_multicast": true, "custom_multicast_address": "239.20.20.11",
        "cast_mode": "multicast", "enable": true, "source_selection": "usb-c",
        "auto_switching_prio": "prio usb-c, hdmi", "auto_switching_enable": true,
        "usbc_charging_enable": true, "hdmi_loopout": true, "color_space": "auto",
        "latency_mode": "normal", "video_mute_stream": false, "stream_number": "11"})");
    EXPECT_EQ(trace, snapshot_trace +
                         "shell astparam s ch_select 11\n"
                         "pause 3\n"
                         "pause 1\n"
                         "mcu videomute,off\n"
                         "pause 1\n"
                         "shell astparam s v_eng_drv_option 0x00100000;"
                         "echo 0 > /sys/devices/platform/videoip/ull\n"
                         "pause 1\n"
                         "mcu setcolorspace,0\n"
                         "pause 1\n"
                         "mcu hdmiloop,on\n"
                         "pause 1\n"
                         "mcu usbcpower,on\n"
                         "pause 1\n"
                         "mcu autoswitch,on\n"
                         "pause 1\n"
                         "mcu autoswitchprio,1\n"
                         "pause 1\n"
                         "mcu set,1\n"
                         "pause 1\n"
                         "shell astparam s streamEnable 1;\n"
                         "pause 3\n"
                         "shell astparam s multicast_on y;\n"
                         "pause 3\n"
                         "shell astparam s cus_multicast_address 239.20.20.11 > /dev/null 2>&1\n"
                         "pause 1\n"
                         "shell astparam s cus_multicast_enable 1;\n");
    EXPECT_EQ(seconds_of(trace), 19U);
}

TEST_F(VideoSection, EmptyOrWronglyTypedSectionTakesTheConstantPausesOnly) {
    for (const Model* model : models) {
        for (const char* section : {"{}", "[]", "true", "null", "3", "\"stream_number\"",
                                    "[{\"stream_number\":\"1\"}]"}) {
            EXPECT_EQ(trace_of(model->apply, section), snapshot_trace + idle_trace(model->rows))
                << model->name << ": " << section;
        }
    }
    EXPECT_EQ(seconds_of(idle_trace(decoder_model.rows)), 9U);
    EXPECT_EQ(seconds_of(idle_trace(hdmi_encoder_model.rows)), 7U);
    EXPECT_EQ(seconds_of(idle_trace(usbc_encoder_model.rows)), 13U);
}

TEST_F(VideoSection, AnAbsentSectionIsAsAnEmptyOne) {
    apply_decoder_video_section(nullptr);
    EXPECT_EQ(recorded_trace(), snapshot_trace + idle_trace(decoder_model.rows));
}

TEST_F(VideoSection, MembersOfOtherModelsAreNotKnown) {
    expect_nothing_sent(
        hdmi_encoder_model, "enable",
        {R"(1,"usbc_charging_enable":true)", R"(1,"auto_switching_enable":true)",
         R"(1,"auto_switching_prio":1)", R"(1,"source_selection":1)", R"(1,"video_mute":true)"});
    expect_nothing_sent(decoder_model, "video_mute",
                        {R"(1,"video_mute_stream":true)", R"(1,"hdmi_loopout":true)",
                         R"(1,"enable":true)", R"(1,"source_selection":1)",
                         R"(1,"custom_multicast_address":"a","custom_multicast":true)"});
    expect_nothing_sent(usbc_encoder_model, "enable",
                        {R"(1,"video_mute":true)", R"(1,"output_scaling":2)",
                         R"(1,"output_selection":1)", R"(1,"hdmi_out_enable":true)"});
}

TEST_F(VideoSection, TablesNameEveryMemberInOrder) {
    EXPECT_EQ(keys_of(decoder_video_table), keys_of(decoder_model.rows));
    EXPECT_EQ(keys_of(hdmi_encoder_video_table), keys_of(hdmi_encoder_model.rows));
    EXPECT_EQ(keys_of(usbc_encoder_video_table), keys_of(usbc_encoder_model.rows));
}

// --- Booleans
// -------------------------------------------------------------------------------------

TEST_F(VideoSection, BooleansSendOneOfTwoCommands) {
    expect_cases(decoder_model,
                 {
                     {"video_mute", "true", "mcu videomute,on\npause 1\n"},
                     {"video_mute", "false", "mcu videomute,off\npause 1\n"},
                     {"auto_switching_enable", "true", "mcu autoswitch,on\npause 1\n"},
                     {"auto_switching_enable", "false", "mcu autoswitch,off\npause 1\n"},
                     {"hdmi_out_enable", "true", "mcu hdmiout,on\npause 1\n"},
                     {"hdmi_out_enable", "false", "mcu hdmiout,off\npause 1\n"},
                 });
    for (const Model* encoder : encoders) {
        expect_cases(*encoder, {
                                   {"video_mute_stream", "true", "mcu videomute,on\npause 1\n"},
                                   {"video_mute_stream", "false", "mcu videomute,off\npause 1\n"},
                                   {"hdmi_loopout", "true", "mcu hdmiloop,on\npause 1\n"},
                                   {"hdmi_loopout", "false", "mcu hdmiloop,off\npause 1\n"},
                               });
    }
    expect_cases(hdmi_encoder_model,
                 {
                     {"enable", "true", "shell astparam s streamEnable 1;\npause 1\n"},
                     {"enable", "false", "shell astparam s streamEnable 0;\npause 1\n"},
                 });
    expect_cases(usbc_encoder_model,
                 {
                     {"usbc_charging_enable", "true", "mcu usbcpower,on\npause 1\n"},
                     {"usbc_charging_enable", "false", "mcu usbcpower,off\npause 1\n"},
                     {"auto_switching_enable", "true", "mcu autoswitch,on\npause 1\n"},
                     {"auto_switching_enable", "false", "mcu autoswitch,off\npause 1\n"},
                     {"enable", "true", "shell astparam s streamEnable 1;\npause 3\n"},
                     {"enable", "false", "shell astparam s streamEnable 0;\npause 3\n"},
                 });
}

TEST_F(VideoSection, BooleansOfAnotherTypeOrInAnotherCaseSendNothing) {
    const std::vector<std::string> wrong = every_json_value_but({"true", "false"});
    for (const char* key : {"video_mute", "auto_switching_enable", "hdmi_out_enable"}) {
        expect_nothing_sent(decoder_model, key, wrong);
    }
    for (const char* key : {"video_mute_stream", "hdmi_loopout", "enable"}) {
        expect_nothing_sent(hdmi_encoder_model, key, wrong);
    }
    for (const char* key : {"video_mute_stream", "hdmi_loopout", "usbc_charging_enable",
                            "auto_switching_enable", "enable"}) {
        expect_nothing_sent(usbc_encoder_model, key, wrong);
    }
    for (const char* key : {"Video_Mute", "AUTO_SWITCHING_ENABLE", "HDMI_out_enable"}) {
        expect_nothing_sent(decoder_model, key, {"true", "false"});
    }
    for (const Model* encoder : encoders) {
        for (const char* key : {"Video_mute_stream", "HDMI_loopout", "Enable",
                                "USBC_charging_enable", "Auto_switching_enable"}) {
            expect_nothing_sent(*encoder, key, {"true", "false"});
        }
    }
}

// --- Choices
// --------------------------------------------------------------------------------------

struct ChoiceRow {
    const Model* model;
    std::string key;
    std::string command;
    std::vector<std::pair<std::string, int>> words;
};

const std::vector<ChoiceRow> choice_rows = {
    {&decoder_model, "output_selection", "set,", {{"", 0}, {"enc stream", 1}, {"hdmi", 2}}},
    {&decoder_model,
     "auto_switching_prio",
     "autoswitchprio,",
     {{"last connect", 0}, {"prio hdmi, stream", 1}}},
    {&decoder_model, "color_space", "setcolorspace,", {{"auto", 0}, {"rgb", 1}, {"ycbcr", 2}}},
    {&hdmi_encoder_model, "color_space", "setcolorspace,", {{"auto", 0}, {"rgb", 1}, {"ycbcr", 2}}},
    {&usbc_encoder_model, "color_space", "setcolorspace,", {{"auto", 0}, {"rgb", 1}, {"ycbcr", 2}}},
    {&usbc_encoder_model,
     "auto_switching_prio",
     "autoswitchprio,",
     {{"last connect", 0}, {"prio usb-c, hdmi", 1}, {"prio hdmi, usb-c", 2}}},
    {&usbc_encoder_model, "source_selection", "set,", {{"", 0}, {"usb-c", 1}, {"hdmi", 2}}},
};

TEST_F(VideoSection, ChoicesTakeTheirWordsAndNumbersOf0OrMore) {
    for (const ChoiceRow& row : choice_rows) {
        std::vector<RowCase> cases = {
            {row.key, "0", "mcu " + row.command + "0\npause 1\n"},
            {row.key, "5", "mcu " + row.command + "5\npause 1\n"},
            {row.key, "1.9", "mcu " + row.command + "1\npause 1\n"},
            {row.key, "-0.5", "mcu " + row.command + "0\npause 1\n"},
            {row.key, "2147483647", "mcu " + row.command + "2147483647\npause 1\n"},
            {row.key, "1e99", "mcu " + row.command + "2147483647\npause 1\n"},
        };
        for (const auto& [word, code] : row.words) {
            cases.push_back({row.key, json_text(word),
                             "mcu " + row.command + std::to_string(code) + "\npause 1\n"});
        }
        expect_cases(*row.model, cases);
    }
}

TEST_F(VideoSection, ChoicesSkipOtherWordsNegativeNumbersAndOtherTypes) {
    for (const ChoiceRow& row : choice_rows) {
        std::vector<std::string> wrong = every_json_value_but({"0", "7", "-0.5", "1e99", "\"\""});
        wrong.insert(wrong.end(), {"-2147483648", "-1e99", "\"HDMI\"", "\"Auto\"", "\"RGB\"",
                                   "\" hdmi\"", "\"hdmi \"", "\"1\"", "\"Last connect\""});
        if (!row.words[0].first.empty()) {
            wrong.push_back("\"\"");
        }
        expect_nothing_sent(*row.model, row.key, wrong);
    }
}

TEST_F(VideoSection, WordsOfAnotherModelAreUnknown) {
    expect_nothing_sent(decoder_model, "output_selection", {"\"usb-c\"", "\"stream\""});
    expect_nothing_sent(decoder_model, "auto_switching_prio",
                        {"\"prio usb-c, hdmi\"", "\"prio hdmi, usb-c\""});
    expect_nothing_sent(usbc_encoder_model, "auto_switching_prio", {"\"prio hdmi, stream\""});
    expect_nothing_sent(usbc_encoder_model, "source_selection", {"\"enc stream\"", "\"USB-C\""});
}

// --- The stream
// -----------------------------------------------------------------------------------

TEST_F(VideoSection, StreamNumberPausesThreeSecondsThenOneWhenSent) {
    expect_cases(decoder_model,
                 {
                     {"stream_number", "\"5\"", "shell e e_reconnect::5::v\npause 3\npause 1\n"},
                     {"stream_number", R"("a b;%s %n\"")",
                      "shell e e_reconnect::a b;%s %n\"::v\npause 3\npause 1\n"},
                 });
    expect_cases(
        usbc_encoder_model,
        {
            {"stream_number", "\"0012\"", "shell astparam s ch_select 0012\npause 3\npause 1\n"},
            {"stream_number", "\"12a and more than four\"",
             "shell astparam s ch_select 12a and more than four\npause 3\npause 1\n"},
        });
}

TEST_F(VideoSection, StreamNumberIsATextThatIsNotEmpty) {
    for (const Model* model : models) {
        expect_nothing_sent(*model, "stream_number",
                            every_json_value_but({"\"x\"", "\"5\"", "\"-\""}));
    }
}

TEST_F(VideoSection, StreamNumberOfAnHdmiEncoderIsDigitsInALineOf25Characters) {
    expect_cases(
        hdmi_encoder_model,
        {
            {"stream_number", "\"0\"", "shell astparam s ch_select 0\npause 3\npause 1\n"},
            {"stream_number", "\"9\"", "shell astparam s ch_select 9\npause 3\npause 1\n"},
            {"stream_number", "\"0012\"", "shell astparam s ch_select 0012\npause 3\npause 1\n"},
            {"stream_number", "\"12345\"", "shell astparam s ch_select 1234\npause 3\npause 1\n"},
            {"stream_number", json_text(std::string(3000, '7')),
             "shell astparam s ch_select 7777\npause 3\npause 1\n"},
        });
    expect_nothing_sent(hdmi_encoder_model, "stream_number",
                        {"\"12a\"", "\"a12\"", "\"\"", "\" 1\"", "\"1 \"", "\"-1\"", "\"1.5\"",
                         "\"12345a\"", "\"/\"", "\":\"", "12"});
}

TEST_F(VideoSection, ALongStreamNumberMakesALongLineThatIsRunWhole) {
    const std::string number(5000, '7');
    expect_cases(decoder_model, {{"stream_number", json_text(number),
                                  "shell e e_reconnect::" + number + "::v\npause 3\npause 1\n"}});
}

TEST_F(VideoSection, KeysOfTextsAndNumbersIgnoreCase) {
    EXPECT_EQ(trace_of(apply_decoder_video_section, R"({"STREAM_Number":"5"})"),
              snapshot_trace + trace_with(decoder_model.rows, "stream_number",
                                          "shell e e_reconnect::5::v\npause 3\npause 1\n"));
    EXPECT_EQ(trace_of(apply_hdmi_encoder_video_section, R"({"Cast_Mode":"unicast"})"),
              snapshot_trace + trace_with(hdmi_encoder_model.rows, "cast_mode",
                                          "shell astparam s multicast_on n;\npause 3\n"));
    EXPECT_EQ(trace_of(apply_usbc_encoder_video_section, R"({"Source_Selection":2})"),
              snapshot_trace +
                  trace_with(usbc_encoder_model.rows, "source_selection", "mcu set,2\npause 1\n"));
    EXPECT_EQ(trace_of(apply_decoder_video_section, R"({"Latency_Mode":2})"),
              snapshot_trace + trace_with(decoder_model.rows, "latency_mode", "shell \npause 1\n"));
}

// --- Latency
// --------------------------------------------------------------------------------------

std::string ultra_low(const std::string& option) {
    return "shell astparam s v_eng_drv_option " + option +
           ";echo 1 > /sys/devices/platform/videoip/ull\n";
}

std::string normal(const std::string& option) {
    return "shell astparam s v_eng_drv_option " + option +
           ";echo 0 > /sys/devices/platform/videoip/ull\n";
}

TEST_F(VideoSection, LatencySetsOneDigitOfTheEngineOptionThatTheUnitHolds) {
    struct Case {
        const char* present;
        const char* for_ultra_low;
        const char* for_normal;
    };
    const Case cases[] = {
        {"0x80000000", "0x80000000", "0x80100000"},
        {"0x80100000", "0x80000000", "0x80100000"},
        {"0x00100000", "0x00000000", "0x00100000"},
        {"0x00000000", "0x00000000", "0x00100000"},
        {"0x0", "0x00000000", "0x00100000"},
        {"0x8", "0x80000000", "0x80100000"},
        {"", "0x00000000", "0x00100000"},
        {"0xC0F00001", "0xC0000001", "0xC0100001"},
        {"0x8010000", "0x8000000", "0x8010000"},
        {"0x80f", "0x800", "0x801"},
        {"0x80", "0x800", "0x801"},  // of four characters: one longer
        {"0x1", "0x1", "0x1"},       // of fewer: the digit does not show
        {"8", "8", "8"},
        {"0X8", "0X8", "0X8"},
    };
    for (const Case& each : cases) {
        for (const Model* model : models) {
            reset_recorder();
            set_rw_value("v_eng_drv_option", each.present);
            const std::string none = each.present;
            for (const char* value : {"0", "\"ull\"", "-0.5", "0.9"}) {
                EXPECT_EQ(trace_of(model->apply, document("latency_mode", value)),
                          snapshot_trace + trace_with(model->rows, "latency_mode",
                                                      ultra_low(each.for_ultra_low) + "pause 1\n"))
                    << model->name << ", " << none << ": " << value;
            }
            for (const char* value : {"1", "\"normal\"", "1.9"}) {
                EXPECT_EQ(trace_of(model->apply, document("latency_mode", value)),
                          snapshot_trace + trace_with(model->rows, "latency_mode",
                                                      normal(each.for_normal) + "pause 1\n"))
                    << model->name << ", " << none << ": " << value;
            }
        }
    }
}

TEST_F(VideoSection, LatencyOfAUnitWithoutStoresStartsFromZero) {
    for (const Model* model : models) {
        expect_cases(*model, {{"latency_mode", "\"ull\"", ultra_low("0x00000000") + "pause 1\n"},
                              {"latency_mode", "\"normal\"", normal("0x00100000") + "pause 1\n"}});
    }
}

TEST_F(VideoSection, LatencyOptionOfTheLongestValueIsStoredWhole) {
    const std::string tail(1018, 'f');
    set_rw_value("v_eng_drv_option", "0x80f" + tail);
    expect_cases(decoder_model, {{"latency_mode", "1", normal("0x801" + tail) + "pause 1\n"}});
}

TEST_F(VideoSection, LatencyNumberOfNoModeRunsAnEmptyLine) {
    for (const Model* model : models) {
        expect_cases(*model, {{"latency_mode", "2", "shell \npause 1\n"},
                              {"latency_mode", "7", "shell \npause 1\n"},
                              {"latency_mode", "2147483647", "shell \npause 1\n"},
                              {"latency_mode", "1e99", "shell \npause 1\n"}});
    }
}

TEST_F(VideoSection, LatencyOfNoUseSendsNothingAndCostsTheDecoderNoPause) {
    std::vector<std::string> wrong = every_json_value_but({"0", "7", "-0.5", "1e99"});
    wrong.insert(wrong.end(),
                 {"-2", "-1e99", "\"ULL\"", "\"Normal\"", "\"ull \"", "\"0\"", "\"1\""});
    for (const Model* model : models) {
        expect_nothing_sent(*model, "latency_mode", wrong);
    }
    EXPECT_EQ(idle_trace_of(decoder_model.rows, "latency_mode"), "");
}

// --- Output scaling
// -------------------------------------------------------------------------------

TEST_F(VideoSection, OutputScalingSetsTheTimingCodeOfItsWordOrNumber) {
    struct Scaling {
        const char* word;
        int number;
        const char* timing;
    };
    const Scaling scalings[] = {
        {"pass through(strict)", 1, "10000000"},
        {"720p50", 2, "81000025"},
        {"720p60", 3, "81000026"},
        {"1080p24", 4, "8100001D"},
        {"1080p30", 5, "8100002D"},
        {"1080p50", 6, "8100002E"},
        {"1080p60", 7, "8100002F"},
        {"1366x768p60", 8, "81004049"},
        {"1440x900p60", 9, "81004021"},
        {"1400x1050p60", 10, "8100401D"},
        {"1600x900p60", 11, "8100404E"},
        {"1600x1200p60", 12, "81004025"},
        {"1920x1200p60", 13, "81004033"},
        {"2560x1440p60", 14, "810040A5"},
        {"3840x2160p24", 15, "81000067"},
        {"3840x2160p25", 16, "81000069"},
        {"3840x2160p30", 17, "8100006B"},
        {"3840x2160p50", 18, "81000068"},
        {"3840x2160p60", 19, "8100006A"},
        {"4096x2160p24", 20, "8100006C"},
        {"4096x2160p25", 21, "8100006E"},
        {"4096x2160p30", 22, "81000070"},
        {"4096x2160p50", 23, "8100006D"},
        {"4096x2160p60", 24, "8100006F"},
    };
    for (const Scaling& each : scalings) {
        const std::string sent = std::string("shell astparam s v_output_timing_convert ") +
                                 each.timing + ";lmparam s V_OUTPUT_TIMING_CONVERT " + each.timing +
                                 ";\npause 1\npause 1\n";
        expect_cases(decoder_model, {{"output_scaling", json_text(each.word), sent},
                                     {"output_scaling", std::to_string(each.number), sent},
                                     {"output_scaling", std::to_string(each.number) + ".5", sent}});
    }
}

TEST_F(VideoSection, OutputScalingPassThroughAndAnythingUnknownOnlyPauses) {
    std::vector<std::string> wrong = every_json_value_but({"7"});
    wrong.insert(wrong.end(),
                 {"\"pass through\"", "25", "29", "30", "2147483647", "-1e99", "\"1080P60\"",
                  "\"1080p60 \"", "\"Pass through(strict)\"", "\"7\"", "\"8100002F\""});
    expect_nothing_sent(decoder_model, "output_scaling", wrong);
}

TEST_F(VideoSection, PassThroughIsAWordOfTheTableAlthoughItSetsNothing) {
    const Word* word =
        find_word("pass through", row_of(decoder_video_table, "output_scaling").words);
    ASSERT_NE(word, nullptr);
    EXPECT_EQ(word->code, 0);
    EXPECT_EQ(word->text, nullptr);
}

// --- Multicast
// ------------------------------------------------------------------------------------

TEST_F(VideoSection, CastModeTakesTheFirstModeNamedAnywhereInTheText) {
    const std::string decoder_unicast =
        "shell astparam s multicast_on n;lmparam s MULTICAST_ON n;e e_chg_multicast_mode 0;\n"
        "pause 1\n";
    const std::string decoder_multicast =
        "shell astparam s multicast_on y;lmparam s MULTICAST_ON y;e e_chg_multicast_mode 1;\n"
        "pause 1\n";
    const std::string encoder_unicast = "shell astparam s multicast_on n;\npause 3\n";
    const std::string encoder_multicast = "shell astparam s multicast_on y;\npause 3\n";
    for (const char* text : {"\"unicast\"", "\"my unicast\"", "\"unicast(custom)\"",
                             "\"multicast or unicast\"", "\"unicast or multicast\""}) {
        expect_cases(decoder_model, {{"cast_mode", text, decoder_unicast}});
        for (const Model* encoder : encoders) {
            expect_cases(*encoder, {{"cast_mode", text, encoder_unicast}});
        }
    }
    for (const char* text :
         {"\"multicast\"", "\"multicast(custom)\"", "\"a multicast b\"", "\"unicas multicast\""}) {
        expect_cases(decoder_model, {{"cast_mode", text, decoder_multicast}});
        for (const Model* encoder : encoders) {
            expect_cases(*encoder, {{"cast_mode", text, encoder_multicast}});
        }
    }
}

TEST_F(VideoSection, CastModeOfNoUseSendsNothing) {
    std::vector<std::string> wrong = every_json_value;
    wrong.insert(wrong.end(),
                 {"\"broadcast\"", "\"Unicast\"", "\"MULTICAST\"", "\"unicas\"", "\"multicas\"",
                  "\"multi cast\"", "\"ulticast and more\"", "[\"unicast\"]"});
    for (const Model* model : models) {
        expect_nothing_sent(*model, "cast_mode", wrong);
    }
}

TEST_F(VideoSection, CustomMulticastIsAppliedAsAPairOnly) {
    for (const Model* encoder : encoders) {
        expect_nothing_sent(*encoder, "custom_multicast_address",
                            {"\"239.1.1.1\"", R"("239.1.1.1","custom":true)"});
        expect_nothing_sent(*encoder, "custom_multicast", {"true", "false"});
        EXPECT_EQ(
            trace_of(encoder->apply,
                     R"({"custom_multicast":false,"custom_multicast_address":"239.1.1.1"})"),
            snapshot_trace +
                trace_with(encoder->rows, "custom_multicast_address",
                           "shell astparam s cus_multicast_address 239.1.1.1 > /dev/null 2>&1\n"
                           "pause 1\n"
                           "shell astparam s cus_multicast_enable 0;\n"));
        EXPECT_EQ(
            trace_of(encoder->apply, R"({"custom_multicast":true,"custom_multicast_address":""})"),
            snapshot_trace + trace_with(encoder->rows, "custom_multicast_address",
                                        "shell astparam s cus_multicast_address  > /dev/null 2>&1\n"
                                        "pause 1\n"
                                        "shell astparam s cus_multicast_enable 1;\n"));
    }
}

TEST_F(VideoSection, CustomMulticastPartnersCountWhateverTheirType) {
    for (const Model* encoder : encoders) {
        for (const std::string& value : every_json_value_but({"true", "false"})) {
            EXPECT_EQ(
                trace_of(encoder->apply,
                         R"({"custom_multicast_address":"a","custom_multicast":)" + value + "}"),
                snapshot_trace +
                    trace_with(encoder->rows, "custom_multicast_address",
                               "shell astparam s cus_multicast_address a > /dev/null 2>&1\n"
                               "pause 1\n"))
                << encoder->name << ": " << value;
        }
        for (const std::string& value : every_json_value_but({"\"\"", "\"x\"", "\"5\"", "\"-\""})) {
            EXPECT_EQ(
                trace_of(encoder->apply,
                         R"({"custom_multicast":true,"custom_multicast_address":)" + value + "}"),
                snapshot_trace + trace_with(encoder->rows, "custom_multicast",
                                            "shell astparam s cus_multicast_enable 1;\n"))
                << encoder->name << ": " << value;
        }
    }
}

TEST_F(VideoSection, CustomMulticastSwitchIgnoresCaseOnTheUsbcEncoderOnly) {
    const std::string pair = R"({"Custom_Multicast":true,"CUSTOM_multicast_address":"a"})";
    EXPECT_EQ(trace_of(apply_hdmi_encoder_video_section, pair),
              snapshot_trace + idle_trace(hdmi_encoder_model.rows));
    EXPECT_EQ(
        trace_of(apply_usbc_encoder_video_section, pair),
        snapshot_trace + trace_with(usbc_encoder_model.rows, "custom_multicast_address",
                                    "shell astparam s cus_multicast_address a > /dev/null 2>&1\n"
                                    "pause 1\n"
                                    "shell astparam s cus_multicast_enable 1;\n"));
    EXPECT_EQ(
        trace_of(apply_hdmi_encoder_video_section,
                 R"({"custom_multicast":true,"CUSTOM_multicast_address":"a"})"),
        snapshot_trace + trace_with(hdmi_encoder_model.rows, "custom_multicast_address",
                                    "shell astparam s cus_multicast_address a > /dev/null 2>&1\n"
                                    "pause 1\n"
                                    "shell astparam s cus_multicast_enable 1;\n"));
}

TEST_F(VideoSection, NoStreamSettingNeverSendsAnything) {
    expect_nothing_sent(decoder_model, "no_stream_setting", every_json_value);
}

}  // namespace
