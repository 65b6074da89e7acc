#include "cgi/dispatch.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/recorder.h"
#include "tests/support/streams.h"

namespace {

class Dispatch : public testing::Test {
  protected:
    void SetUp() override {
        reset_recorder();
        answer_command("astparam g ethaddr", mac);
    }

    static constexpr const char* mac = "A0:b1 C2";

  private:
    HeldProcess process;
};

std::string reply_to(const std::string& request) {
    testing::internal::CaptureStdout();
    dispatch_upload(request.data(), request.size());
    return testing::internal::GetCapturedStdout();
}

std::string posted(const std::string& field, const std::string& content) {
    return "------WebKitFormBoundaryx\r\nContent-Disposition: form-data; name=\"" + field +
           "\"; filename=\"f.json\"\r\nContent-Type: application/json\r\n\r\n" + content +
           "\r\n------WebKitFormBoundaryx--\r\n";
}

std::string success(const std::string& of_mac = "A0:b1 C2") {
    return R"({"command":"uploadConfFile","success":true,"mac":")" + of_mac + "\"}";
}

std::string failure(const std::string& feedback) {
    return R"({"command":"uploadConfFile","success":false,"mac":"A0:b1 C2","feedback":")" +
           feedback + "\"}";
}

const std::string not_supported = failure("The uploaded file is not in the supported list");
const std::string too_large = failure("more than 500kb");
const std::string not_json = failure("The uploaded file format is not JSON");
const std::string type_deleted =
    failure("Invalid file, do not delete the type field in the JSON data.");
const std::string type_modified =
    failure("Invalid file, do not modify the type field in the JSON data.");
const std::string out_of_range = failure("Error, the parameter range is incorrect");
const std::string error_node = failure("Error, JSON data error node");
const std::string invalid_edid =
    failure("Invalid EDID data, must be 256 bytes and contain only hex characters (0-9A-Fa-f)");

const std::string read_mac = "read astparam g ethaddr\n";

const std::string rs232_document = R"({"data":{"setting":1}})";
const std::string rs232_trace =
    "replace /user_data2/rs232_list.json {TAGdataTAG:{TAGsettingTAG:1}}\n"
    "shell cp /user_data2/rs232_list.json /var/tmp/rs232_list.json\n";

std::string wall_document(const std::string& rotation) {
    return R"({"connect":"1","outer_width":"2","outer_height":"3","view_width":"4",)"
           R"("view_height":"5","stretch":"0","rotation":")" +
           rotation +
           R"(","virtual_coordinates_x1":"6","virtual_coordinates_y1":"7",)"
           R"("virtual_coordinates_x2":"8","virtual_coordinates_y2":"9"})";
}

const std::string wall_trace =
    "shell e e_vw_enable_6_7_8_9_2;e e_vw_moninfo_4_2_5_3;e e_vw_rotate_0;"
    "e e_vw_stretch_type_2;\n";

std::string exported(const std::string& last_value) {
    return R"({"ldap_ca_file":"","ldap_cert_file":"","ldap_key_file":"","mqtt_ca_file":"",)"
           R"("mqtt_cert_file":"","mqtt_key_file":"","https_ca_file":"","lan1_cert_file_8021x":"",)"
           R"("lan1_key_file_8021x":"","lan2_cert_file_8021x":"","lan2_key_file_8021x":"",)"
           R"("lan1_ca_8021x":"","lan2_ca_8021x":")" +
           last_value + "\"}";
}

// --- The replies ---------------------------------------------------------------------------------

