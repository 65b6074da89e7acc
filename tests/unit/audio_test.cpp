#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/blocks.h"
#include "unitconf/sections.h"

namespace {

using Apply = void (*)(const cJSON* section);
using Words = std::vector<std::pair<std::string, int>>;

class AudioSection : public testing::Test {
  protected:
    void SetUp() override {
        reset_recorder();
    }
};

// The rows of several members that are given together.
struct Given {
    std::string key;
    std::string trace;
};

std::string expected_with(const Block& block, const std::vector<Given>& given) {
    std::string all = block.before;
    for (const IdleRow& row : block.rows) {
        const std::string* trace = &row.trace;
        for (const Given& each : given) {
            trace = each.key == row.key ? &each.trace : trace;
        }
        all += *trace;
    }
    return all + block.behind;
}

const std::vector<std::string> numbers_of_every_json_value = {"0", "7", "-1", "-0.5", "1e99"};

// On the decoder: the pause at entry and those of "stream_audio" and "audio_stream_number".
const Block decoder_top = {"decoder",
                           apply_decoder_audio_section,
                           "{",
                           "}",
                           snapshot_trace + "pause 1\n",
                           {{"audio_follow_video", ""},
                            {"stream_audio", "pause 1\n"},
                            {"hdmi_audio", ""},
                            {"audio_stream_number", "pause 1\n"},
                            {"analog_audio", ""},
                            {"dante_aes67_tx", ""},
                            {"routing", ""}},
                           ""};
const Block decoder_hdmi = {"decoder, hdmi_audio",
                            apply_decoder_audio_section,
                            R"({"hdmi_audio":{)",
                            "}}",
                            snapshot_trace + "pause 1\npause 1\n",
                            {{"source", "pause 1\n"}, {"mute", ""}},
                            "pause 1\n"};

const IdleRows path_rows = {{"source", "pause 1\n"}, {"volume", "pause 1\n"}, {"mute", ""}};
const IdleRows stream_rows = {{"analog_priority", "pause 1\n"},
                              {"source", "pause 1\n"},
                              {"volume", "pause 1\n"},
                              {"mute", ""}};

const Block decoder_dante = {"decoder, dante_aes67_tx",
                             apply_decoder_audio_section,
                             R"({"dante_aes67_tx":{)",
                             "}}",
                             snapshot_trace + "pause 1\npause 1\npause 1\n",
                             path_rows,
                             ""};
// On the encoders: the pause at entry, then one behind each of the three objects, there or not.
const Block hdmi_encoder_stream = {"HDMI encoder, stream_audio", apply_hdmi_encoder_audio_section,
                                   R"({"stream_audio":{)",       "}}",
                                   snapshot_trace + "pause 1\n", stream_rows,
                                   "pause 1\npause 1\npause 1\n"};
const Block hdmi_encoder_dante = {"HDMI encoder, dante_aes67_tx",
                                  apply_hdmi_encoder_audio_section,
                                  R"({"dante_aes67_tx":{)",
                                  "}}",
                                  snapshot_trace + "pause 1\npause 1\npause 1\n",
                                  path_rows,
                                  "pause 1\n"};
const Block usbc_encoder_stream = {"USB-C encoder, stream_audio", apply_usbc_encoder_audio_section,
                                   R"({"stream_audio":{)",        "}}",
                                   snapshot_trace + "pause 1\n",  stream_rows,
                                   "pause 1\npause 1\npause 1\n"};
const Block usbc_encoder_dante = {"USB-C encoder, dante_aes67_tx",
                                  apply_usbc_encoder_audio_section,
                                  R"({"dante_aes67_tx":{)",
                                  "}}",
                                  snapshot_trace + "pause 1\npause 1\npause 1\n",
                                  path_rows,
                                  "pause 1\n"};

const IdleRows analog_rows = {{"auto", "pause 1\n"},        {"direction", "pause 1\n"},
                              {"source", "pause 1\n"},      {"type", "pause 1\n"},
                              {"volume", "pause 1\n"},      {"mute", "pause 1\n"},
                              {"output_delay", "pause 1\n"}};

const Block decoder_analog = {"decoder, analog_audio",
                              apply_decoder_audio_section,
                              R"({"analog_audio":{)",
                              "}}",
                              snapshot_trace + "pause 1\npause 1\npause 1\n",
                              analog_rows,
                              ""};
const Block hdmi_encoder_analog = {"HDMI encoder, analog_audio",
                                   apply_hdmi_encoder_audio_section,
                                   R"({"analog_audio":{)",
                                   "}}",
                                   snapshot_trace + "pause 1\npause 1\n",
                                   analog_rows,
                                   "pause 1\npause 1\n"};
const Block usbc_encoder_analog = {"USB-C encoder, analog_audio",
                                   apply_usbc_encoder_audio_section,
                                   R"({"analog_audio":{)",
                                   "}}",
                                   snapshot_trace + "pause 1\npause 1\n",
                                   analog_rows,
                                   "pause 1\npause 1\n"};

const Words decoder_transmit_words = {
    {"", 0}, {"local hdmi", 1}, {"analog in", 2}, {"zavo stream audio output", 3}};
const Words hdmi_encoder_words = {{"", 0}, {"hdmi", 1}, {"analog in", 2}};
const Words usbc_encoder_words = {{"afv", 0}, {"usb-c", 1}, {"hdmi", 2}, {"analog in", 3}};

struct Path {
    const Block* block;
    const Words* words;
    bool volume_of_present_source;
};

const Path paths[] = {
    {&decoder_dante, &decoder_transmit_words, false},
    {&hdmi_encoder_stream, &hdmi_encoder_words, true},
    {&hdmi_encoder_dante, &hdmi_encoder_words, true},
    {&usbc_encoder_stream, &usbc_encoder_words, true},
    {&usbc_encoder_dante, &usbc_encoder_words, true},
};

// Port numbers of the analog port in the commands.
struct AnalogPort {
    const Block* block;
    std::string input;
    std::string output;
    Words words;
};

const AnalogPort analog_ports[] = {
    {&decoder_analog,
     "2",
     "3",
     {{"afv", 0}, {"stream audio", 1}, {"local hdmi", 2}, {"dante/aes67 rx", 3}}},
    {&hdmi_encoder_analog, "2", "3", {{"hdmi", 0}, {"dante/aes67 rx", 1}}},
    {&usbc_encoder_analog,
     "3",
     "4",
     {{"afv", 0}, {"usb-c", 1}, {"hdmi", 2}, {"dante/aes67 rx", 3}}},
};

// --- Whole sections ------------------------------------------------------------------------------

TEST_F(AudioSection, FullDecoderDocumentIsAppliedInOrderAndCosts25Seconds) {
    const std::string trace = trace_of(apply_decoder_audio_section, R"({
        "routing": {"km": {"ip_address": "10.20.20.12"}, "usb": {"ip_address": "10.20.20.11"},
                    "audio": {"number": "12"}, "video": {"number": "11"}},
        "dante_aes67_tx": {"mute": false, "volume": 80, "source": "zavo stream audio output"},
        "analog_audio": {"output_delay": 40, "mute": false, "volume": 80, "type": "balanced",
                         "source": "stream audio", "direction": "out", "auto": false},
        "audio_stream_number": 11,
        "hdmi_audio": {"mute": false, "source": "afv"},
        "stream_audio": "zavo stream audio", "audio_follow_video": true})");
    EXPECT_EQ(trace, snapshot_trace +
                         "pause 1\n"
                         "shell astparam s audioFlv 1\n"
                         "mcu setstreama,0\n"
                         "pause 1\n"
                         "mcu sethdmia,0\n"
                         "pause 1\n"
                         "mcu unmute,4\n"
                         "pause 1\n"
                         "mcu setaauto,off\n"
                         "pause 1\n"
                         "mcu setanalogmode,1\n"
                         "pause 1\n"
                         "mcu setanalog,1\n"
                         "pause 1\n"
                         "mcu lobal,1\n"
                         "pause 1\n"
                         "mcu lovol,80\n"
                         "pause 1\n"
                         "mcu unmute,3\n"
                         "pause 1\n"
                         "mcu setanalogdelay,40\n"
                         "pause 1\n"
                         "mcu seta,3\n"
                         "pause 1\n"
                         "mcu livol,3:80\n"
                         "pause 1\n"
                         "mcu unmute,3\n"
                         "shell e e_reconnect::11::v\n"
                         "pause 3\n"
                         "shell e e_reconnect::12::a\n"
                         "pause 3\n"
                         "shell e e_reconnect::10.20.20.11::u\n"
                         "pause 3\n"
                         "shell e e_reconnect::10.20.20.12::u\n"
                         "pause 3\n");
    EXPECT_EQ(seconds_of(trace), 25U);
}

