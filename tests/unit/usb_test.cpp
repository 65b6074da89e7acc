#include "unitconf/usb.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/applying.h"
#include "tests/support/json_values.h"
#include "tests/support/recorder.h"
#include "unitconf/sections.h"
#include "unitconf/tables.h"

namespace {

// --- "usb_devices"
// --------------------------------------------------------------------------------

// Every section begins with a pause and has another behind the place of "enable".
const std::string two_pauses = "pause 1\npause 1\n";

class UsbDevices : public testing::Test {
  protected:
    UsbDevices() {
        reset_recorder();
    }
    static std::string apply(const std::string& json) {
        return trace_of(apply_usb_devices_section, json);
    }
};

TEST_F(UsbDevices, EverythingIsToldInItsOrder) {
    EXPECT_EQ(apply(R"({
                  "mouse_roaming": {
                      "roaming_map_file": "M1,0,0:M2,1,0", "lists": "10.0.0.1,0,0:10.0.0.2,1,0",
                      "columns": 2, "rows": 1, "enable": true
                  },
                  "green_list": {"lists": [{"ipaddr": "10.0.0.5"}], "enable": true},
                  "usb_2_enable": {"enable": true, "usb_follow_video": false},
                  "usb_follow_video": true,
                  "usb_km_enable": {"enable": false},
                  "enable": true
              })"),
              "pause 1\n"
              "mcu usbpower,on\n"
              "pause 1\n"
              "pause 1\n"
              "shell astparam s usbFlv 1;\n"
              "shell echo -ne \"USB_GREENLIST=y\\x0aIP:10.0.0.5\" > /user_data2/usb_greenlist.txt;"
              "cp /user_data2/usb_greenlist.txt /share/usb_greenlist.txt;\n"
              "pause 1\n"
              "shell astparam s mouseroam_enable 1;\n"
              "shell astparam s roaming_rows 1 > /dev/null 2>&1\n"
              "shell astparam s roaming_columns 2 > /dev/null 2>&1\n"
              "shell astparam s kmoip_roaming_layout \"10.0.0.1,0,0:10.0.0.2,1,0\""
              " > /dev/null 2>&1\n"
              "shell echo \"M1,0,0:M2,1,0\" > /var/tmp/roaming_file;"
              "cp /var/tmp/roaming_file /user_data2/roaming_file\n");
}

TEST_F(UsbDevices, FalseSwitchesOff) {
    EXPECT_EQ(
        apply(R"({"enable":false,"usb_follow_video":false,"mouse_roaming":{"enable":false}})"),
        "pause 1\n"
        "mcu usbpower,off\n"
        "pause 1\n"
        "shell astparam s usbFlv 0;\n"
        "shell astparam s mouseroam_enable 0;\n");
}

TEST_F(UsbDevices, WithoutMembersOnlyTheTwoPausesAreTaken) {
    for (const std::string& section : without_members) {
        EXPECT_EQ(apply(section), two_pauses) << section;
    }
}

TEST_F(UsbDevices, BooleansOfOtherTypesOrCaseChangeNothing) {
    for (const char* document :
         {R"({"enable":@})", R"({"usb_follow_video":@})", R"({"mouse_roaming":{"enable":@}})"}) {
        for (const std::string& value : not_booleans) {
            EXPECT_EQ(apply(with_value(document, value)), two_pauses) << document << value;
        }
    }
    EXPECT_EQ(apply(R"({"Enable":true,"USB_Follow_Video":true,"mouse_roaming":{"ENABLE":true}})"),
              two_pauses);
}

TEST_F(UsbDevices, UsbForKeyboardAndMouseOnlyCostsItsPause) {
    for (const char* value : {R"({"enable":true})", R"({"enable":3})", R"({"Enable":false})", "{}",
                              "null", "true", "[]", "\"x\""}) {
        EXPECT_EQ(apply(with_value(R"({"USB_km_enable":@})", value)), two_pauses + "pause 1\n")
            << value;
    }
}

TEST_F(UsbDevices, Usb2IsAcceptedAndChangesNothing) {
    for (const char* value : {R"({"enable":true,"usb_follow_video":true})", R"({"enable":3})", "{}",
                              "null", "true", "[]"}) {
        EXPECT_EQ(apply(with_value(R"({"usb_2_enable":@})", value)), two_pauses) << value;
    }
}