TEST_F(Dispatch, EveryKindHasItsReplies) {
    const struct {
        const char* field;
        std::string content;
        std::string reply;
        std::string trace;
    } cases[] = {
        {"Rs232CodeUpload", rs232_document, success(), rs232_trace},
        {"Rs232CodeUpload", "{}", not_json, ""},
        {"Rs232CodeUpload", "x", not_json, ""},
        {"IRCodeUpload", R"({"data":[],"delay":"1","rpt":"2","rptdelay":"3"})", success(),
         "replace /user_data2/ir_list.json {TAGdataTAG:[],TAGdelayTAG:TAG1TAG,TAGrptTAG:TAG2TAG,"
         "TAGrptdelayTAG:TAG3TAG}\n"
         "shell cp /user_data2/ir_list.json /var/tmp/ir_list.json\n"
         "shell astparam s ir_setting_delay 1;astparam s ir_setting_rpt 2;"
         "astparam s ir_setting_rpt_delay 3;astparam save;\n"},
        {"IRCodeUpload", "{}", not_json, ""},
        {"IRCodeUpload", "x", not_json, ""},
        {"UnitConfUpload", "x", not_json, ""},
        {"UnitConfUpload", "{}", type_deleted, ""},
        {"UnitConfUpload", R"({"model":"ZAVO-ENC-E100-DA"})", type_modified, ""},
        {"TriggerCommandsUpload", R"({"data":[1,2,3,{"data":[]}]})", success(),
         "replace /user_data2/trigger_poweron_event_list.json 1\n"
         "shell cp /user_data2/trigger_poweron_event_list.json "
         "/var/tmp/trigger_poweron_event_list.json\n"
         "replace /user_data2/trigger_video_connect_event_list.json 2\n"
         "shell cp /user_data2/trigger_video_connect_event_list.json "
         "/var/tmp/trigger_video_connect_event_list.json\n"
         "replace /user_data2/trigger_video_disconnect_event_list.json 3\n"
         "shell cp /user_data2/trigger_video_disconnect_event_list.json "
         "/var/tmp/trigger_video_disconnect_event_list.json\n"},
        {"TriggerCommandsUpload", "{}", not_json, ""},
        {"TriggerCommandsUpload", "x", not_json, ""},
        {"VideoWallUpload", wall_document("0"), success(), wall_trace},
        {"VideoWallUpload", "x", not_json, ""},
        {"VideoWallUpload", wall_document("10"), out_of_range, ""},
        {"VideoWallUpload", "{}", error_node, ""},
        {"CustomEdidFile", "{}", success(), ""},
        {"CustomEdidFile", "x", not_json, ""},
        {"CustomEdidFile", R"({"custom_edid":"00"})", invalid_edid, ""},
    };
    for (const auto& each : cases) {
        reset_recorder();
        answer_command("astparam g ethaddr", mac);
        EXPECT_EQ(reply_to(posted(each.field, each.content)), each.reply)
            << each.field << " " << each.content;
        EXPECT_EQ(recorded_trace(), read_mac + each.trace) << each.field << " " << each.content;
    }
}

TEST_F(Dispatch, AnAppliedUnitConfigurationIsASuccess) {
    EXPECT_EQ(reply_to(posted("UnitConfUpload", R"({"model":"ZAVO-ENC-U300-DA"})")), success());
    EXPECT_EQ(recorded_trace().substr(0, read_mac.size()), read_mac);
}

TEST_F(Dispatch, AnythingElseIsNotSupported) {
    for (const char* request :
         {"", "x", "name=Rs232CodeUpload", "name=\"Rs232CodeUpload\"", " name=\"rs232CodeUpload\"",
          " name=\"Rs232CodeUpload", " name=\"UnitConfUpload2\"", "name=getCaEncryptDat",
          "name=\"getCaEncryptData\"", "\r\n----"}) {
        reset_recorder();
        answer_command("astparam g ethaddr", mac);
        EXPECT_EQ(reply_to(request), not_supported) << request;
        EXPECT_EQ(recorded_trace(), read_mac);
    }
}

TEST_F(Dispatch, TheMacIsPutInAsTheToolPrintsIt) {
    answer_command("astparam g ethaddr", "a\"b\\%s");
    EXPECT_EQ(reply_to(posted("CustomEdidFile", "{}")), success("a\"b\\%s"));
}

TEST_F(Dispatch, AMacThatIsNotDefinedIsEmpty) {
    reset_recorder();
    EXPECT_EQ(reply_to(posted("CustomEdidFile", "{}")), success(""));
}

TEST_F(Dispatch, HeadersWithoutAnEndHaveNoReply) {
    EXPECT_EQ(reply_to("Content-Disposition: form-data; name=\"Rs232CodeUpload\""), "");
    EXPECT_EQ(reply_to(" name=\"IRCodeUpload\" Content-Type: text/plain {}"), "");
    EXPECT_EQ(reply_to(" name=\"UnitConfUpload\" Content-Type: multipart/form-data\r\n\r\n{}"), "");
    EXPECT_EQ(recorded_trace(), read_mac + read_mac + read_mac);
}

// --- The kinds -----------------------------------------------------------------------------------

// A request that all patterns from `first` on are in, the last one first. Each pattern is a kind
// that the reply or the trace is known by.
TEST_F(Dispatch, TheFirstOfTheOrderedPatternsDecidesWhereverItStands) {
    const char* const patterns[] = {
        " name=\"Rs232CodeUpload\"",       " name=\"IRCodeUpload\"", " name=\"UnitConfUpload\"",
        " name=\"TriggerCommandsUpload\"", "name=getCaEncryptData",  " name=\"VideoWallUpload\"",
        " name=\"CustomEdidFile\"",
    };
    // What each kind says to an object without its members; the list kinds are told apart below.
    const std::string replies[] = {not_json,     not_json,   type_deleted, not_json,
                                   exported(""), error_node, success()};
    for (size_t first = 0; first < std::size(patterns); first++) {
        std::string request;
        for (size_t i = std::size(patterns); i-- > first;) {
            request += patterns[i];
        }
        EXPECT_EQ(reply_to(request + "Content-Disposition: \r\n\r\n{}"), replies[first]) << first;
    }
}

TEST_F(Dispatch, AnRs232ListWinsOverAnIrListInAnyOrder) {
    const std::string request =
        posted("IRCodeUpload", rs232_document) + " name=\"Rs232CodeUpload\"";
    EXPECT_EQ(reply_to(request), success());
    EXPECT_EQ(recorded_trace(), read_mac + rs232_trace);
}