TEST_F(AudioSection, FullHdmiEncoderDocumentIsAppliedInOrderAndCosts16Seconds) {
    const std::string trace = trace_of(apply_hdmi_encoder_audio_section, R"({
        "dante_aes67_tx": {"mute": false, "volume": 70, "source": "analog in"},
        "analog_audio": {"output_delay": 10, "mute": true, "volume": 65, "type": "unbalanced",
                         "source": "hdmi", "direction": "in"},
        "stream_audio": {"auto": true, "mute": false, "volume": 80, "source": "hdmi",
                         "analog_priority": false}})");
    EXPECT_EQ(trace, snapshot_trace +
                         "pause 1\n"
                         "mcu setaauto,off\n"
                         "pause 1\n"
                         "mcu seta,1\n"
                         "pause 1\n"
                         "mcu livol,1:80\n"
                         "pause 1\n"
                         "mcu unmute,1\n"
                         "pause 1\n"
                         "mcu setaauto,on\n"
                         "pause 1\n"
                         "mcu setanalogmode,0\n"
                         "pause 1\n"
                         "mcu setanalog,0\n"
                         "pause 1\n"
                         "mcu libal,0\n"
                         "pause 1\n"
                         "mcu livol,2:65\n"
                         "pause 1\n"
                         "mcu mute,2\n"
                         "pause 1\n"
                         "mcu setanalogdelay,10\n"
                         "pause 1\n"
                         "pause 1\n"
                         "mcu seta,2\n"
                         "pause 1\n"
                         "mcu livol,2:70\n"
                         "pause 1\n"
                         "mcu unmute,2\n"
                         "pause 1\n");
    EXPECT_EQ(seconds_of(trace), 16U);
}

