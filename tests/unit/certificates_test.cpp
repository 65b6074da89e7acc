#include <cjson/cJSON.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cgi/uploads.h"
#include "tests/support/recorder.h"

namespace {

class Certificates : public testing::Test {
  protected:
    void SetUp() override {
        reset_recorder();
    }
};

std::string exported() {
    char* printed = export_certificates();
    const std::string text = printed;
    cJSON_free(printed);
    return text;
}

TEST_F(Certificates, UnitWithoutFilesExportsThirteenEmptyTextsAndRunsNothing) {
    EXPECT_EQ(exported(),
              R"({"ldap_ca_file":"","ldap_cert_file":"","ldap_key_file":"",)"
              R"("mqtt_ca_file":"","mqtt_cert_file":"","mqtt_key_file":"","https_ca_file":"",)"
              R"("lan1_cert_file_8021x":"","lan1_key_file_8021x":"",)"
              R"("lan2_cert_file_8021x":"","lan2_key_file_8021x":"",)"
              R"("lan1_ca_8021x":"","lan2_ca_8021x":""})");
    EXPECT_EQ(recorded_trace(), "");
}

struct Row {
    const char* stored;
    const char* working;
    const char* key;
};

const Row rows[] = {
    {"/user_data2/LDAP_CAFile", "/var/tmp/encrypt_CAFile.txt", "ldap_ca_file"},
    {"/user_data2/LDAP_CERTFile", "/var/tmp/encrypt_CERTFile.txt", "ldap_cert_file"},
    {"/user_data2/LDAP_KEYFile", "/var/tmp/encrypt_KEYFile.txt", "ldap_key_file"},
    {"/user_data2/CAFile", "/var/tmp/encrypt_CAFile.txt", "mqtt_ca_file"},
    {"/user_data2/CERTFile", "/var/tmp/encrypt_CERTFile.txt", "mqtt_cert_file"},
    {"/user_data2/KEYFile", "/var/tmp/encrypt_KEYFile.txt", "mqtt_key_file"},
    {"/user_data2/HTTPS_CAFILE", "/var/tmp/encrypt_CAFILE.txt", "https_ca_file"},
    {"/user_data2/client.pem", "/var/tmp/client.pem.txt", "lan1_cert_file_8021x"},
    {"/user_data2/client.key", "/var/tmp/client.key.txt", "lan1_key_file_8021x"},
    {"/user_data2/client_2.pem", "/var/tmp/client_2.pem.txt", "lan2_cert_file_8021x"},
    {"/user_data2/client_2.key", "/var/tmp/client_2.key.txt", "lan2_key_file_8021x"},
    {"/user_data2/ca.pem", "/var/tmp/ca.pem.txt", "lan1_ca_8021x"},
    {"/user_data2/ca_2.pem", "/var/tmp/ca_2.pem.txt", "lan2_ca_8021x"},
};

std::string trace_of_row(const Row& row) {
    return std::string("shell crypto_program -e ") + row.stored + " > " + row.working +
           "\nshell rm -rf " + row.working + "\n";
}

std::string object_with(const std::string& key, const std::string& value) {
    std::string object = "{";
    for (const Row& row : rows) {
        object += (object.size() > 1 ? ",\"" : "\"") + std::string(row.key) + "\":\"" +
                  (row.key == key ? value : "") + "\"";
    }
    return object + "}";
}

TEST_F(Certificates, EachStoredFileAloneIsEncryptedReadAndCleanedUp) {
    for (const Row& row : rows) {
        reset_recorder();
        provide_file(row.stored, "secret");
        provide_file(row.working, "encrypted");
        EXPECT_EQ(exported(), object_with(row.key, "encrypted"));
        EXPECT_EQ(recorded_trace(), trace_of_row(row));
    }
}

TEST_F(Certificates, AllFilesAreDealtWithOneBehindTheOther) {
    std::string trace;
    std::string object = "{";
    for (const Row& row : rows) {
        provide_file(row.stored, "secret");
        provide_file(row.working, std::string("of ") + row.working);
        trace += trace_of_row(row);
        object += (object.size() > 1 ? ",\"" : "\"") + std::string(row.key) + "\":\"of " +
                  row.working + "\"";
    }
    EXPECT_EQ(exported(), object + "}");
    EXPECT_EQ(recorded_trace(), trace);
}

TEST_F(Certificates, AToolThatLeavesNoFileGivesTheEmptyTextAndNotTheRowBefore) {
    provide_file("/user_data2/LDAP_CAFile", "secret");
    provide_file("/var/tmp/encrypt_CAFile.txt", "first");
    provide_file("/user_data2/LDAP_CERTFile", "secret");
    EXPECT_EQ(exported(), object_with("ldap_ca_file", "first"));
    EXPECT_EQ(recorded_trace(), trace_of_row(rows[0]) + trace_of_row(rows[1]));
}

TEST_F(Certificates, AnEmptyWorkingFileGivesTheEmptyText) {
    provide_file("/user_data2/ca.pem", "secret");
    provide_file("/var/tmp/ca.pem.txt", "");
    EXPECT_EQ(exported(), object_with("", ""));
    EXPECT_EQ(recorded_trace(), trace_of_row(rows[11]));
}

TEST_F(Certificates, TheBytesOfTheToolAreKeptAndEscapedAsJson) {
    provide_file("/user_data2/ca_2.pem", "secret");
    provide_file("/var/tmp/ca_2.pem.txt", "a\"b\\c\td/%s\xff\xc3\xa9\r\n");
    EXPECT_EQ(exported(), object_with("lan2_ca_8021x", "a\\\"b\\\\c\\td/%s\xff\xc3\xa9\\r\\n"));
}

}  // namespace