TEST_F(Dispatch, AFieldNameInsideTheContentDecidesToo) {
    const std::string content = R"({"data":{"setting":1}, "x": name="Rs232CodeUpload"})";
    EXPECT_EQ(reply_to(posted("UnitConfUpload", content)), not_json);
    EXPECT_EQ(recorded_trace(), read_mac);
    EXPECT_EQ(reply_to(posted("UnitConfUpload", rs232_document + " name=\"Rs232CodeUpload\"")),
              success());
}

TEST_F(Dispatch, ABodyWithoutHeadersIsContentFromItsFirstByte) {
    EXPECT_EQ(reply_to(rs232_document + " name=\"Rs232CodeUpload\""), success());
    EXPECT_EQ(recorded_trace(),
              read_mac +
                  "replace /user_data2/rs232_list.json {TAGdataTAG:{TAGsettingTAG:1}} "
                  "name=TAGRs232CodeUploadTAG\n"
                  "shell cp /user_data2/rs232_list.json /var/tmp/rs232_list.json\n");
}

TEST_F(Dispatch, CertificatesAreExportedForAQueryAndForAFormField) {
    for (const char* request :
         {"name=getCaEncryptData", "a=1&name=getCaEncryptData&b=2",
          "x name=getCaEncryptData Content-Type: multipart/form-data\r\n\r\n"}) {
        EXPECT_EQ(reply_to(request), exported("")) << request;
    }
    EXPECT_EQ(recorded_trace(), read_mac + read_mac + read_mac);
}

TEST_F(Dispatch, ExportedCertificatesAreNoFormat) {
    provide_file("/user_data2/ca_2.pem", "secret");
    provide_file("/var/tmp/ca_2.pem.txt", "%s%n");
    EXPECT_EQ(reply_to("name=getCaEncryptData"), exported("%s%n"));
    EXPECT_EQ(recorded_trace(),
              read_mac +
                  "shell crypto_program -e /user_data2/ca_2.pem > /var/tmp/ca_2.pem.txt\n"
                  "shell rm -rf /var/tmp/ca_2.pem.txt\n");
}

// --- The limits ----------------------------------------------------------------------------------

std::string padded(const std::string& document, size_t size) {
    return document + std::string(size - document.size(), ' ');
}

TEST_F(Dispatch, LimitedKindsTakeFiveHundredAndTwelveThousandBytes) {
    const struct {
        const char* field;
        std::string document;
    } cases[] = {
        {"Rs232CodeUpload", rs232_document},
        {"IRCodeUpload", R"({"data":[],"delay":"1","rpt":"2","rptdelay":"3"})"},
        {"VideoWallUpload", wall_document("0")},
        {"CustomEdidFile", "{}"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(reply_to(posted(each.field, padded(each.document, 512000))), success())
            << each.field;
        reset_recorder();
        answer_command("astparam g ethaddr", mac);
        EXPECT_EQ(reply_to(posted(each.field, padded(each.document, 512001))), too_large)
            << each.field;
        EXPECT_EQ(recorded_trace(), read_mac) << each.field;
    }
}

TEST_F(Dispatch, UnlimitedKindsTakeWhatTheContentBufferHolds) {
    EXPECT_EQ(reply_to(posted("UnitConfUpload", padded("{}", 600000))), type_deleted);
    EXPECT_EQ(reply_to(posted("UnitConfUpload", padded("{}", 1048575))), type_deleted);
    EXPECT_EQ(reply_to(posted("UnitConfUpload", padded("{}", 1048576))), too_large);
    EXPECT_EQ(reply_to(posted("UnitConfUpload", padded("{}", 9000000))), too_large);
    const std::string triggers = R"({"data":[1,2,3,{"data":[]}]})";
    EXPECT_EQ(reply_to(posted("TriggerCommandsUpload", padded(triggers, 1048575))), success());
    EXPECT_EQ(reply_to(posted("TriggerCommandsUpload", padded(triggers, 1048576))), too_large);
}

TEST_F(Dispatch, ALaterShorterContentHoldsNothingOfTheOneBefore) {
    EXPECT_EQ(reply_to(posted("CustomEdidFile", std::string(2000, 'x'))), not_json);
    EXPECT_EQ(reply_to(posted("CustomEdidFile", "{}")), success());
}

// --- The surroundings ----------------------------------------------------------------------------

TEST_F(Dispatch, WhatWasPrintedBeforeStandsBeforeTheReply) {
    testing::internal::CaptureStdout();
    printf("header\n\n");
    dispatch_upload("x", 1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "header\n\n" + not_supported);
}

TEST_F(Dispatch, SignalsOfACallerThatLeavesDoNotEndTheProgram) {
    reply_to("x");
    for (const int number : {SIGHUP, SIGTERM, SIGPIPE}) {
        EXPECT_EQ(raise(number), 0);
    }
}

}  // namespace