TEST_F(AudioSection, FullUsbcEncoderDocumentIsAppliedInOrderAndCosts16Seconds) {
    const std::string trace = trace_of(apply_usbc_encoder_audio_section, R"({
        "dante_aes67_tx": {"mute": true, "volume": 70, "source": "hdmi"},
        "analog_audio": {"output_delay": 20, "mute": false, "volume": 75, "type": "balanced",
                         "source": "dante/aes67 rx", "direction": "out"},
        "stream_audio": {"auto": false, "mute": false, "volume": 80, "source": "afv",
                         "analog_priority": false}})");
    EXPECT_EQ(trace, snapshot_trace +
                         "pause 1\n"
                         "mcu setaauto,off\n"
                         "pause 1\n"
                         "mcu seta,0\n"
                         "pause 1\n"
                         "mcu livol,0:80\n"
                         "pause 1\n"
                         "mcu unmute,0\n"
                         "pause 1\n"
                         "mcu setaauto,off\n"
                         "pause 1\n"
                         "mcu setanalogmode,1\n"
                         "pause 1\n"
                         "mcu setanalog,3\n"
                         "pause 1\n"
                         "mcu lobal,1\n"
                         "pause 1\n"
                         "mcu lovol,75\n"
                         "pause 1\n"
                         "mcu unmute,4\n"
                         "pause 1\n"
                         "mcu setanalogdelay,20\n"
                         "pause 1\n"
                         "pause 1\n"
                         "mcu seta,2\n"
                         "pause 1\n"
                         "mcu livol,2:70\n"
                         "pause 1\n"
                         "mcu mute,2\n"
                         "pause 1\n");
    EXPECT_EQ(seconds_of(trace), 16U);
}

TEST_F(AudioSection, EmptyOrWronglyTypedSectionTakesTheConstantPausesOnly) {
    for (const char* section : {"{}", "[]", "true", "null", "3", "\"analog_audio\"",
                                R"([{"analog_audio":{},"stream_audio":1}])"}) {
        EXPECT_EQ(trace_of(apply_decoder_audio_section, section),
                  snapshot_trace + "pause 1\npause 1\npause 1\n")
            << section;
        EXPECT_EQ(trace_of(apply_hdmi_encoder_audio_section, section),
                  snapshot_trace + "pause 1\npause 1\npause 1\npause 1\n")
            << section;
        EXPECT_EQ(trace_of(apply_usbc_encoder_audio_section, section),
                  snapshot_trace + "pause 1\npause 1\npause 1\npause 1\n")
            << section;
    }
}

TEST_F(AudioSection, AnObjectOfAnyTypeTakesItsPauses) {
    for (const Block* block :
         {&decoder_dante, &decoder_analog, &decoder_hdmi, &hdmi_encoder_stream, &hdmi_encoder_dante,
          &hdmi_encoder_analog, &usbc_encoder_stream, &usbc_encoder_dante, &usbc_encoder_analog}) {
        // The object's braces stand in the start and the end of the document.
        const std::string start(block->document_start);
        for (const std::string& value : every_json_value) {
            EXPECT_EQ(trace_of(block->apply, start.substr(0, start.size() - 1) + value + "}"),
                      expected_in(*block, "", ""))
                << block->name << ": " << value;
        }
    }
    for (const std::string& value : every_json_value) {
        EXPECT_EQ(trace_in(decoder_top, member("routing", value)), expected_in(decoder_top, "", ""))
            << value;
    }
}

TEST_F(AudioSection, TablesNameEveryMemberInOrder) {
    const std::vector<std::string> of_encoders = {"stream_audio", "analog_audio", "dante_aes67_tx"};
    EXPECT_EQ(keys_of(decoder_audio_table), keys_of(decoder_top.rows));
    EXPECT_EQ(keys_of(hdmi_encoder_audio_table), of_encoders);
    EXPECT_EQ(keys_of(usbc_encoder_audio_table), of_encoders);
}