TEST_F(UsbDevices, RoamingSizesHaveNoLimits) {
    EXPECT_EQ(apply(R"({"Mouse_Roaming":{"Rows":-1,"COLUMNS":2147483648}})"),
              two_pauses +
                  "shell astparam s roaming_rows -1 > /dev/null 2>&1\n"
                  "shell astparam s roaming_columns 2147483647 > /dev/null 2>&1\n");
    for (const std::string& value : not_numbers) {
        EXPECT_EQ(apply(with_value(R"({"mouse_roaming":{"rows":@}})", value)), two_pauses);
        EXPECT_EQ(apply(with_value(R"({"mouse_roaming":{"columns":@}})", value)), two_pauses);
    }
}

TEST_F(UsbDevices, RoamingTextsOfOtherTypesChangeNothing) {
    for (const std::string& value : not_texts) {
        EXPECT_EQ(apply(with_value(R"({"mouse_roaming":{"lists":@}})", value)), two_pauses);
        EXPECT_EQ(apply(with_value(R"({"mouse_roaming":{"roaming_map_file":@}})", value)),
                  two_pauses);
    }
    for (const std::string& value : without_members) {
        EXPECT_EQ(apply(with_value(R"({"mouse_roaming":@})", value)), two_pauses) << value;
    }
}

TEST_F(UsbDevices, EmptyRoamingTextsAreStored) {
    EXPECT_EQ(apply(R"({"mouse_roaming":{"lists":"","roaming_map_file":""}})"),
              two_pauses +
                  "shell astparam s kmoip_roaming_layout \"\" > /dev/null 2>&1\n"
                  "shell echo \"\" > /var/tmp/roaming_file;"
                  "cp /var/tmp/roaming_file /user_data2/roaming_file\n");
}

TEST_F(UsbDevices, ALayoutWithoutAMapUpdatesTheUnitsMap) {
    answer_command(
        "nice -n 19 ionice -c 3 node_query --match_key MY_IP=10.0.0.1 --match_key IS_HOST=n "
        "--get_key MY_MAC",
        "AA01");
    answer_command("astparam g ethaddr", "AA:01");
    provide_file("/var/tmp/roaming_file", "AA01,5,5\n");
    EXPECT_EQ(apply(R"({"mouse_roaming":{"lists":"10.0.0.1,0,0"}})"),
              two_pauses +
                  "shell astparam s kmoip_roaming_layout \"10.0.0.1,0,0\" > /dev/null 2>&1\n"
                  "read nice -n 19 ionice -c 3 node_query --match_key MY_IP=10.0.0.1 "
                  "--match_key IS_HOST=n --get_key MY_MAC\n"
                  "read astparam g ethaddr\n"
                  "replace /var/tmp/roaming_file AA01,0,0\n"
                  "replace /user_data2/roaming_file AA01,0,0\n");
}

TEST_F(UsbDevices, AMapOfAnyTypeKeepsTheUnitsMapFromBeingUpdated) {
    for (const char* map : {"null", "3", "true", "[]", "{}"}) {
        EXPECT_EQ(apply(with_value(
                      R"({"mouse_roaming":{"lists":"10.0.0.1,0,0","Roaming_Map_File":@}})", map)),
                  two_pauses +
                      "shell astparam s kmoip_roaming_layout \"10.0.0.1,0,0\" > /dev/null 2>&1\n")
            << map;
    }
}

TEST_F(UsbDevices, RoamingTextsAreTakenAsTheyStand) {
    EXPECT_EQ(apply(R"json({"mouse_roaming":{"lists":"%s \"$(x)","roaming_map_file":"%n"}})json"),
              two_pauses +
                  "shell astparam s kmoip_roaming_layout \"%s \"$(x)\" > /dev/null 2>&1\n"
                  "shell echo \"%n\" > /var/tmp/roaming_file;"
                  "cp /var/tmp/roaming_file /user_data2/roaming_file\n");
}

// --- The green list
// -------------------------------------------------------------------------------

std::string green_list_trace(const std::string& list, const std::string& end = "") {
    return two_pauses + "shell echo -ne \"" + list + "\" > /user_data2/usb_greenlist.txt;" +
           "cp /user_data2/usb_greenlist.txt /share/usb_greenlist.txt;" + end + "\npause 1\n";
}

