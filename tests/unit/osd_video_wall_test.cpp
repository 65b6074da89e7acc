#include <gtest/gtest.h>

#include <string>

#include "tests/support/applying.h"
#include "tests/support/json_values.h"
#include "tests/support/recorder.h"
#include "unitconf/sections.h"
#include "unitconf/tables.h"

namespace {

// --- "osd"
// -----------------------------------------------------------------------------------------

class Osd : public testing::Test {
  protected:
    Osd() {
        reset_recorder();
    }
    static std::string apply(const std::string& json) {
        return trace_of(apply_osd_section, json);
    }
};

TEST_F(Osd, EverythingIsStoredInItsOrderWithoutPauses) {
    EXPECT_EQ(apply(R"json({
                  "settings": {
                      "background_color_enable": true, "osd_off_time": 15,
                      "background_transparency": 50, "background_color": "202020",
                      "font_color": "FFFFFF", "font_color_at": "custom", "font_size": 24,
                      "position": "bottom-right"
                  },
                  "information": {"custom_text": "Hall 1 \"%s\" $(x)"}
              })json"),
              "shell astparam s osd_cus_text \"Hall 1 \"%s\" $(x)\" > /dev/null 2>&1\n"
              "shell astparam s osd_pos 9;\n"
              "shell astparam s osd_fs 24;\n"
              "shell astparam s osd_fc_at custom > /dev/null 2>&1\n"
              "shell astparam s osd_fc FFFFFF > /dev/null 2>&1\n"
              "shell astparam s osd_bgc 202020 > /dev/null 2>&1\n"
              "shell astparam s osd_bg_tran 50;\n"
              "shell astparam s osd_off_time 15;\n"
              "shell astparam s osd_bgc_enable 2;\n");
}

TEST_F(Osd, TheBackgroundIsSwitchedWithTwoAndOne) {
    EXPECT_EQ(apply(R"({"settings":{"background_color_enable":true}})"),
              "shell astparam s osd_bgc_enable 2;\n");
    EXPECT_EQ(apply(R"({"settings":{"background_color_enable":false}})"),
              "shell astparam s osd_bgc_enable 1;\n");
    EXPECT_EQ(apply(R"({"settings":{"Background_Color_Enable":true}})"), "");
}

TEST_F(Osd, EveryPositionHasItsNumberAndAnyOtherTextMinusOne) {
    const struct {
        const char* position;
        const char* code;
    } cases[] = {
        {"top-left", "1"},     {"top", "2"},     {"top-right", "3"},   {"left", "4"},
        {"center", "5"},       {"right", "6"},   {"bottom-left", "7"}, {"bottom", "8"},
        {"bottom-right", "9"}, {"Center", "-1"}, {"", "-1"},           {"5", "-1"},
        {"top left", "-1"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(apply(with_value(R"({"settings":{"position":"@"}})", each.position)),
                  std::string("shell astparam s osd_pos ") + each.code + ";\n")
            << each.position;
    }
}

TEST_F(Osd, NumbersHaveNoLimits) {
    EXPECT_EQ(apply(R"({"Settings":{"Font_Size":-1,"Background_Transparency":1000,
                                    "OSD_off_time":2.9}})"),
              "shell astparam s osd_fs -1;\n"
              "shell astparam s osd_bg_tran 1000;\n"
              "shell astparam s osd_off_time 2;\n");
}

TEST_F(Osd, AnEmptyCustomTextIsStoredAndEmptyColoursAreNot) {
    EXPECT_EQ(apply(R"({"information":{"custom_text":""},"settings":{
                            "font_color_at":"","font_color":"","background_color":""}})"),
              "shell astparam s osd_cus_text \"\" > /dev/null 2>&1\n");
}