TEST_F(AudioSection, KeysThatAreNoBooleansIgnoreCase) {
    EXPECT_EQ(trace_of(apply_decoder_audio_section,
                       R"({"STREAM_audio":1,"HDMI_Audio":{"Source":1},
                           "Routing":{"VIDEO":{"Number":"5"}}})"),
              snapshot_trace +
                  "pause 1\n"
                  "mcu setstreama,1\n"
                  "pause 1\n"
                  "mcu sethdmia,1\n"
                  "pause 1\n"
                  "pause 1\n"
                  "shell e e_reconnect::5::v\n"
                  "pause 3\n");
    EXPECT_EQ(trace_of(apply_usbc_encoder_audio_section,
                       R"({"Stream_Audio":{"auto":true,"SOURCE":1,"Volume":2,"mute":true},
                           "ANALOG_audio":{"Direction":"in","Source":1,"TYPE":"balanced",
                                           "Volume":3,"mute":true,"Output_Delay":4},
                           "Dante_AES67_tx":{"Source":2,"VOLUME":5}})"),
              snapshot_trace +
                  "pause 1\n"
                  "pause 1\n"
                  "mcu seta,1\n"
                  "pause 1\n"
                  "mcu livol,1:2\n"
                  "pause 1\n"
                  "mcu mute,1\n"
                  "pause 1\n"
                  "mcu setaauto,on\n"
                  "pause 1\n"
                  "mcu setanalogmode,0\n"
                  "pause 1\n"
                  "mcu setanalog,1\n"
                  "pause 1\n"
                  "mcu libal,1\n"
                  "pause 1\n"
                  "mcu livol,3:3\n"
                  "pause 1\n"
                  "mcu mute,3\n"
                  "pause 1\n"
                  "mcu setanalogdelay,4\n"
                  "pause 1\n"
                  "pause 1\n"
                  "mcu seta,2\n"
                  "pause 1\n"
                  "mcu livol,2:5\n"
                  "pause 1\n"
                  "pause 1\n");
}

// --- Paths: source, volume and mute --------------------------------------------------------------

TEST_F(AudioSection, PathSourceTakesItsWordsAndNumbersOf0OrMore) {
    for (const Path& path : paths) {
        for (const auto& [word, code] : *path.words) {
            expect_cases(*path.block, {{"source", json_text(word),
                                        "mcu seta," + std::to_string(code) + "\npause 1\n"}});
        }
        expect_cases(*path.block, {{"source", "0", "mcu seta,0\npause 1\n"},
                                   {"source", "17", "mcu seta,17\npause 1\n"},
                                   {"source", "-0.5", "mcu seta,0\npause 1\n"},
                                   {"source", "1e99", "mcu seta,2147483647\npause 1\n"}});
    }
}

TEST_F(AudioSection, PathSourceOfNoUseOnlyPauses) {
    for (const Path& path : paths) {
        std::vector<std::string> wrong = every_json_value_but({"0", "7", "-0.5", "1e99", "\"\""});
        wrong.insert(wrong.end(), {"-1e99", "\"HDMI\"", "\"Analog in\"", "\"analog in \"",
                                   "\"stream audio\"", "\"dante/aes67 rx\""});
        if (path.words == &usbc_encoder_words) {
            wrong.insert(wrong.end(), {"\"\"", "\"local hdmi\""});
        } else {
            wrong.insert(wrong.end(), {"\"afv\"", "\"usb-c\""});
        }
        expect_nothing_sent(*path.block, "source", wrong);
    }
}

TEST_F(AudioSection, PathVolumeAndMuteGoToTheGivenSource) {
    set_rw_value("as_source", "9");
    for (const Path& path : paths) {
        EXPECT_EQ(trace_in(*path.block, R"("source":"analog in","volume":80,"mute":true)"),
                  path.words == &usbc_encoder_words
                      ? expected_with(*path.block, {{"source", "mcu seta,3\npause 1\n"},
                                                    {"volume", "mcu livol,3:80\npause 1\n"},
                                                    {"mute", "mcu mute,3\n"}})
                      : expected_with(*path.block, {{"source", "mcu seta,2\npause 1\n"},
                                                    {"volume", "mcu livol,2:80\npause 1\n"},
                                                    {"mute", "mcu mute,2\n"}}))
            << path.block->name;
        EXPECT_EQ(trace_in(*path.block, R"("source":0,"volume":-3.9,"mute":false)"),
                  expected_with(*path.block, {{"source", "mcu seta,0\npause 1\n"},
                                              {"volume", "mcu livol,0:-3\npause 1\n"},
                                              {"mute", "mcu unmute,0\n"}}))
            << path.block->name;
    }
}

TEST_F(AudioSection, PathVolumeWithoutASourceGoesToThePresentOneOnEncodersOnly) {
    for (const char* present : {"1", "", "usb-c %s"}) {
        reset_recorder();
        set_rw_value("as_source", present);
        for (const Path& path : paths) {
            for (const auto& [value, sent] : std::vector<std::pair<std::string, std::string>>{
                     {"50", "50"}, {"0", "0"}, {"-7", "-7"}, {"1e99", "2147483647"}}) {
                const std::string expected =
                    path.volume_of_present_source
                        ? "mcu livol," + std::string(present) + ":" + sent + "\npause 1\n"
                        : "mcu \npause 1\n";
                expect_cases(*path.block, {{"volume", value, expected}});
                // A source that cannot be used is none.
                EXPECT_EQ(trace_in(*path.block, R"("source":"tuner","volume":)" + value),
                          expected_in(*path.block, "volume", expected))
                    << path.block->name;
            }
        }
    }
}

TEST_F(AudioSection, PathVolumeIsANumber) {
    for (const Path& path : paths) {
        expect_nothing_sent(*path.block, "volume",
                            every_json_value_but(numbers_of_every_json_value));
    }
}