TEST_F(UsbDevices, SwitchingTheGreenListOffStopsTheLink) {
    EXPECT_EQ(apply(R"({"green_list":{"enable":false,"lists":[{"ipaddr":"10.0.0.5"}]}})"),
              green_list_trace("USB_GREENLIST=n\\x0aIP:10.0.0.5", "e e_stop_link::u;"));
}

TEST_F(UsbDevices, ShortTextsAreIdentifiers) {
    EXPECT_EQ(apply(R"({"green_list":{"enable":true,"lists":[
                        {"ipaddr":"abc"},{"ipaddr":"0022"},{"ipaddr":"00221"},{"ipaddr":"a"}]}})"),
              green_list_trace("USB_GREENLIST=y\\x0aID:abc\\x0aID:0022\\x0aIP:00221\\x0aID:a"));
    EXPECT_EQ(apply("{\"green_list\":{\"enable\":true,\"lists\":[{\"ipaddr\":\"\xC3\xA4"
                    "bc\"},{\"ipaddr\":\"\xC3\xA4"
                    "bcd\"}]}}"),
              green_list_trace("USB_GREENLIST=y\\x0aID:\xC3\xA4"
                               "bc\\x0aIP:\xC3\xA4"
                               "bcd"));
}

TEST_F(UsbDevices, ElementsWithoutAUsableAddressAreSkipped) {
    EXPECT_EQ(apply(R"({"green_list":{"enable":true,"lists":[
                        {"ipaddr":""},{"ipaddr":3},{},null,"10.0.0.1",[],{"ipaddr":null},
                        {"IpAddr":"10.0.0.6"}]}})"),
              green_list_trace("USB_GREENLIST=y\\x0aIP:10.0.0.6"));
}

TEST_F(UsbDevices, AListWithoutElementsIsStored) {
    for (const char* lists : {"[]", "{}", "null", "true", "3", "\"10.0.0.5\""}) {
        EXPECT_EQ(apply(with_value(R"({"Green_List":{"enable":true,"Lists":@}})", lists)),
                  green_list_trace("USB_GREENLIST=y"))
            << lists;
        EXPECT_EQ(apply(with_value(R"({"green_list":{"enable":false,"lists":@}})", lists)),
                  green_list_trace("USB_GREENLIST=n", "e e_stop_link::u;"))
            << lists;
    }
}

TEST_F(UsbDevices, AGreenListNeedsBothMembersAndABoolean) {
    for (const std::string& value : not_booleans) {
        EXPECT_EQ(apply(with_value(R"({"green_list":{"enable":@,"lists":[]}})", value)), two_pauses)
            << value;
    }
    for (const char* list :
         {R"({"enable":true})", R"({"enable":false})", R"({"lists":[{"ipaddr":"10.0.0.5"}]})",
          R"({"Enable":true,"lists":[{"ipaddr":"10.0.0.5"}]})", "{}", "null", "true", "[]"}) {
        EXPECT_EQ(apply(with_value(R"({"green_list":@})", list)), two_pauses) << list;
    }
}

// One element: 59 bytes of text, of which the first line takes 15 and the mark of an address 7.
TEST_F(UsbDevices, TheGreenListEndsWhereItsTextIsFull) {
    const std::string fits(37, 'a');
    EXPECT_EQ(apply(R"({"green_list":{"enable":true,"lists":[{"ipaddr":")" + fits + R"("}]}})"),
              green_list_trace("USB_GREENLIST=y\\x0aIP:" + fits));
    EXPECT_EQ(apply(R"({"green_list":{"enable":true,"lists":[{"ipaddr":")" + fits + R"(b"}]}})"),
              green_list_trace("USB_GREENLIST=y\\x0aIP:" + fits));
}

// Three elements: 119 bytes of text. Elements that are skipped count for its size.
TEST_F(UsbDevices, TheGreenListIsCutInsideAnEscapeToo) {
    const std::string address(95, 'a');
    EXPECT_EQ(apply(R"({"green_list":{"enable":true,"lists":[{},{"ipaddr":")" + address +
                    R"("},{"ipaddr":"10.0.0.5"}]}})"),
              green_list_trace("USB_GREENLIST=y\\x0aIP:" + address + "\\x"));
    const std::string longer(97, 'a');
    EXPECT_EQ(apply(R"({"green_list":{"enable":true,"lists":[{},{"ipaddr":")" + longer +
                    R"("},{"ipaddr":"10.0.0.5"}]}})"),
              green_list_trace("USB_GREENLIST=y\\x0aIP:" + longer));
}

