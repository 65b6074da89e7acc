#include "unitconf/configuration.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/any_model.h"
#include "tests/support/applying.h"
#include "tests/support/outcome.h"
#include "tests/support/recorder.h"

namespace {

constexpr char usbc_encoder_model[] = "ZAVO-ENC-U300-DA";
constexpr char hdmi_encoder_model[] = "ZAVO-ENC-E100-DA";
constexpr char decoder_model[] = "ZAVO-DEC-D200-DA";

class Configuration : public testing::Test {
  protected:
    void SetUp() override {
        reset_recorder();
    }
};

// The progress messages of a run, and how it ends.
std::string progress(int first, int last) {
    std::string trace;
    for (int step = first; step <= last; step++) {
        trace += "shell echo \"upgradeUnitSetting:" + std::to_string(step) +
                 ",26\" | nc 127.0.0.1 4445\n";
    }
    return trace;
}

const std::string save_and_reboot = "shell astparam save;\npause 1\nshell e e_reboot &\n";

// A document with its model and what `members` adds.
std::string document_for(const std::string& model, const std::string& members) {
    std::string document = R"({"model":")" + model + "\"";
    if (!members.empty()) {
        document += "," + members;
    }
    return document + "}";
}

Outcome applied(const char* model, const std::string& document) {
    reset_recorder();
    const int result = apply_configuration_to_model(model, document.c_str());
    return {result, recorded_trace()};
}

TEST_F(Configuration, AModelAloneSendsEveryStepThenSavesAndReboots) {
    EXPECT_EQ(applied(usbc_encoder_model, document_for(usbc_encoder_model, "")),
              (Outcome{1, progress(1, 25) + save_and_reboot}));
    EXPECT_EQ(applied(hdmi_encoder_model, document_for(hdmi_encoder_model, "")),
              (Outcome{1, progress(1, 25) + save_and_reboot}));
    EXPECT_EQ(applied(decoder_model, document_for(decoder_model, "")),
              (Outcome{1, progress(1, 29) + save_and_reboot}));
}

TEST_F(Configuration, AStreamAddsAStep) {
    for (const char* stream : {R"("stream":{})", R"("STREAM":{})", R"("stream":{"other":1})",
                               R"("stream":[])", R"("stream":null)", R"("stream":true)"}) {
        EXPECT_EQ(applied(usbc_encoder_model, document_for(usbc_encoder_model, stream)),
                  (Outcome{1, progress(1, 26) + save_and_reboot}))
            << stream;
        EXPECT_EQ(applied(hdmi_encoder_model, document_for(hdmi_encoder_model, stream)),
                  (Outcome{1, progress(1, 26) + save_and_reboot}))
            << stream;
        EXPECT_EQ(applied(decoder_model, document_for(decoder_model, stream)),
                  (Outcome{1, progress(1, 30) + save_and_reboot}))
            << stream;
    }
}

TEST_F(Configuration, AModelOutsideTheFamilyHasOnlyTheSharedSections) {
    for (const char* model : {"OTHER", "ZAVO-ENC-X900-DA", ""}) {
        EXPECT_EQ(applied(model, document_for(model, R"("stream":{})")),
                  (Outcome{1, progress(1, 21) + save_and_reboot}))
            << model;
    }
}

TEST_F(Configuration, TheIdentityComesFirstAndWithoutAStep) {
    EXPECT_EQ(
        applied(usbc_encoder_model,
                document_for(usbc_encoder_model, R"("serial_number":"123","device_name":"Hall")")),
        (Outcome{1, snapshot_trace +
                        "shell astparam s deviceName \"Hall\" > /dev/null 2>&1\n"
                        "shell astparam s serialNumber \"123\"  > /dev/null 2>&1;"
                        "lmparam s SERIALNUMBER \"123\";\n"
                        "pause 1\n" +
                        progress(1, 25) + save_and_reboot}));
    EXPECT_EQ(
        applied(decoder_model, document_for(decoder_model, R"("SERIAL_NUMBER":"123","stream":{})")),
        (Outcome{1,
                 "shell astparam s serialNumber \"123\"  > /dev/null 2>&1;"
                 "lmparam s SERIALNUMBER \"123\";\n"
                 "pause 1\n" +
                     progress(1, 30) + save_and_reboot}));
}

TEST_F(Configuration, OfTwoEqualKeysTheFirstCounts) {
    EXPECT_EQ(
        applied(
            usbc_encoder_model,
            document_for(usbc_encoder_model, R"("Device_Name":"first","device_name":"second")")),
        (Outcome{1, snapshot_trace + "shell astparam s deviceName \"first\" > /dev/null 2>&1\n" +
                        progress(1, 25) + save_and_reboot}));
}