TEST_F(AudioSection, PathMuteWithoutASourceGoesToThePresentOneOnAllModels) {
    for (const std::string present : {"1", "", "usb-c %s"}) {
        reset_recorder();
        set_rw_value("as_source", present);
        for (const Path& path : paths) {
            expect_cases(*path.block, {{"mute", "true", "mcu mute," + present + "\n"},
                                       {"mute", "false", "mcu unmute," + present + "\n"}});
            EXPECT_EQ(trace_in(*path.block, R"("source":-1,"mute":true)"),
                      expected_in(*path.block, "mute", "mcu mute," + present + "\n"))
                << path.block->name;
        }
    }
}

TEST_F(AudioSection, PathMuteThatIsNoBooleanSendsAnEmptyCommand) {
    for (const Path& path : paths) {
        std::vector<std::string> wrong = every_json_value_but({"true", "false"});
        wrong.insert(wrong.end(), {"\"true\"", "\"on\""});
        for (const std::string& value : wrong) {
            expect_cases(*path.block, {{"mute", value, "mcu \n"}});
            EXPECT_EQ(trace_in(*path.block, R"("source":0,"mute":)" + value),
                      expected_with(*path.block,
                                    {{"source", "mcu seta,0\npause 1\n"}, {"mute", "mcu \n"}}))
                << path.block->name << ": " << value;
        }
    }
}

TEST_F(AudioSection, PathMuteIsLookedUpByExactCase) {
    for (const Path& path : paths) {
        expect_nothing_sent(*path.block, "Mute", {"true", "false", "3"});
    }
}

// --- The encoders' stream ------------------------------------------------------------------------

TEST_F(AudioSection, AnalogPriorityIsABooleanOfTheStream) {
    for (const Block* block : {&hdmi_encoder_stream, &usbc_encoder_stream}) {
        expect_cases(*block, {{"analog_priority", "true", "mcu setaauto,on\npause 1\n"},
                              {"analog_priority", "false", "mcu setaauto,off\npause 1\n"}});
        expect_nothing_sent(*block, "analog_priority", every_json_value_but({"true", "false"}));
        expect_nothing_sent(*block, "Analog_priority", {"true", "false"});
    }
    expect_nothing_sent(hdmi_encoder_dante, "analog_priority", {"true"});
    expect_nothing_sent(hdmi_encoder_analog, "analog_priority", {"true"});
}

// --- The analog port -----------------------------------------------------------------------------

TEST_F(AudioSection, AnalogAutoOfTheDecoderStandsInAnalogAudio) {
    expect_cases(decoder_analog, {{"auto", "true", "mcu setaauto,on\npause 1\n"},
                                  {"auto", "false", "mcu setaauto,off\npause 1\n"}});
    expect_nothing_sent(decoder_analog, "auto", every_json_value_but({"true", "false"}));
    expect_nothing_sent(decoder_analog, "Auto", {"true", "false"});
}

TEST_F(AudioSection, AnalogAutoOfTheEncodersStandsInStreamAudio) {
    for (const Block* block : {&hdmi_encoder_analog, &usbc_encoder_analog}) {
        expect_nothing_sent(*block, "auto", every_json_value);
        const std::string before = snapshot_trace + "pause 1\npause 1\npause 1\npause 1\npause 1\n";
        const std::string behind =
            "pause 1\npause 1\npause 1\npause 1\npause 1\npause 1\npause 1\npause 1\npause 1\n";
        EXPECT_EQ(trace_of(block->apply, R"({"stream_audio":{"auto":true},"analog_audio":{}})"),
                  before + "mcu setaauto,on\n" + behind);
        EXPECT_EQ(trace_of(block->apply,
                           R"({"stream_audio":{"auto":false},"analog_audio":{"auto":true}})"),
                  before + "mcu setaauto,off\n" + behind);
        EXPECT_EQ(trace_of(block->apply, R"({"stream_audio":{"Auto":true},"analog_audio":null})"),
                  before + behind);
        for (const std::string& value : every_json_value_but({"true", "false"})) {
            EXPECT_EQ(trace_of(block->apply,
                               R"({"analog_audio":3,"stream_audio":{"auto":)" + value + "}}"),
                      before + behind)
                << block->name << ": " << value;
        }
    }
}

TEST_F(AudioSection, AnalogAutoOfTheEncodersNeedsAnalogAudio) {
    for (const Block* block : {&hdmi_encoder_stream, &usbc_encoder_stream}) {
        expect_nothing_sent(*block, "auto", {"true", "false"});
    }
}

TEST_F(AudioSection, AnalogPriorityAndAutoCanSendTheSameCommandTwice) {
    EXPECT_EQ(
        trace_of(apply_usbc_encoder_audio_section,
                 R"({"stream_audio":{"auto":true,"analog_priority":true},"analog_audio":{}})"),
        snapshot_trace +
            "pause 1\n"
            "mcu setaauto,on\n"
            "pause 1\n"
            "pause 1\n"
            "pause 1\n"
            "pause 1\n"
            "mcu setaauto,on\n"
            "pause 1\n"
            "pause 1\n"
            "pause 1\n"
            "pause 1\n"
            "pause 1\n"
            "pause 1\n"
            "pause 1\n"
            "pause 1\n"
            "pause 1\n");
}