TEST_F(Osd, WrongTypesChangeNothing) {
    for (const std::string& value : not_texts) {
        for (const char* document :
             {R"({"information":{"custom_text":@}})", R"({"settings":{"position":@}})",
              R"({"settings":{"font_color_at":@}})", R"({"settings":{"font_color":@}})",
              R"({"settings":{"background_color":@}})"}) {
            EXPECT_EQ(apply(with_value(document, value)), "") << document << value;
        }
    }
    for (const std::string& value : not_numbers) {
        for (const char* document :
             {R"({"settings":{"font_size":@}})", R"({"settings":{"background_transparency":@}})",
              R"({"settings":{"osd_off_time":@}})"}) {
            EXPECT_EQ(apply(with_value(document, value)), "") << document << value;
        }
    }
    for (const std::string& value : not_booleans) {
        EXPECT_EQ(apply(with_value(R"({"settings":{"background_color_enable":@}})", value)), "")
            << value;
    }
    for (const std::string& value : without_members) {
        EXPECT_EQ(apply(value), "") << value;
        EXPECT_EQ(apply(with_value(R"({"information":@})", value)), "") << value;
        EXPECT_EQ(apply(with_value(R"({"settings":@})", value)), "") << value;
    }
}

// --- "video_wall"
// ----------------------------------------------------------------------------------

class VideoWall : public testing::Test {
  protected:
    VideoWall() {
        reset_recorder();
    }
    static std::string apply(const std::string& json) {
        return trace_of(apply_video_wall_section, json);
    }
    static void set_present_wall() {
        set_rw_value("vw_max_row", "mr");
        set_rw_value("vw_max_column", "mc");
        set_rw_value("vw_row", "2");
        set_rw_value("vw_column", "4");
        set_rw_value("vw_rotate", "rot");
        set_rw_value("vw_stretch_type", "str");
        set_rw_value("vw_moninfo_ha", "ha");
        set_rw_value("vw_moninfo_ht", "ht");
        set_rw_value("vw_moninfo_va", "va");
        set_rw_value("vw_moninfo_vt", "vt");
        set_rw_value("vw_v2_x1", "x1");
        set_rw_value("vw_v2_y1", "y1");
        set_rw_value("vw_v2_x2", "x2");
        set_rw_value("vw_v2_y2", "y2");
    }
};

const std::string switched_on =
    "shell astparam s en_video_wall y;lmparam s EN_VIDEO_WALL y;\n"
    "pause 1\n"
    "shell cp /dev/shm/rwparam /dev/shm/rwparam_temp\n";

const std::string placed_in_symmetric_wall =
    "shell e e_vw_pos_layout_mr_mc;e e_vw_enable_mr_mc_2_4;e e_vw_moninfo_ha_ht_va_vt;"
    "e e_vw_refresh_pos_idx_3_5;e e_vw_rotate_rot;e e_vw_stretch_type_str;\n"
    "pause 1\n";

const std::string placed_in_mosaic =
    "shell e e_vw_pos_layout_mr_mc;e e_vw_enable_x1_y1_x2_y2_2;e e_vw_moninfo_ha_ht_va_vt;"
    "e e_vw_refresh_pos_idx_3_5;e e_vw_rotate_rot;e e_vw_stretch_type_str;\n"
    "pause 1\n";

TEST_F(VideoWall, EverythingIsStoredInItsOrderBeforeTheWallIsSwitched) {
    set_present_wall();
    EXPECT_EQ(apply(R"({
                  "mode": "symmetric", "enable": true, "viewable_height": 681,
                  "viewable_width": 1210, "outside_height": 684, "outside_width": 1213,
                  "stretch": 1, "rotation": 3, "virtual_coordinates_y2": 1080,
                  "virtual_coordinates_x2": 3840, "virtual_coordinates_y1": -1,
                  "virtual_coordinates_x1": 1920, "unit_position": [0, 1], "columns": 3, "rows": 2
              })"),
              "shell astparam s vw_max_row 1;\n"
              "shell astparam s vw_max_column 2;\n"
              "shell astparam s vw_row 0;\n"
              "shell astparam s vw_column 1;\n"
              "shell astparam s vw_v2_x1 1920;\n"
              "shell astparam s vw_v2_y1 -1;\n"
              "shell astparam s vw_v2_x2 3840;\n"
              "shell astparam s vw_v2_y2 1080;\n"
              "shell astparam s vw_rotate 6;\n"
              "shell astparam s vw_stretch_type 1;\n"
              "shell astparam s vw_moninfo_ht 1213;\n"
              "shell astparam s vw_moninfo_vt 684;\n"
              "shell astparam s vw_moninfo_ha 1210;\n"
              "shell astparam s vw_moninfo_va 681;\n" +
                  switched_on + placed_in_symmetric_wall);
}