TEST_F(UsbDevices, ALongGreenListIsRunWhole) {
    std::string elements;
    std::string list = "USB_GREENLIST=y";
    for (int i = 0; i < 200; i++) {
        elements += std::string(i == 0 ? "" : ",") + R"({"ipaddr":"192.168.100.200"})";
        list += "\\x0aIP:192.168.100.200";
    }
    EXPECT_EQ(apply(R"({"green_list":{"enable":true,"lists":[)" + elements + "]}}"),
              green_list_trace(list));
}

// --- "usb_host"
// -----------------------------------------------------------------------------------

class UsbHost : public testing::Test {
  protected:
    UsbHost() {
        reset_recorder();
    }
    static std::string apply(const std::string& json) {
        return trace_of(apply_usb_host_section, json);
    }
};

TEST_F(UsbHost, EnableIsToldBeforeTheInput) {
    EXPECT_EQ(apply(R"({"host_select":"hdmi","enable":true})"),
              "shell astparam s access_on_u y\n"
              "pause 1\n"
              "pause 1\n"
              "mcu setusbhost,2\n"
              "pause 1\n");
    EXPECT_EQ(apply(R"({"enable":false})"),
              "shell astparam s access_on_u n\n"
              "pause 1\n"
              "pause 1\n"
              "pause 1\n");
}

TEST_F(UsbHost, EveryTextIsSentAndUnknownOnesAsMinusOne) {
    const struct {
        const char* word;
        const char* code;
    } cases[] = {{"auto", "0"}, {"usb-c", "1"}, {"hdmi", "2"}, {"USB-C", "-1"},
                 {"", "-1"},    {"usb", "-1"},  {"1", "-1"}};
    for (const auto& each : cases) {
        EXPECT_EQ(apply(with_value(R"({"Host_Select":"@"})", each.word)),
                  std::string("pause 1\nmcu setusbhost,") + each.code + "\npause 1\n")
            << each.word;
    }
}

TEST_F(UsbHost, WithoutAUsableMemberTwoPausesAreTaken) {
    for (const std::string& value : not_booleans) {
        EXPECT_EQ(apply(with_value(R"({"enable":@})", value)), two_pauses) << value;
    }
    for (const std::string& value : not_texts) {
        EXPECT_EQ(apply(with_value(R"({"host_select":@})", value)), two_pauses) << value;
    }
    for (const std::string& section : without_members) {
        EXPECT_EQ(apply(section), two_pauses) << section;
    }
    EXPECT_EQ(apply(R"({"Enable":true})"), two_pauses);
}

// --- The roaming map
// ------------------------------------------------------------------------------

std::string query(const std::string& address) {
    return "nice -n 19 ionice -c 3 node_query --match_key MY_IP=" + address +
           " --match_key IS_HOST=n --get_key MY_MAC";
}

std::string asked(const std::string& address) {
    return "read " + query(address) + "\n";
}

const std::string own_mac_read = "read astparam g ethaddr\n";

std::string written(const std::string& map) {
    return "replace /var/tmp/roaming_file " + map + "\nreplace /user_data2/roaming_file " + map +
           "\n";
}

// A unit at 10.0.0.1 whose map knows it and its neighbours at 10.0.0.2 and 10.0.0.3.
class RoamingLayout : public testing::Test {
  protected:
    RoamingLayout() {
        reset_recorder();
        answer_command(query("10.0.0.1"), "00005E005301");
        answer_command(query("10.0.0.2"), "00005E005302");
        answer_command(query("10.0.0.3"), "00005E005303");
        answer_command("astparam g ethaddr", "00:00:5E:00:53:01");
        provide_file("/var/tmp/roaming_file", "00005E005301,9,9:00005E005302,9,9\n");
    }
    static std::string update(const std::string& layout) {
        const size_t before = recorded_trace().size();
        update_roaming_layout(layout.c_str());
        return recorded_trace().substr(before);
    }
    // What becomes of a map with 10.0.0.1 at 0,0 and 10.0.0.2 at column 3 and row 16.
    static std::string rewritten(const std::string& map) {
        provide_file("/var/tmp/roaming_file", map);
        const std::string trace = update("10.0.0.1,0,0:10.0.0.2,3,16");
        const std::string result = file_content("/user_data2/roaming_file");
        EXPECT_EQ(trace, asked("10.0.0.1") + asked("10.0.0.2") + own_mac_read + written(result));
        return result;
    }
};