TEST_F(AudioSection, AnalogDirectionCountsByHowItBegins) {
    for (const AnalogPort& port : analog_ports) {
        for (const char* direction : {"\"in\"", "\"input\"", "\"ink\""}) {
            expect_cases(*port.block, {{"direction", direction, "mcu setanalogmode,0\npause 1\n"}});
        }
        for (const char* direction : {"\"out\"", "\"output\"", "\"outside\""}) {
            expect_cases(*port.block, {{"direction", direction, "mcu setanalogmode,1\npause 1\n"}});
        }
        std::vector<std::string> wrong = every_json_value;
        wrong.insert(wrong.end(),
                     {"\"i\"", "\"o\"", "\"ou\"", "\"In\"", "\"OUT\"", "\" in\"", "1"});
        expect_nothing_sent(*port.block, "direction", wrong);
    }
}

TEST_F(AudioSection, AnalogSourceTakesItsWordsAndNumbersOf0OrMore) {
    for (const AnalogPort& port : analog_ports) {
        for (const auto& [word, code] : port.words) {
            expect_cases(*port.block, {{"source", json_text(word),
                                        "mcu setanalog," + std::to_string(code) + "\npause 1\n"}});
        }
        expect_cases(*port.block, {{"source", "0", "mcu setanalog,0\npause 1\n"},
                                   {"source", "17", "mcu setanalog,17\npause 1\n"},
                                   {"source", "-0.5", "mcu setanalog,0\npause 1\n"},
                                   {"source", "1e99", "mcu setanalog,2147483647\npause 1\n"}});
        std::vector<std::string> wrong = every_json_value_but({"0", "7", "-0.5", "1e99"});
        wrong.insert(wrong.end(),
                     {"-1e99", "\"AFV\"", "\"analog in\"", "\"dante\"", "\"hdmi \"", "\"HDMI\""});
        expect_nothing_sent(*port.block, "source", wrong);
    }
    expect_nothing_sent(decoder_analog, "source", {"\"hdmi\"", "\"usb-c\""});
    expect_nothing_sent(hdmi_encoder_analog, "source", {"\"afv\"", "\"usb-c\"", "\"local hdmi\""});
    expect_nothing_sent(usbc_encoder_analog, "source", {"\"stream audio\"", "\"local hdmi\""});
}

// What the port is told once its direction is an input, an output or not known.
void expect_port_as_input(const AnalogPort& port, const std::string& direction,
                          const std::string& direction_trace) {
    const std::string start = direction.empty() ? "" : R"("direction":)" + direction + ",";
    const auto expect = [&](const std::string& key, const std::string& value,
                            const std::string& sent) {
        EXPECT_EQ(
            trace_in(*port.block, start + member(key, value)),
            expected_with(*port.block, {{"direction", direction_trace}, {key, sent + "pause 1\n"}}))
            << port.block->name << ": " << direction << " " << key << " " << value;
    };
    expect("type", "\"balanced\"", "mcu libal,1\n");
    expect("type", "\"unbalanced\"", "mcu libal,0\n");
    expect("volume", "30", "mcu livol," + port.input + ":30\n");
    expect("volume", "-5", "mcu livol," + port.input + ":-5\n");
    expect("mute", "true", "mcu mute," + port.input + "\n");
    expect("mute", "false", "mcu unmute," + port.input + "\n");
    expect("mute", "\"true\"", "mcu \n");
}

void expect_port_as_output(const AnalogPort& port, const std::string& direction,
                           const std::string& direction_trace) {
    const std::string start = direction.empty() ? "" : R"("direction":)" + direction + ",";
    const auto expect = [&](const std::string& key, const std::string& value,
                            const std::string& sent) {
        EXPECT_EQ(
            trace_in(*port.block, start + member(key, value)),
            expected_with(*port.block, {{"direction", direction_trace}, {key, sent + "pause 1\n"}}))
            << port.block->name << ": " << direction << " " << key << " " << value;
    };
    expect("type", "\"balanced\"", "mcu lobal,1\n");
    expect("type", "\"unbalanced\"", "mcu lobal,0\n");
    expect("volume", "30", "mcu lovol,30\n");
    expect("volume", "-5", "mcu lovol,-5\n");
    expect("mute", "true", "mcu mute," + port.output + "\n");
    expect("mute", "false", "mcu unmute," + port.output + "\n");
    expect("mute", "\"true\"", "mcu \n");
}

void expect_port_not_told(const AnalogPort& port, const std::string& direction) {
    const std::string start = direction.empty() ? "" : R"("direction":)" + direction + ",";
    for (const char* members :
         {R"("type":"balanced")", R"("type":"unbalanced")", R"("volume":30)", R"("mute":true)",
          R"("mute":false)", R"("mute":"true")", R"("mute":null)"}) {
        EXPECT_EQ(trace_in(*port.block, start + members), expected_in(*port.block, "", ""))
            << port.block->name << ": " << direction << " " << members;
    }
}

