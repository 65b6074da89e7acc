#include <gtest/gtest.h>

#include <string>

#include "tests/support/applying.h"
#include "tests/support/json_values.h"
#include "tests/support/recorder.h"
#include "unitconf/sections.h"
#include "unitconf/tables.h"

namespace {

// --- "no_stream_image"
// -----------------------------------------------------------------------------

class NoStreamImage : public testing::Test {
  protected:
    NoStreamImage() {
        reset_recorder();
    }
    static std::string apply(const std::string& json) {
        return trace_of(apply_no_stream_image_section, json);
    }
};

TEST_F(NoStreamImage, EnableIsStoredAndTold) {
    EXPECT_EQ(apply(R"({"enable":true})"),
              "shell astparam s ns_enable 1;e e_no_stream_image 1\n"
              "pause 1\n");
    EXPECT_EQ(apply(R"({"enable":false})"),
              "shell astparam s ns_enable 0;e e_no_stream_image 0\n"
              "pause 1\n");
}

TEST_F(NoStreamImage, WithoutABooleanOnlyThePauseIsTaken) {
    for (const std::string& value : not_booleans) {
        EXPECT_EQ(apply(with_value(R"({"enable":@})", value)), "pause 1\n") << value;
    }
    for (const std::string& section : without_members) {
        EXPECT_EQ(apply(section), "pause 1\n") << section;
    }
    EXPECT_EQ(apply(R"({"Enable":true})"), "pause 1\n");
}

TEST_F(NoStreamImage, PlaylistModeChangesNothing) {
    for (const char* value : {"\"single\"", "1", "true", "null", "{}"}) {
        EXPECT_EQ(apply(with_value(R"({"playlist_mode":@})", value)), "pause 1\n") << value;
    }
}

// --- "power_on_image"
// ------------------------------------------------------------------------------

class PowerOnImage : public testing::Test {
  protected:
    PowerOnImage() {
        reset_recorder();
    }
    static std::string apply(const std::string& json) {
        return trace_of(apply_power_on_image_section, json);
    }
};

TEST_F(PowerOnImage, EnableComesBeforeTheDuration) {
    EXPECT_EQ(apply(R"({"duration_time":10,"enable":true})"),
              "shell astparam s poi_enable 1;\n"
              "shell astparam s poi_time 10;\n");
    EXPECT_EQ(apply(R"({"enable":false})"), "shell astparam s poi_enable 0;\n");
}

TEST_F(PowerOnImage, TheDurationHasNoLimits) {
    EXPECT_EQ(apply(R"({"duration_time":0})"), "shell astparam s poi_time 0;\n");
    EXPECT_EQ(apply(R"({"duration_time":-5})"), "shell astparam s poi_time -5;\n");
    EXPECT_EQ(apply(R"({"duration_time":2.9})"), "shell astparam s poi_time 2;\n");
    EXPECT_EQ(apply(R"({"duration_time":1e12})"), "shell astparam s poi_time 2147483647;\n");
    EXPECT_EQ(apply(R"({"Duration_Time":7})"), "shell astparam s poi_time 7;\n");
}

TEST_F(PowerOnImage, WrongTypesChangeNothing) {
    for (const std::string& value : not_booleans) {
        EXPECT_EQ(apply(with_value(R"({"enable":@})", value)), "") << value;
    }
    for (const std::string& value : not_numbers) {
        EXPECT_EQ(apply(with_value(R"({"duration_time":@})", value)), "") << value;
    }
    for (const std::string& section : without_members) {
        EXPECT_EQ(apply(section), "") << section;
    }
    EXPECT_EQ(apply(R"({"ENABLE":true})"), "");
}

// --- "routing"
// -------------------------------------------------------------------------------------

class Routing : public testing::Test {
  protected:
    Routing() {
        reset_recorder();
    }
    static std::string apply(const std::string& json) {
        return trace_of(apply_routing_section, json);
    }
};

TEST_F(Routing, EachRouteIsReconnectedInItsOrder) {
    EXPECT_EQ(apply(R"({"ir":{},"serial":{},"km":{"ip_address":"10.0.0.4"},
                        "usb":{"ip_address":"10.0.0.3"},"audio":{"stream_number":"2"},
                        "video":{"stream_number":"1"}})"),
              "shell e e_reconnect::1::v\n"
              "pause 3\n"
              "shell e e_reconnect::2::a\n"
              "pause 3\n"
              "shell e e_reconnect::10.0.0.3::u\n"
              "pause 3\n"
              "shell e e_reconnect::10.0.0.4::u\n"
              "pause 3\n");
}

TEST_F(Routing, ANumberIsNoStreamNumber) {
    EXPECT_EQ(apply(R"({"video":{"stream_number":3}})"), "");
    EXPECT_EQ(apply(R"({"video":{"stream_number":"3"}})"),
              "shell e e_reconnect::3::v\n"
              "pause 3\n");
}