TEST_F(VideoWall, SizesRunFrom1To19AndAreStoredFromZero) {
    const struct {
        const char* size;
        const char* stored;
    } cases[] = {{"1", "0"},  {"4", "3"}, {"19", "18"}, {"19.9", "18"}, {"0", ""},
                 {"0.9", ""}, {"20", ""}, {"-1", ""},   {"1e99", ""},   {"-1e99", ""}};
    for (const auto& each : cases) {
        const std::string stored = each.stored;
        EXPECT_EQ(apply(with_value(R"({"Rows":@})", each.size)),
                  stored.empty() ? "" : "shell astparam s vw_max_row " + stored + ";\n")
            << each.size;
        EXPECT_EQ(apply(with_value(R"({"Columns":@})", each.size)),
                  stored.empty() ? "" : "shell astparam s vw_max_column " + stored + ";\n")
            << each.size;
    }
}

TEST_F(VideoWall, PositionsRunFrom0To18EachByItself) {
    const struct {
        const char* position;
        const char* trace;
    } cases[] = {
        {"[0,18]", "shell astparam s vw_row 0;\nshell astparam s vw_column 18;\n"},
        {"[18,0]", "shell astparam s vw_row 18;\nshell astparam s vw_column 0;\n"},
        {"[-0.5,18.9]", "shell astparam s vw_row 0;\nshell astparam s vw_column 18;\n"},
        {"[19,0]", "shell astparam s vw_column 0;\n"},
        {"[-1,0]", "shell astparam s vw_column 0;\n"},
        {"[1e99,0]", "shell astparam s vw_column 0;\n"},
        {"[0,19]", "shell astparam s vw_row 0;\n"},
        {"[0,-1]", "shell astparam s vw_row 0;\n"},
        {"[3]", "shell astparam s vw_row 3;\n"},
        {"[3,4,5]", "shell astparam s vw_row 3;\nshell astparam s vw_column 4;\n"},
        {"[\"3\",4]", "shell astparam s vw_column 4;\n"},
        {"[null,4]", "shell astparam s vw_column 4;\n"},
        {"[3,true]", "shell astparam s vw_row 3;\n"},
        {"[[3],{}]", ""},
        {"[]", ""},
        {"{}", ""},
        {"null", ""},
        {"3", ""},
        {"true", ""},
        {"\"[3,4]\"", ""},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(apply(with_value(R"({"Unit_Position":@})", each.position)), each.trace)
            << each.position;
    }
}

TEST_F(VideoWall, CoordinatesAndBezelsHaveNoLimits) {
    const struct {
        const char* key;
        const char* parameter;
    } cases[] = {
        {"virtual_coordinates_x1", "vw_v2_x1"}, {"virtual_coordinates_y1", "vw_v2_y1"},
        {"virtual_coordinates_x2", "vw_v2_x2"}, {"virtual_coordinates_y2", "vw_v2_y2"},
        {"outside_width", "vw_moninfo_ht"},     {"outside_height", "vw_moninfo_vt"},
        {"viewable_width", "vw_moninfo_ha"},    {"viewable_height", "vw_moninfo_va"},
        {"Outside_Width", "vw_moninfo_ht"},
    };
    for (const auto& each : cases) {
        const std::string document = std::string("{\"") + each.key + "\":@}";
        const std::string line = std::string("shell astparam s ") + each.parameter + " ";
        EXPECT_EQ(apply(with_value(document, "-7")), line + "-7;\n");
        EXPECT_EQ(apply(with_value(document, "0")), line + "0;\n");
        EXPECT_EQ(apply(with_value(document, "1e99")), line + "2147483647;\n");
        for (const std::string& value : not_numbers) {
            EXPECT_EQ(apply(with_value(document, value)), "") << each.key << value;
        }
    }
}