TEST_F(AudioSection, AnalogTypeVolumeAndMuteFollowTheWantedDirection) {
    for (const char* present : {"0", "1", ""}) {
        reset_recorder();
        set_rw_value("a_a_audio_direction", present);
        for (const AnalogPort& port : analog_ports) {
            expect_port_as_input(port, "\"in\"", "mcu setanalogmode,0\npause 1\n");
            expect_port_as_input(port, "\"input\"", "mcu setanalogmode,0\npause 1\n");
            expect_port_as_output(port, "\"out\"", "mcu setanalogmode,1\npause 1\n");
            expect_port_as_output(port, "\"output\"", "mcu setanalogmode,1\npause 1\n");
        }
    }
}

TEST_F(AudioSection, AnalogTypeVolumeAndMuteFollowThePresentDirectionWhereNoTextIsGiven) {
    for (const char* input : {"0", "0x"}) {
        reset_recorder();
        set_rw_value("a_a_audio_direction", input);
        for (const AnalogPort& port : analog_ports) {
            for (const char* direction : {"", "0", "1", "true", "null", "[]", "{}"}) {
                expect_port_as_input(port, direction, "pause 1\n");
            }
        }
    }
    for (const char* output : {"1", "10"}) {
        reset_recorder();
        set_rw_value("a_a_audio_direction", output);
        for (const AnalogPort& port : analog_ports) {
            for (const char* direction : {"", "0", "1", "true", "null", "[]", "{}"}) {
                expect_port_as_output(port, direction, "pause 1\n");
            }
        }
    }
}

TEST_F(AudioSection, AnalogPortOfUnknownDirectionIsNotTold) {
    for (const char* present : {"", "2", "in", " 0"}) {
        reset_recorder();
        set_rw_value("a_a_audio_direction", present);
        for (const AnalogPort& port : analog_ports) {
            expect_port_not_told(port, "");
            expect_port_not_told(port, "null");
        }
    }
    reset_recorder();
    for (const AnalogPort& port : analog_ports) {
        expect_port_not_told(port, "");
    }
}

TEST_F(AudioSection, AnUnknownDirectionTextDoesNotFallBackToThePresentDirection) {
    for (const char* present : {"0", "1"}) {
        reset_recorder();
        set_rw_value("a_a_audio_direction", present);
        for (const AnalogPort& port : analog_ports) {
            for (const char* direction :
                 {"\"\"", "\"i\"", "\"ou\"", "\"IN\"", "\"Out\"", "\"0\"", "\"1\"", "\"both\""}) {
                expect_port_not_told(port, direction);
            }
        }
    }
}

TEST_F(AudioSection, AnalogTypeCountsByHowItBegins) {
    set_rw_value("a_a_audio_direction", "1");
    for (const AnalogPort& port : analog_ports) {
        expect_cases(*port.block, {{"type", "\"balanced line\"", "mcu lobal,1\npause 1\n"},
                                   {"type", "\"unbalanced line\"", "mcu lobal,0\npause 1\n"}});
        std::vector<std::string> wrong = every_json_value;
        wrong.insert(wrong.end(), {"\"Balanced\"", "\"balance\"", "\"unbalance\"", "\"Unbalanced\"",
                                   "\"a balanced\"", "\" unbalanced\""});
        expect_nothing_sent(*port.block, "type", wrong);
    }
}

TEST_F(AudioSection, AnalogVolumeIsANumberOfAnyValue) {
    set_rw_value("a_a_audio_direction", "0");
    for (const AnalogPort& port : analog_ports) {
        const std::string livol = "mcu livol," + port.input + ":";
        expect_cases(*port.block, {{"volume", "0", livol + "0\npause 1\n"},
                                   {"volume", "-0.5", livol + "0\npause 1\n"},
                                   {"volume", "1e99", livol + "2147483647\npause 1\n"},
                                   {"volume", "-1e99", livol + "-2147483648\npause 1\n"}});
        expect_nothing_sent(*port.block, "volume",
                            every_json_value_but(numbers_of_every_json_value));
    }
}

TEST_F(AudioSection, AnalogMuteThatIsNoBooleanSendsAnEmptyCommand) {
    set_rw_value("a_a_audio_direction", "0");
    for (const AnalogPort& port : analog_ports) {
        for (const std::string& value : every_json_value_but({"true", "false"})) {
            expect_cases(*port.block, {{"mute", value, "mcu \npause 1\n"}});
        }
        expect_nothing_sent(*port.block, "Mute", {"true", "false", "3"});
    }
}

TEST_F(AudioSection, AnalogOutputDelayIsANumberOfAnyValue) {
    for (const AnalogPort& port : analog_ports) {
        expect_cases(*port.block,
                     {{"output_delay", "0", "mcu setanalogdelay,0\npause 1\n"},
                      {"output_delay", "170", "mcu setanalogdelay,170\npause 1\n"},
                      {"output_delay", "-4", "mcu setanalogdelay,-4\npause 1\n"},
                      {"output_delay", "1e99", "mcu setanalogdelay,2147483647\npause 1\n"},
                      {"output_delay", "-1e99", "mcu setanalogdelay,-2147483648\npause 1\n"}});
        expect_nothing_sent(*port.block, "output_delay",
                            every_json_value_but(numbers_of_every_json_value));
    }
}

// --- The decoder's own members -------------------------------------------------------------------