TEST_F(Configuration, KeysOfAnotherModelAndUnknownKeysAreIgnored) {
    EXPECT_EQ(
        applied(usbc_encoder_model, document_for(usbc_encoder_model,
                                                 R"("video_wall":{"enable":true},"osd":{"text":"x"},
                                      "no_stream_image":{},"power_on_image":{},"routing":{},
                                      "other":{"enable":true})")),
        (Outcome{1, progress(1, 25) + save_and_reboot}));
    EXPECT_EQ(applied(decoder_model, document_for(decoder_model, R"("usb_host":{"enable":true})")),
              (Outcome{1, progress(1, 29) + save_and_reboot}));
}

TEST_F(Configuration, OnlySixteenCharactersOfTheModelCount) {
    const Outcome whole = {1, progress(1, 25) + save_and_reboot};
    EXPECT_EQ(applied(usbc_encoder_model, R"({"model":"ZAVO-ENC-U300-DA-rev2"})"), whole);
    EXPECT_EQ(applied(usbc_encoder_model, R"({"MODEL":"ZAVO-ENC-U300-DA"})"), whole);
    EXPECT_EQ(applied("ZAVO-ENC-U300-DA/b", R"({"model":"ZAVO-ENC-U300-DA"})"), whole);
}

TEST_F(Configuration, AConfigurationForAnotherModelChangesNothing) {
    for (const char* document :
         {R"({"model":"ZAVO-ENC-E100-DA"})", R"({"model":"ZAVO-DEC-D200-DA","device_name":"x"})",
          R"({"model":"ZAVO-ENC-U300-D"})", R"({"model":"zavo-enc-u300-da"})", R"({"model":""})",
          R"({"model":" ZAVO-ENC-U300-DA"})", R"({"model":null})", R"({"model":5})",
          R"({"model":true})", R"({"model":["ZAVO-ENC-U300-DA"]})",
          R"({"model":{"model":"ZAVO-ENC-U300-DA"}})",
          R"({"model":"other","Model":"ZAVO-ENC-U300-DA"})"}) {
        EXPECT_EQ(applied(usbc_encoder_model, document), (Outcome{4, ""})) << document;
    }
}

TEST_F(Configuration, ADocumentWithoutAModelChangesNothing) {
    for (const char* document :
         {"{}", R"({"device_name":"x","serial_number":"1"})", "[]", R"([{"model":"x"}])", "null",
          "true", "3", R"("model")", R"({"stream":{"model":"ZAVO-ENC-U300-DA"}})"}) {
        EXPECT_EQ(applied(usbc_encoder_model, document), (Outcome{3, ""})) << document;
    }
}

TEST_F(Configuration, ATextThatIsNotJsonChangesNothing) {
    for (const char* document : {"", " ", "x", "{", R"({"model":"ZAVO-ENC-U300-DA")",
                                 R"({"model":'ZAVO-ENC-U300-DA'})", R"({model:1})", "{\"a\":}"}) {
        EXPECT_EQ(applied(usbc_encoder_model, document), (Outcome{2, ""})) << document;
    }
}

TEST_F(Configuration, AByteOrderMarkAndTextBehindTheValueAreAccepted) {
    const Outcome whole = {1, progress(1, 25) + save_and_reboot};
    EXPECT_EQ(applied(usbc_encoder_model, "\xEF\xBB\xBF{\"model\":\"ZAVO-ENC-U300-DA\"}"), whole);
    EXPECT_EQ(applied(usbc_encoder_model, "{\"model\":\"ZAVO-ENC-U300-DA\"}\r\n--x trailing"),
              whole);
}

TEST_F(Configuration, TheProgramAppliesForTheModelItIsBuiltFor) {
    EXPECT_STREQ(unit_model, usbc_encoder_model);
    EXPECT_EQ(apply_unit_configuration(R"({"model":"ZAVO-DEC-D200-DA"})"), 4);
    EXPECT_EQ(recorded_trace(), "");
    EXPECT_EQ(apply_unit_configuration(R"({"model":"ZAVO-ENC-U300-DA"})"), 1);
    EXPECT_EQ(recorded_trace(), progress(1, 25) + save_and_reboot);
}

TEST_F(Configuration, AProgressMessageCarriesItsStepAndTotal) {
    report_progress(3, 26);
    report_progress(-1, 2147483647);
    EXPECT_EQ(recorded_trace(),
              "shell echo \"upgradeUnitSetting:3,26\" | nc 127.0.0.1 4445\n"
              "shell echo \"upgradeUnitSetting:-1,2147483647\" | nc 127.0.0.1 4445\n");
}

}  // namespace