TEST_F(VideoWall, RotationAndStretchHaveStoredTextsForEveryNumber) {
    const struct {
        const char* number;
        const char* rotation;
        const char* stretch;
    } cases[] = {{"0", "0", "2"},   {"1", "5", "1"},   {"2", "3", "2"},  {"3", "6", "2"},
                 {"4", "0", "2"},   {"7", "0", "2"},   {"-1", "0", "2"}, {"1.9", "5", "1"},
                 {"0.9", "0", "2"}, {"1e99", "0", "2"}};
    for (const auto& each : cases) {
        EXPECT_EQ(apply(with_value(R"({"Rotation":@})", each.number)),
                  std::string("shell astparam s vw_rotate ") + each.rotation + ";\n")
            << each.number;
        EXPECT_EQ(apply(with_value(R"({"Stretch":@})", each.number)),
                  std::string("shell astparam s vw_stretch_type ") + each.stretch + ";\n")
            << each.number;
    }
}

TEST_F(VideoWall, WrongTypesChangeNothing) {
    for (const std::string& value : not_numbers) {
        for (const char* key : {"rows", "columns", "rotation", "stretch"}) {
            EXPECT_EQ(apply(std::string("{\"") + key + "\":" + value + "}"), "") << key << value;
        }
    }
    for (const std::string& value : not_booleans) {
        EXPECT_EQ(apply(with_value(R"({"enable":@,"mode":"symmetric"})", value)), "") << value;
    }
    for (const std::string& section : without_members) {
        EXPECT_EQ(apply(section), "") << section;
    }
    EXPECT_EQ(apply(R"({"Enable":true,"mode":"symmetric"})"), "");
    EXPECT_EQ(apply(R"({"mode":"symmetric"})"), "");
}

TEST_F(VideoWall, LeavingTheWallIgnoresTheMode) {
    const std::string left =
        "shell astparam s en_video_wall n;lmparam s EN_VIDEO_WALL n;e e_vw_reset_to_pos_0_0;\n"
        "pause 1\n";
    EXPECT_EQ(apply(R"({"enable":false})"), left);
    EXPECT_EQ(apply(R"({"enable":false,"mode":"symmetric"})"), left);
    EXPECT_EQ(apply(R"({"enable":false,"mode":"mosaic"})"), left);
}

TEST_F(VideoWall, ASymmetricWallOfTheSecondTypeChangesItsTypeFirst) {
    set_present_wall();
    set_lm_value("VW_VAR_VER", "2.1");
    EXPECT_EQ(apply(R"({"enable":true,"mode":"symmetric"})"), switched_on +
                                                                  "shell e e_chg_video_wall_type;\n"
                                                                  "pause 1\n" +
                                                                  placed_in_symmetric_wall);
    EXPECT_EQ(apply(R"({"enable":true,"mode":"mosaic"})"), switched_on + placed_in_mosaic);
}

TEST_F(VideoWall, ASymmetricWallOfAnotherTypeDoesNot) {
    for (const char* type : {"12", "1", "", "x2"}) {
        reset_recorder();
        set_present_wall();
        set_lm_value("VW_VAR_VER", type);
        EXPECT_EQ(apply(R"({"enable":true,"mode":"symmetric"})"),
                  switched_on + placed_in_symmetric_wall)
            << type;
    }
}