TEST_F(AudioSection, AudioFollowVideoIsABooleanWithoutAPause) {
    expect_cases(decoder_top, {{"audio_follow_video", "true", "shell astparam s audioFlv 1\n"},
                               {"audio_follow_video", "false", "shell astparam s audioFlv 0\n"}});
    expect_nothing_sent(decoder_top, "audio_follow_video", every_json_value_but({"true", "false"}));
    expect_nothing_sent(decoder_top, "Audio_follow_video", {"true", "false"});
}

TEST_F(AudioSection, DecoderStreamAudioIsAValue) {
    expect_cases(decoder_top,
                 {{"stream_audio", "\"zavo stream audio\"", "mcu setstreama,0\npause 1\n"},
                  {"stream_audio", "\"dante/aes67 rx\"", "mcu setstreama,1\npause 1\n"},
                  {"stream_audio", "0", "mcu setstreama,0\npause 1\n"},
                  {"stream_audio", "1", "mcu setstreama,1\npause 1\n"},
                  {"stream_audio", "-0.5", "mcu setstreama,0\npause 1\n"},
                  {"stream_audio", "1e99", "mcu setstreama,2147483647\npause 1\n"}});
    std::vector<std::string> wrong = every_json_value_but({"0", "7", "-0.5", "1e99"});
    wrong.insert(wrong.end(), {"\"Dante/AES67 rx\"", "\"stream audio\"", "\"afv\"",
                               R"({"source":1,"volume":5,"mute":true})"});
    expect_nothing_sent(decoder_top, "stream_audio", wrong);
}

TEST_F(AudioSection, DecoderHdmiAudioHasASourceAndAMute) {
    expect_cases(decoder_hdmi, {{"source", "\"afv\"", "mcu sethdmia,0\npause 1\n"},
                                {"source", "\"stream audio\"", "mcu sethdmia,1\npause 1\n"},
                                {"source", "0", "mcu sethdmia,0\npause 1\n"},
                                {"source", "17", "mcu sethdmia,17\npause 1\n"},
                                {"source", "1e99", "mcu sethdmia,2147483647\npause 1\n"},
                                {"mute", "true", "mcu mute,4\n"},
                                {"mute", "false", "mcu unmute,4\n"}});
    std::vector<std::string> wrong = every_json_value_but({"0", "7", "-0.5", "1e99"});
    wrong.insert(wrong.end(), {"\"AFV\"", "\"zavo stream audio\"", "\"local hdmi\""});
    expect_nothing_sent(decoder_hdmi, "source", wrong);
    for (const std::string& value : every_json_value_but({"true", "false"})) {
        expect_cases(decoder_hdmi, {{"mute", value, "mcu \n"}});
    }
    expect_nothing_sent(decoder_hdmi, "Mute", {"true", "false", "3"});
    expect_nothing_sent(decoder_hdmi, "volume", {"30"});
}

TEST_F(AudioSection, AudioStreamNumberNeverSendsAnything) {
    expect_nothing_sent(decoder_top, "audio_stream_number", every_json_value);
}

TEST_F(AudioSection, DecoderRoutingReconnectsAndPausesOnlyBehindALine) {
    const auto with_routing = [](const std::string& routing, const std::string& trace) {
        EXPECT_EQ(trace_in(decoder_top, member("routing", routing)),
                  expected_in(decoder_top, "routing", trace))
            << routing;
    };
    with_routing(R"({"video":{"number":"5"}})", "shell e e_reconnect::5::v\npause 3\n");
    with_routing(R"({"audio":{"number":"a b %s"}})", "shell e e_reconnect::a b %s::a\npause 3\n");
    with_routing(R"({"usb":{"ip_address":"10.0.0.1"}})",
                 "shell e e_reconnect::10.0.0.1::u\npause 3\n");
    with_routing(R"({"km":{"ip_address":"10.0.0.2"}})",
                 "shell e e_reconnect::10.0.0.2::u\npause 3\n");
    with_routing(R"({"video":{"ip_address":"5"},"audio":{"ip_address":"5"},
                     "usb":{"number":"5"},"km":{"number":"5"}})",
                 "");
    for (const auto& [part, key] :
         std::vector<std::pair<std::string, std::string>>{{"video", "number"},
                                                          {"audio", "number"},
                                                          {"usb", "ip_address"},
                                                          {"km", "ip_address"}}) {
        for (const std::string& value : every_json_value_but({"\"x\"", "\"5\"", "\"-\""})) {
            with_routing("{\"" + part + "\":{\"" + key + "\":" + value + "}}", "");
        }
        for (const std::string& value : every_json_value) {
            with_routing("{\"" + part + "\":" + value + "}", "");
        }
    }
}

TEST_F(AudioSection, EncodersHaveNoneOfTheDecodersMembers) {
    for (const Apply apply : {apply_hdmi_encoder_audio_section, apply_usbc_encoder_audio_section}) {
        EXPECT_EQ(trace_of(apply, R"({"audio_follow_video":true,"hdmi_audio":{"source":1},
                                      "routing":{"video":{"number":"5"}}})"),
                  snapshot_trace + "pause 1\npause 1\npause 1\npause 1\n");
    }
}

}  // namespace
