#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include "cgi/uploads.h"
#include "tests/support/outcome.h"
#include "tests/support/recorder.h"

namespace {

// A document's members, each with its JSON value.
using Document = std::map<std::string, std::string>;

const char* const shared_keys[] = {"connect",     "outer_width", "outer_height", "view_width",
                                   "view_height", "stretch",     "rotation"};
const char* const grid_keys[] = {"max_row_count", "max_column_count", "position_row",
                                 "position_column"};
const char* const coordinate_keys[] = {"virtual_coordinates_x1", "virtual_coordinates_y1",
                                       "virtual_coordinates_x2", "virtual_coordinates_y2"};

std::string quoted(const std::string& text) {
    std::string json = "\"";
    json += text;
    json += '"';
    return json;
}

Document screen() {
    return {{"connect", "\"11\""},      {"outer_width", "\"1213\""}, {"outer_height", "\"684\""},
            {"view_width", "\"1210\""}, {"view_height", "\"681\""},  {"stretch", "\"0\""},
            {"rotation", "\"0\""}};
}

Document grid() {
    Document document = screen();
    document["max_row_count"] = "\"2\"";
    document["max_column_count"] = "\"3\"";
    document["position_row"] = "\"0\"";
    document["position_column"] = "\"1\"";
    return document;
}

Document coordinates() {
    Document document = screen();
    document["virtual_coordinates_x1"] = "\"10\"";
    document["virtual_coordinates_y1"] = "\"20\"";
    document["virtual_coordinates_x2"] = "\"30\"";
    document["virtual_coordinates_y2"] = "\"40\"";
    return document;
}

std::string as_json(const Document& document) {
    std::string json = "{";
    for (const auto& [key, value] : document) {
        json += (json.size() > 1 ? ",\"" : "\"") + key + "\":" + value;
    }
    return json + "}";
}

// On a unit with a video wall of this kind that does not reconnect by itself.
Outcome applied_to(const std::string& variant, const Document& document) {
    reset_recorder();
    set_lm_value("VW_VAR_VER", variant);
    set_lm_value("A_ADDON", "dante");
    set_lm_value("DANTE_OP_MODE", "video-audio");
    const int result = apply_video_wall_upload(as_json(document).c_str());
    return {result, recorded_trace()};
}

const std::string screen_events =
    "e e_vw_moninfo_1210_1213_681_684;e e_vw_rotate_0;e e_vw_stretch_type_2;\n";

Outcome done(const std::string& placing, const std::string& rest = screen_events) {
    return {1, "shell " + placing + rest};
}

// --- The two ways of placing a screen ------------------------------------------------------------

TEST(VideoWallUpload, AGridCellCountsFromZeroOnTheFirstKindOfWall) {
    EXPECT_EQ(applied_to("1", grid()), done("e e_vw_enable_1_2_0_1;"));
    EXPECT_EQ(applied_to("1.4", grid()), done("e e_vw_enable_1_2_0_1;"));
    EXPECT_EQ(applied_to("12", grid()), done("e e_vw_enable_1_2_0_1;"));
}

TEST(VideoWallUpload, AGridCellIsPassedThroughOnTheSecondKindOfWall) {
    EXPECT_EQ(applied_to("2", grid()), done("e e_chg_video_wall_type;e e_vw_enable_2_3_0_1;"));
    EXPECT_EQ(applied_to("21", grid()), done("e e_chg_video_wall_type;e e_vw_enable_2_3_0_1;"));
}

TEST(VideoWallUpload, AGridCellCountsFromZeroOnAnyOtherKindOfWall) {
    for (const char* variant : {"", "0", "3", " 1", "v1"}) {
        EXPECT_EQ(applied_to(variant, grid()), done("e e_vw_enable_1_2_0_1;")) << variant;
    }
}

TEST(VideoWallUpload, CoordinatesAreThePlaceOnEveryKindOfWall) {
    for (const char* variant : {"", "1", "2", "3"}) {
        EXPECT_EQ(applied_to(variant, coordinates()), done("e e_vw_enable_10_20_30_40_2;"))
            << variant;
    }
}

TEST(VideoWallUpload, TextsArePassedOnAsTheyStand) {
    Document document = coordinates();
    document["virtual_coordinates_x1"] = "\"\"";
    document["virtual_coordinates_y2"] = "\"a %s %d\"";
    document["view_width"] = "\"1;x\"";
    document["outer_height"] = quoted(std::string(3000, '9'));
    EXPECT_EQ(applied_to("1", document),
              done("e e_vw_enable__20_30_a %s %d_2;", "e e_vw_moninfo_1;x_1213_681_" +
                                                          std::string(3000, '9') +
                                                          ";e e_vw_rotate_0;"
                                                          "e e_vw_stretch_type_2;\n"));
    document = grid();
    document["position_row"] = "\"007\"";
    document["position_column"] = "\"x\"";
    EXPECT_EQ(applied_to("1", document), done("e e_vw_enable_1_2_007_x;"));
}

TEST(VideoWallUpload, KeysAreFoundIgnoringCase) {
    Document document = grid();
    document.erase("connect");
    document.erase("max_row_count");
    document["Connect"] = "\"11\"";
    document["MAX_row_COUNT"] = "\"2\"";
    EXPECT_EQ(applied_to("1", document), done("e e_vw_enable_1_2_0_1;"));
}

// --- The grid's size -----------------------------------------------------------------------------

Document grid_of(const std::string& rows, const std::string& columns) {
    Document document = grid();
    document["max_row_count"] = quoted(rows);
    document["max_column_count"] = quoted(columns);
    return document;
}

TEST(VideoWallUpload, TheFirstKindOfWallTakesOneToSixteenRowsAndColumns) {
    const Outcome out_of_range = {3, ""};
    EXPECT_EQ(applied_to("1", grid_of("1", "1")), done("e e_vw_enable_0_0_0_1;"));
    EXPECT_EQ(applied_to("1", grid_of("16", "16")), done("e e_vw_enable_15_15_0_1;"));
    for (const char* wrong : {"0", "17", "-1", "40", "", "x", "99999999999999999999",
                              "-99999999999999999999", "4294967297", "2147483648"}) {
        EXPECT_EQ(applied_to("1", grid_of(wrong, "2")), out_of_range) << wrong;
        EXPECT_EQ(applied_to("1", grid_of("2", wrong)), out_of_range) << wrong;
    }
}

TEST(VideoWallUpload, LeadingDigitsCount) {
    EXPECT_EQ(applied_to("1", grid_of("2x", " 03.9")), done("e e_vw_enable_1_2_0_1;"));
}

TEST(VideoWallUpload, TheSecondKindOfWallTakesAnySize) {
    EXPECT_EQ(applied_to("2", grid_of("40", "x")),
              done("e e_chg_video_wall_type;e e_vw_enable_40_x_0_1;"));
}

TEST(VideoWallUpload, OtherKindsOfWallTakeAnyNumberHeldAtTheLimits) {
    EXPECT_EQ(applied_to("", grid_of("40", "0")), done("e e_vw_enable_39_-1_0_1;"));
    EXPECT_EQ(applied_to("3", grid_of("x", "-7")), done("e e_vw_enable_-1_-8_0_1;"));
    EXPECT_EQ(applied_to("3", grid_of("99999999999999999999", "-99999999999999999999")),
              done("e e_vw_enable_2147483646_-2147483648_0_1;"));
    EXPECT_EQ(applied_to("3", grid_of("2147483647", "-2147483648")),
              done("e e_vw_enable_2147483646_-2147483648_0_1;"));
}

// --- Rotation and stretch ------------------------------------------------------------------------

TEST(VideoWallUpload, RotationsAndStretchesAreTranslated) {
    const char* const rotations[] = {"0", "5", "3", "6", "", "", "", "", "", ""};
    const char* const stretches[] = {"2", "1", "", "", "", "", "", "", "", ""};
    for (int index = 0; index < 10; index++) {
        Document document = grid();
        document["rotation"] = quoted(std::to_string(index));
        document["stretch"] = quoted(std::to_string(9 - index));
        EXPECT_EQ(
            applied_to("1", document),
            done("e e_vw_enable_1_2_0_1;",
                 std::string("e e_vw_moninfo_1210_1213_681_684;e e_vw_rotate_") + rotations[index] +
                     ";e e_vw_stretch_type_" + stretches[9 - index] + ";\n"));
    }
}

TEST(VideoWallUpload, RotationAndStretchAreReadAsDecimalNumbers) {
    Document document = grid();
    document["rotation"] = "\"1x\"";
    document["stretch"] = "\"none\"";
    EXPECT_EQ(applied_to("1", document),
              done("e e_vw_enable_1_2_0_1;",
                   "e e_vw_moninfo_1210_1213_681_684;e e_vw_rotate_5;e e_vw_stretch_type_2;\n"));
}

TEST(VideoWallUpload, RotationsAndStretchesOutsideZeroToNineAreRefusedInBothModes) {
    for (const char* key : {"rotation", "stretch"}) {
        for (const char* value : {"-1", "10", "99999999999999999999", "-99999999999999999999"}) {
            for (Document document : {grid(), coordinates()}) {
                document[key] = quoted(value);
                for (const char* variant : {"", "1", "2"}) {
                    EXPECT_EQ(applied_to(variant, document), (Outcome{3, ""})) << as_json(document);
                }
            }
        }
    }
}

// --- Members that are missing --------------------------------------------------------------------

const char* const no_texts[] = {"1", "null", "true", "[]", "{}", "[\"1\"]"};

// Takes the key away, or gives it a value that is no text.
template <typename Check>
void without(const Document& document, const char* key, Check check) {
    Document changed = document;
    changed.erase(key);
    check(changed);
    for (const char* value : no_texts) {
        changed[key] = value;
        check(changed);
    }
}

void expect_refused(const Document& document) {
    for (const char* variant : {"1", "2", ""}) {
        EXPECT_EQ(applied_to(variant, document), (Outcome{4, ""})) << as_json(document);
    }
}

TEST(VideoWallUpload, EverySharedMemberIsNeeded) {
    for (const char* key : shared_keys) {
        without(grid(), key, expect_refused);
        without(coordinates(), key, expect_refused);
    }
}

TEST(VideoWallUpload, EveryMemberOfTheGridIsNeeded) {
    for (const char* key : grid_keys) {
        without(grid(), key, expect_refused);
    }
}

TEST(VideoWallUpload, EveryCoordinateIsNeeded) {
    for (const char* key : coordinate_keys) {
        without(coordinates(), key, expect_refused);
    }
}

TEST(VideoWallUpload, ADocumentWithoutAPlaceIsRefused) {
    expect_refused(screen());
}

TEST(VideoWallUpload, TheTwoWaysCannotBeMixed) {
    for (const char* key : coordinate_keys) {
        Document document = grid();
        document[key] = "\"1\"";
        expect_refused(document);
    }
    for (const char* key : grid_keys) {
        Document document = coordinates();
        document[key] = "\"1\"";
        expect_refused(document);
    }
    Document both = grid();
    both.merge(coordinates());
    expect_refused(both);
}

TEST(VideoWallUpload, AMemberOfTheOtherWayThatIsNoTextDoesNotCount) {
    for (const char* value : no_texts) {
        Document in_grid = grid();
        in_grid["virtual_coordinates_x2"] = value;
        in_grid["virtual_coordinates_y1"] = value;
        EXPECT_EQ(applied_to("1", in_grid), done("e e_vw_enable_1_2_0_1;"));
        Document by_coordinates = coordinates();
        by_coordinates["max_row_count"] = value;
        EXPECT_EQ(applied_to("1", by_coordinates), done("e e_vw_enable_10_20_30_40_2;"));
    }
}

TEST(VideoWallUpload, AMissingMemberComesBeforeAValueOutOfRange) {
    Document document = grid_of("17", "17");
    document["rotation"] = "\"10\"";
    document.erase("stretch");
    expect_refused(document);
}

TEST(VideoWallUpload, DocumentsWithoutMembersAreRefused) {
    for (const char* text : {"{}", "[]", "[1]", "null", "true", "3", "\"x\""}) {
        reset_recorder();
        EXPECT_EQ(apply_video_wall_upload(text), 4) << text;
        EXPECT_EQ(recorded_trace(), "");
    }
}

TEST(VideoWallUpload, WhatIsNotJsonIsRefused) {
    for (const char* text : {"", " ", "{", "connect"}) {
        reset_recorder();
        EXPECT_EQ(apply_video_wall_upload(text), 2) << text;
        EXPECT_EQ(recorded_trace(), "");
    }
}

// --- Reconnecting --------------------------------------------------------------------------------

std::string trace_with_audio(const std::string& addon, const std::string& mode) {
    reset_recorder();
    if (addon != "missing") {
        set_lm_value("A_ADDON", addon);
    }
    if (mode != "missing") {
        set_lm_value("DANTE_OP_MODE", mode);
    }
    EXPECT_EQ(apply_video_wall_upload(as_json(coordinates()).c_str()), 1);
    return recorded_trace();
}

TEST(VideoWallUpload, TheUnitReconnectsWhereItsAudioAllows) {
    const std::string events = "shell e e_vw_enable_10_20_30_40_2;" + screen_events;
    const std::string reconnect = "shell e e_reconnect::11::v\n";
    EXPECT_EQ(trace_with_audio("none", "missing"), events + reconnect);
    EXPECT_EQ(trace_with_audio("none", "video-audio"), events + reconnect);
    EXPECT_EQ(trace_with_audio("dante", "audio-only"), events + reconnect);
    EXPECT_EQ(trace_with_audio("dante", "video-audio"), events);
    EXPECT_EQ(trace_with_audio("dante", "missing"), events);
    EXPECT_EQ(trace_with_audio("dante", ""), events);
    EXPECT_EQ(trace_with_audio("dante", "audio-only2"), events);
    EXPECT_EQ(trace_with_audio("aes67", "audio-only"), events);
    EXPECT_EQ(trace_with_audio("None", "audio-only"), events);
    EXPECT_EQ(trace_with_audio("", "audio-only"), events);
    EXPECT_EQ(trace_with_audio("missing", "missing"), events);
}

TEST(VideoWallUpload, TheSourceToReconnectToIsNotCut) {
    reset_recorder();
    set_lm_value("A_ADDON", "none");
    Document document = coordinates();
    const std::string source = std::string(200, 's') + "%s%d";
    document["connect"] = quoted(source);
    EXPECT_EQ(apply_video_wall_upload(as_json(document).c_str()), 1);
    EXPECT_EQ(recorded_trace(), "shell e e_vw_enable_10_20_30_40_2;" + screen_events +
                                    "shell e e_reconnect::" + source + "::v\n");
}

TEST(VideoWallUpload, TheExampleIsApplied) {
    std::ifstream file(std::string(EXAMPLES_DIR) + "/video-wall.json");
    std::stringstream text;
    text << file.rdbuf();
    reset_recorder();
    set_lm_value("VW_VAR_VER", "1");
    set_lm_value("A_ADDON", "none");
    EXPECT_EQ(apply_video_wall_upload(text.str().c_str()), 1);
    EXPECT_EQ(recorded_trace(),
              "shell e e_vw_enable_1_1_0_1;" + screen_events + "shell e e_reconnect::11::v\n");
}

}  // namespace