TEST_F(RoamingLayout, TheOriginPutsTheLayoutIntoItsMap) {
    EXPECT_EQ(update("10.0.0.1,0,0:10.0.0.2,1,0"),
              "read nice -n 19 ionice -c 3 node_query --match_key MY_IP=10.0.0.1 "
              "--match_key IS_HOST=n --get_key MY_MAC\n"
              "read nice -n 19 ionice -c 3 node_query --match_key MY_IP=10.0.0.2 "
              "--match_key IS_HOST=n --get_key MY_MAC\n"
              "read astparam g ethaddr\n"
              "replace /var/tmp/roaming_file 00005E005301,0,0:00005E005302,1,0\n"
              "replace /user_data2/roaming_file 00005E005301,0,0:00005E005302,1,0\n");
}

TEST_F(RoamingLayout, OnlyTheTwoFieldsBehindAListedMacChange) {
    EXPECT_EQ(rewritten("00005E005302,9,9,x,,y:00005E005303,9,9:name,00005E005301,9,9,9"),
              "00005E005302,3,16,x,,y:00005E005303,9,9:name,00005E005301,0,0,9");
    EXPECT_EQ(rewritten("::00005E005302,9,9:"), "::00005E005302,3,16:");
    EXPECT_EQ(rewritten("00005e005302,9,9:x00005E005302,9,9:00005E00530,9,9"),
              "00005e005302,9,9:x00005E005302,9,9:00005E00530,9,9");
    EXPECT_EQ(rewritten("00005E005302,-3,longer than it was"), "00005E005302,3,16");
    EXPECT_EQ(rewritten("00005E005302,9,9,00005E005301,8,8"), "00005E005302,3,16,00005E005301,8,8");
}

TEST_F(RoamingLayout, MapFieldsThatAreMissingAreAdded) {
    EXPECT_EQ(rewritten("00005E005302:00005E005302:00005E005302"),
              "00005E005302,3,16:00005E005302,3,16:00005E005302,3,16");
    EXPECT_EQ(rewritten("00005E005302,9"), "00005E005302,3,16");
    EXPECT_EQ(rewritten("00005E005302,"), "00005E005302,3,16");
    EXPECT_EQ(rewritten("00005E005302,,"), "00005E005302,3,16");
    EXPECT_EQ(rewritten("00005E005302,,,"), "00005E005302,3,16,");
}

TEST_F(RoamingLayout, TheMapLosesItsLineEnd) {
    EXPECT_EQ(rewritten("00005E005302,9,9\n"), "00005E005302,3,16");
    EXPECT_EQ(rewritten("00005E005302,9,9\r"), "00005E005302,3,16");
    EXPECT_EQ(rewritten("00005E005302,9,9\r\n"), "00005E005302,3,16");
    EXPECT_EQ(rewritten("a,1,1\n:00005E005302,9,9:\n"), "a,1,1\n:00005E005302,3,16:");
    EXPECT_EQ(rewritten("\n"), "");
    EXPECT_EQ(rewritten(""), "");
}

TEST_F(RoamingLayout, OfUnitsWithOneMacTheFirstCounts) {
    answer_command(query("10.0.0.3"), "00005E005302");
    EXPECT_EQ(update("10.0.0.1,0,0:10.0.0.2,1,0:10.0.0.3,2,0"),
              asked("10.0.0.1") + asked("10.0.0.2") + asked("10.0.0.3") + own_mac_read +
                  written("00005E005301,0,0:00005E005302,1,0"));
}

TEST_F(RoamingLayout, PositionsAreWrittenAsNumbers) {
    EXPECT_EQ(update("10.0.0.1,0,0:10.0.0.2,016,0000000000001"),
              asked("10.0.0.1") + asked("10.0.0.2") + own_mac_read +
                  written("00005E005301,0,0:00005E005302,16,1"));
}