TEST_F(VideoWall, TheModeIsFoundAnywhereInItsText) {
    set_present_wall();
    for (const char* mode : {"symmetric", "asymmetric", "symmetric mosaic", "mosaic symmetric"}) {
        EXPECT_EQ(apply(with_value(R"({"enable":true,"Mode":"@"})", mode)),
                  switched_on + placed_in_symmetric_wall)
            << mode;
    }
    for (const char* mode : {"mosaic", "a mosaic", "mosaics", "Symmetric mosaic"}) {
        EXPECT_EQ(apply(with_value(R"({"enable":true,"Mode":"@"})", mode)),
                  switched_on + placed_in_mosaic)
            << mode;
    }
}

TEST_F(VideoWall, WithAnotherModeTheWallIsOnlySwitchedOn) {
    set_present_wall();
    set_lm_value("VW_VAR_VER", "2");
    EXPECT_EQ(apply(R"({"enable":true})"), switched_on);
    for (const char* mode : {"", "Symmetric", "MOSAIC", "symmetri", "mosai"}) {
        EXPECT_EQ(apply(with_value(R"({"enable":true,"mode":"@"})", mode)), switched_on) << mode;
    }
    for (const std::string& mode : not_texts) {
        EXPECT_EQ(apply(with_value(R"({"enable":true,"mode":@})", mode)), switched_on) << mode;
    }
}

TEST_F(VideoWall, PresentValuesThatAreMissingAreEmptyAndCountAsZero) {
    EXPECT_EQ(apply(R"({"enable":true,"mode":"symmetric"})"),
              switched_on +
                  "shell e e_vw_pos_layout__;e e_vw_enable____;e e_vw_moninfo____;"
                  "e e_vw_refresh_pos_idx_1_1;e e_vw_rotate_;e e_vw_stretch_type_;\n"
                  "pause 1\n");
    EXPECT_EQ(apply(R"({"enable":true,"mode":"mosaic"})"),
              switched_on +
                  "shell e e_vw_pos_layout__;e e_vw_enable_____2;e e_vw_moninfo____;"
                  "e e_vw_refresh_pos_idx_1_1;e e_vw_rotate_;e e_vw_stretch_type_;\n"
                  "pause 1\n");
}

TEST_F(VideoWall, PresentPositionsAreCountedFromOne) {
    const struct {
        const char* present;
        const char* counted;
    } cases[] = {{"0", "1"},
                 {"18", "19"},
                 {"-1", "0"},
                 {"x", "1"},
                 {"7x", "8"},
                 {"2147483647", "2147483647"},
                 {"-2147483648", "-2147483647"},
                 {"99999999999999999999", "2147483647"}};
    for (const auto& each : cases) {
        reset_recorder();
        set_rw_value("vw_row", each.present);
        set_rw_value("vw_column", "1");
        const std::string present = each.present;
        EXPECT_EQ(apply(R"({"enable":true,"mode":"symmetric"})"),
                  switched_on + "shell e e_vw_pos_layout__;e e_vw_enable___" + present +
                      "_1;e e_vw_moninfo____;e e_vw_refresh_pos_idx_" + each.counted +
                      "_2;e e_vw_rotate_;e e_vw_stretch_type_;\n"
                      "pause 1\n");
    }
}

TEST_F(VideoWall, PresentValuesAreNoFormats) {
    set_rw_value("vw_max_row", "%s%n");
    set_rw_value("vw_rotate", std::string(1023, 'r'));
    EXPECT_EQ(apply(R"({"enable":true,"mode":"symmetric"})"),
              switched_on +
                  "shell e e_vw_pos_layout_%s%n_;e e_vw_enable_%s%n___;e e_vw_moninfo____;"
                  "e e_vw_refresh_pos_idx_1_1;e e_vw_rotate_" +
                  std::string(1023, 'r') +
                  ";e e_vw_stretch_type_;\n"
                  "pause 1\n");
}

// --- The tables
// ------------------------------------------------------------------------------------

TEST(OsdVideoWallTables, NameTheirSectionsAndModels) {
    EXPECT_STREQ(osd_table.section, "osd");
    EXPECT_EQ(osd_table.models, decoder);
    EXPECT_STREQ(video_wall_table.section, "video_wall");
    EXPECT_EQ(video_wall_table.models, decoder);
}

}  // namespace