TEST_F(Routing, KeysIgnoreCaseAndTextsAreTakenAsTheyStand) {
    EXPECT_EQ(apply(R"({"KM":{"IP_Address":"a b;%s"}})"),
              "shell e e_reconnect::a b;%s::u\n"
              "pause 3\n");
}

TEST_F(Routing, AnythingElseIsSkippedWithItsPause) {
    for (const char* document :
         {R"({"video":{"stream_number":@}})", R"({"audio":{"stream_number":@}})",
          R"({"usb":{"ip_address":@}})", R"({"km":{"ip_address":@}})"}) {
        EXPECT_EQ(apply(with_value(document, "\"\"")), "") << document;
        for (const std::string& value : not_texts) {
            EXPECT_EQ(apply(with_value(document, value)), "") << document << value;
        }
    }
    for (const std::string key : {"video", "audio", "usb", "km", "serial", "ir"}) {
        for (const std::string& value : without_members) {
            EXPECT_EQ(apply("{\"" + key + "\":" + value + "}"), "") << key << value;
        }
    }
    for (const std::string& section : without_members) {
        EXPECT_EQ(apply(section), "") << section;
    }
    EXPECT_EQ(apply(R"({"serial":{"ip_address":"10.0.0.3"},"ir":{"ip_address":"10.0.0.3"}})"), "");
}

// --- "stream"."preview"
// ----------------------------------------------------------------------------

class Preview : public testing::Test {
  protected:
    Preview() {
        reset_recorder();
    }
    static std::string apply(const std::string& json) {
        return trace_of(apply_preview_section, json);
    }
};

TEST_F(Preview, TheResolutionReplacesTheFirstTwoFieldsOfTheLiveOption) {
    set_lm_value("SS_STREAM_OPTION", "1280,720,30,a,b,c");
    set_rw_value("ss_stream_option", "1,2,3,4,5,6");
    EXPECT_EQ(apply(R"({"resolution":"1920x1080"})"),
              "shell cp /dev/shm/rwparam /dev/shm/rwparam_temp\n"
              "shell astparam s ss_stream_option 1920,1080,30,a,b,c;"
              "astparam s ss_snapshot_option 1920,1080,30,0 ;\n"
              "pause 1\n");
}

TEST_F(Preview, TheFrameRateReplacesTheThirdFieldOfTheRunTimeOption) {
    set_lm_value("SS_STREAM_OPTION", "1,2,3,4,5,6");
    set_rw_value("ss_stream_option", "1280,720,30,a,b,c");
    EXPECT_EQ(apply(R"({"fps":15})"),
              "shell cp /dev/shm/rwparam /dev/shm/rwparam_temp\n"
              "shell astparam s ss_stream_option 1280,720,15,a,b,c;"
              "astparam s ss_snapshot_option 1280,720,15,0 ;\n"
              "pause 1\n");
    EXPECT_EQ(apply(R"({"FPS":-7.5})"),
              "shell cp /dev/shm/rwparam /dev/shm/rwparam_temp\n"
              "shell astparam s ss_stream_option 1280,720,-7,a,b,c;"
              "astparam s ss_snapshot_option 1280,720,-7,0 ;\n"
              "pause 1\n");
}

TEST_F(Preview, EachStepReadsThePresentValuesForItself) {
    set_lm_value("SS_STREAM_OPTION", "640,480,25,l4,l5,l6");
    set_rw_value("ss_stream_option", "1280,720,30,r4,r5,r6");
    EXPECT_EQ(apply(R"({"enable":true,"fps":60,"resolution":"1920x1080"})"),
              "shell cp /dev/shm/rwparam /dev/shm/rwparam_temp\n"
              "shell astparam s ss_stream_option 1920,1080,25,l4,l5,l6;"
              "astparam s ss_snapshot_option 1920,1080,25,0 ;\n"
              "pause 1\n"
              "shell cp /dev/shm/rwparam /dev/shm/rwparam_temp\n"
              "shell astparam s ss_stream_option 1280,720,60,r4,r5,r6;"
              "astparam s ss_snapshot_option 1280,720,60,0 ;\n"
              "pause 1\n"
              "shell cp /dev/shm/rwparam /dev/shm/rwparam_temp\n"
              "shell astparam s ss_en y;\n"
              "pause 1\n");
}

TEST_F(Preview, SwitchingOffReadsNoPresentValues) {
    EXPECT_EQ(apply(R"({"enable":false})"),
              "shell astparam s ss_en n;\n"
              "pause 1\n");
}