TEST_F(RoamingLayout, PositionsThatAreNoNumbersUpTo16EndTheUpdateAfterTheQueries) {
    for (const char* position :
         {"17,0", "0,17", "-1,0", "0,-1", "a,0", "0,1a", " 1,0", "+1,0", ",0", "1,", "1", "",
          "99999999999999999999,0", "1 ,0", "0x1,0", "1.0,0"}) {
        EXPECT_EQ(update(std::string("10.0.0.1,0,0:10.0.0.2,") + position),
                  asked("10.0.0.1") + asked("10.0.0.2") + own_mac_read)
            << position;
    }
    EXPECT_EQ(update("10.0.0.1,0,0:10.0.0.2"),
              asked("10.0.0.1") + asked("10.0.0.2") + own_mac_read);
}

TEST_F(RoamingLayout, WhatFollowsTheThirdFieldIsIgnored) {
    EXPECT_EQ(update("10.0.0.1,0,0,x,y:10.0.0.2,1,0,"),
              asked("10.0.0.1") + asked("10.0.0.2") + own_mac_read +
                  written("00005E005301,0,0:00005E005302,1,0"));
}

TEST_F(RoamingLayout, EmptyEntriesArePassedOver) {
    EXPECT_EQ(update("::10.0.0.1,0,0::10.0.0.2,1,0:"),
              asked("10.0.0.1") + asked("10.0.0.2") + own_mac_read +
                  written("00005E005301,0,0:00005E005302,1,0"));
    EXPECT_EQ(update(""), "");
    EXPECT_EQ(update(":::"), "");
}

TEST_F(RoamingLayout, TheFirstEntryHoldsTheOriginsPosition) {
    EXPECT_EQ(update("10.0.0.1,0,1:10.0.0.2,0,0"), "");
    EXPECT_EQ(update("10.0.0.1"), "");
    EXPECT_EQ(update("10.0.0.1,0, 0"), "");
}

// The test for "0,0" looks at the text and not at the fields: here the origin stands second.
TEST_F(RoamingLayout, TheOriginCanBeAnotherThanTheFirst) {
    EXPECT_EQ(update("10.0.0.2,10,0:10.0.0.1,0,0"),
              asked("10.0.0.2") + asked("10.0.0.1") + own_mac_read +
                  written("00005E005301,0,0:00005E005302,10,0"));
    EXPECT_EQ(update("10.0.0.1,10,0:10.0.0.2,1,1"),
              asked("10.0.0.1") + asked("10.0.0.2") + own_mac_read);
}

TEST_F(RoamingLayout, OfTwoOriginsTheFirstCounts) {
    EXPECT_EQ(update("10.0.0.1,0,0:10.0.0.2,0,0"),
              asked("10.0.0.1") + asked("10.0.0.2") + own_mac_read +
                  written("00005E005301,0,0:00005E005302,0,0"));
    EXPECT_EQ(update("10.0.0.2,0,0:10.0.0.1,0,0"),
              asked("10.0.0.2") + asked("10.0.0.1") + own_mac_read);
}

TEST_F(RoamingLayout, OnAnotherUnitThanTheOriginNothingIsWritten) {
    EXPECT_EQ(update("10.0.0.2,0,0:10.0.0.1,1,0"),
              asked("10.0.0.2") + asked("10.0.0.1") + own_mac_read);
    answer_command("astparam g ethaddr", "");
    EXPECT_EQ(update("10.0.0.1,0,0"), asked("10.0.0.1") + own_mac_read);
    answer_command("astparam g ethaddr", "0000:5E005301:");
    EXPECT_EQ(update("10.0.0.1,0,0"),
              asked("10.0.0.1") + own_mac_read + written("00005E005301,0,0:00005E005302,9,9"));
}

TEST_F(RoamingLayout, AnAddressThatNobodyAnswersForEndsTheUpdateAtOnce) {
    EXPECT_EQ(update("10.0.0.1,0,0:10.0.0.9,1,0:10.0.0.2,2,0"),
              asked("10.0.0.1") + asked("10.0.0.9"));
    answer_command(query("10.0.0.1"), "");
    EXPECT_EQ(update("10.0.0.1,0,0:10.0.0.2,1,0"), asked("10.0.0.1"));
    EXPECT_EQ(update(",0,0"), asked(""));
}

TEST_F(RoamingLayout, WithoutAMapNothingIsWritten) {
    reset_recorder();
    answer_command(query("10.0.0.1"), "00005E005301");
    answer_command("astparam g ethaddr", "00:00:5E:00:53:01");
    EXPECT_EQ(update("10.0.0.1,0,0"), asked("10.0.0.1") + own_mac_read);
}