TEST_F(Preview, FieldsThatThePresentOptionLacksAreEmpty) {
    EXPECT_EQ(apply(R"({"resolution":"1920x1080","fps":15})"),
              "shell cp /dev/shm/rwparam /dev/shm/rwparam_temp\n"
              "shell astparam s ss_stream_option 1920,1080,,,,;"
              "astparam s ss_snapshot_option 1920,1080,,0 ;\n"
              "pause 1\n"
              "shell cp /dev/shm/rwparam /dev/shm/rwparam_temp\n"
              "shell astparam s ss_stream_option ,,15,,,;"
              "astparam s ss_snapshot_option ,,15,0 ;\n"
              "pause 1\n");
    set_lm_value("SS_STREAM_OPTION", "1280,720,30,a");
    set_rw_value("ss_stream_option", "1280,,30,,b");
    EXPECT_EQ(apply(R"({"resolution":"1920x1080","fps":15})"),
              "shell cp /dev/shm/rwparam /dev/shm/rwparam_temp\n"
              "shell astparam s ss_stream_option 1920,1080,30,a,,;"
              "astparam s ss_snapshot_option 1920,1080,30,0 ;\n"
              "pause 1\n"
              "shell cp /dev/shm/rwparam /dev/shm/rwparam_temp\n"
              "shell astparam s ss_stream_option 1280,,15,,b,;"
              "astparam s ss_snapshot_option 1280,,15,0 ;\n"
              "pause 1\n");
}

TEST_F(Preview, FieldsBeyondTheSixthAreDropped) {
    set_lm_value("SS_STREAM_OPTION", "1,2,3,4,5,6,7,8");
    set_rw_value("ss_stream_option", "a,b,c,d,e,f,g");
    EXPECT_EQ(apply(R"({"resolution":"8x9","fps":0})"),
              "shell cp /dev/shm/rwparam /dev/shm/rwparam_temp\n"
              "shell astparam s ss_stream_option 8,9,3,4,5,6;"
              "astparam s ss_snapshot_option 8,9,3,0 ;\n"
              "pause 1\n"
              "shell cp /dev/shm/rwparam /dev/shm/rwparam_temp\n"
              "shell astparam s ss_stream_option a,b,0,d,e,f;"
              "astparam s ss_snapshot_option a,b,0,0 ;\n"
              "pause 1\n");
}

TEST_F(Preview, OfAResolutionTheFirstTwoFieldsCount) {
    set_lm_value("SS_STREAM_OPTION", "1,2,3,4,5,6");
    const struct {
        const char* resolution;
        const char* fields;
    } cases[] = {
        {"1920x1080x60", "1920,1080"},    {"1920", "1920,"},
        {"1920X1080", "1920X1080,"},      {"x1080", ",1080"},
        {"1920xx1080", "1920,"},          {"x", ","},
        {"1920,5x%s %n", "1920,5,%s %n"},
    };
    for (const auto& each : cases) {
        const std::string fields = each.fields;
        EXPECT_EQ(apply(with_value(R"({"resolution":"@"})", each.resolution)),
                  "shell cp /dev/shm/rwparam /dev/shm/rwparam_temp\n"
                  "shell astparam s ss_stream_option " +
                      fields + ",3,4,5,6;astparam s ss_snapshot_option " + fields +
                      ",3,0 ;\n"
                      "pause 1\n")
            << each.resolution;
    }
}

TEST_F(Preview, ALongResolutionMakesALineThatIsRunWhole) {
    const std::string width(10000, '1');
    EXPECT_EQ(apply("{\"resolution\":\"" + width + "x2\"}"),
              "shell cp /dev/shm/rwparam /dev/shm/rwparam_temp\n"
              "shell astparam s ss_stream_option " +
                  width + ",2,,,,;astparam s ss_snapshot_option " + width +
                  ",2,,0 ;\n"
                  "pause 1\n");
}

TEST_F(Preview, WrongTypesChangeNothing) {
    EXPECT_EQ(apply(R"({"resolution":""})"), "");
    for (const std::string& value : not_texts) {
        EXPECT_EQ(apply(with_value(R"({"resolution":@})", value)), "") << value;
    }
    for (const std::string& value : not_numbers) {
        EXPECT_EQ(apply(with_value(R"({"fps":@})", value)), "") << value;
    }
    for (const std::string& value : not_booleans) {
        EXPECT_EQ(apply(with_value(R"({"enable":@})", value)), "") << value;
    }
    for (const std::string& section : without_members) {
        EXPECT_EQ(apply(section), "") << section;
    }
    EXPECT_EQ(apply(R"({"Enable":false})"), "");
}

// --- The tables
// ------------------------------------------------------------------------------------

TEST(ImagesRoutingPreviewTables, NameTheirSectionsAndModels) {
    EXPECT_STREQ(no_stream_image_table.section, "no_stream_image");
    EXPECT_EQ(no_stream_image_table.models, decoder);
    EXPECT_STREQ(power_on_image_table.section, "power_on_image");
    EXPECT_EQ(power_on_image_table.models, decoder);
    EXPECT_STREQ(routing_table.section, "routing");
    EXPECT_EQ(routing_table.models, decoder);
    EXPECT_STREQ(preview_table.section, "stream.preview");
    EXPECT_EQ(preview_table.models, every_model);
}

}  // namespace