TEST_F(RoamingLayout, EachFileIsWrittenEvenIfTheOtherCannotBe) {
    refuse_writing("/var/tmp/roaming_file");
    EXPECT_EQ(update("10.0.0.1,0,0:10.0.0.2,1,0"),
              asked("10.0.0.1") + asked("10.0.0.2") + own_mac_read +
                  "replace /user_data2/roaming_file 00005E005301,0,0:00005E005302,1,0\n");
    EXPECT_EQ(file_content("/var/tmp/roaming_file"), "00005E005301,9,9:00005E005302,9,9\n");
}

TEST_F(RoamingLayout, TheStoredMapMayFailAlone) {
    refuse_writing("/user_data2/roaming_file");
    EXPECT_EQ(update("10.0.0.1,0,0:10.0.0.2,1,0"),
              asked("10.0.0.1") + asked("10.0.0.2") + own_mac_read +
                  "replace /var/tmp/roaming_file 00005E005301,0,0:00005E005302,1,0\n");
}

TEST_F(RoamingLayout, EighteenUnitsAreTakenAndNineteenAreNot) {
    std::string layout = "10.0.0.1,0,0";
    std::string queries = asked("10.0.0.1");
    for (int i = 2; i <= 18; i++) {
        const std::string address = "10.0.1." + std::to_string(i);
        answer_command(query(address), "MAC" + std::to_string(i));
        layout += ":" + address + ",1," + std::to_string(i - 2);
        queries += asked(address);
    }
    provide_file("/var/tmp/roaming_file", "MAC18,9,9");
    EXPECT_EQ(update(layout), queries + own_mac_read + written("MAC18,1,16"));
    EXPECT_EQ(update(layout + "::"), queries + own_mac_read + written("MAC18,1,16"));
    EXPECT_EQ(update(layout + ":10.0.0.2,2,0"), "");
}

TEST_F(RoamingLayout, AnEntryOf100BytesEndsTheUpdateAtOnce) {
    const std::string longest = "10.0.0.2,1,0," + std::string(86, 'x');
    ASSERT_EQ(longest.size(), 99U);
    EXPECT_EQ(update("10.0.0.1,0,0:" + longest), asked("10.0.0.1") + asked("10.0.0.2") +
                                                     own_mac_read +
                                                     written("00005E005301,0,0:00005E005302,1,0"));
    EXPECT_EQ(update("10.0.0.1,0,0:" + longest + "x"), "");
    EXPECT_EQ(update("10.0.0.1,0,0," + std::string(88, 'x')), "");
    const std::string address(99, '1');
    EXPECT_EQ(update("10.0.0.1,0,0:" + address), asked("10.0.0.1") + asked(address));
}

TEST_F(RoamingLayout, OfALayout4095BytesAreRead) {
    const std::string filler(4095 - std::string("10.0.0.1,0,0:10.0.0.2,1,0").size(), ':');
    EXPECT_EQ(update("10.0.0.1,0,0" + filler + ":10.0.0.2,1,0"),
              asked("10.0.0.1") + asked("10.0.0.2") + own_mac_read +
                  written("00005E005301,0,0:00005E005302,1,0"));
    EXPECT_EQ(update("10.0.0.1,0,0" + filler + "::10.0.0.2,1,0"),
              asked("10.0.0.1") + asked("10.0.0.2") + own_mac_read);
    EXPECT_EQ(update("10.0.0.1,0,0" + filler + ":10.0.0.2,1,0,x:nonsense"),
              asked("10.0.0.1") + asked("10.0.0.2") + own_mac_read +
                  written("00005E005301,0,0:00005E005302,1,0"));
}

TEST_F(RoamingLayout, ALongMapIsRewrittenWhole) {
    std::string map;
    std::string expected;
    for (int i = 0; i < 5000; i++) {
        map += "00005E005302:other,9,9:";
        expected += "00005E005302,3,16:other,9,9:";
    }
    EXPECT_EQ(rewritten(map), expected);
}

// --- The tables
// ------------------------------------------------------------------------------------

TEST(UsbTables, NameTheirSectionsAndModels) {
    EXPECT_STREQ(usb_devices_table.section, "usb_devices");
    EXPECT_EQ(usb_devices_table.models, every_model);
    EXPECT_STREQ(usb_host_table.section, "usb_host");
    EXPECT_EQ(usb_host_table.models, both_encoders);
}

}  // namespace
