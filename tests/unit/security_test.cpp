#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/applying.h"
#include "tests/support/recorder.h"
#include "tests/support/table_checks.h"
#include "unitconf/sections.h"
#include "unitconf/tables.h"

namespace {

struct Case {
    const char* document;
    const char* trace;
};

class Security : public testing::Test {
  protected:
    void SetUp() override {
        reset_recorder();
    }
};

// A text as long as an encrypted certificate, or longer, of what such texts consist of.
std::string encrypted_text(size_t length) {
    static const std::string alphabet = "ABCDEFGHabcdefgh01234567+/=";
    std::string text;
    for (size_t i = 0; i < length; i++) {
        text += alphabet[i % alphabet.size()];
    }
    return text;
}

// --- aes256
// ---------------------------------------------------------------------------------------

using Aes256 = Security;

TEST_F(Aes256, AWholeSectionIsAppliedInOrder) {
    set_rw_value("v_eng_drv_option", "0x80100000");
    EXPECT_EQ(trace_of(apply_aes256_section,
                       R"({"custom_key_string":"my key $x %s","custom_key_enable":true,
                           "aes256_mode":"high","enable":true})"),
              snapshot_trace +
                  "shell astparam s aes_encrypt_en 1;\n"
                  "shell astparam s v_eng_drv_option 0x00100000;\n"
                  "shell astparam s encrypt_en 1;\n"
                  "shell astparam s encrypt_val \"my key $x %s\";\n");
    EXPECT_EQ(trace_of(apply_aes256_section,
                       R"({"enable":false,"custom_key_enable":false,"custom_key_string":""})"),
              snapshot_trace +
                  "shell astparam s aes_encrypt_en 0;\n"
                  "shell astparam s encrypt_en 0;\n");
}

struct StrengthCase {
    const char* present;
    const char* mode;
    const char* option;
};

TEST_F(Aes256, TheModeReplacesOneDigitOfThePresentOption) {
    static constexpr StrengthCase cases[] = {
        // The four full options stay but for their digit.
        {"0x80000000", "\"standard\"", "0x80000000"},
        {"0x80000000", "\"high\"", "0x00000000"},
        {"0x80100000", "\"standard\"", "0x80100000"},
        {"0x80100000", "\"high\"", "0x00100000"},
        {"0x80100000", "2", "0x00100000"},
        {"0x00100000", "\"standard\"", "0x80100000"},
        {"0x00100000", "\"high\"", "0x00100000"},
        {"0x00000000", "1", "0x80000000"},
        {"0x00000000", "2", "0x00000000"},
        // Short forms get their full length first.
        {"0x8", "\"standard\"", "0x80000000"},
        {"0x8", "\"high\"", "0x00000000"},
        {"0x0", "\"standard\"", "0x80000000"},
        {"0x0", "\"high\"", "0x00000000"},
        {"", "\"standard\"", "0x80000000"},
        {"", "\"high\"", "0x00000000"},
        // The whole digit is replaced, and any other option is taken as it is.
        {"0xF0100001", "\"standard\"", "0x80100001"},
        {"0x70100001", "\"high\"", "0x00100001"},
        {"0x4", "\"standard\"", "0x8"},
        {"abcdef", "\"high\"", "ab0def"},
        {"0x", "\"standard\"", "0x8"},
        {"7", "\"standard\"", "7"},
        // Numbers count by their integer value.
        {"0x0", "1.9", "0x80000000"},
        {"0x8", "2.9", "0x00000000"},
    };
    for (const StrengthCase& each : cases) {
        reset_recorder();
        set_rw_value("v_eng_drv_option", each.present);
        EXPECT_EQ(
            trace_of(apply_aes256_section, std::string(R"({"aes256_mode":)") + each.mode + "}"),
            snapshot_trace + "shell astparam s v_eng_drv_option " + each.option + ";\n")
            << each.present << " with " << each.mode;
    }
}

TEST_F(Aes256, AUnitWithoutAPresentOptionStartsFromZero) {
    EXPECT_EQ(trace_of(apply_aes256_section, R"({"aes256_mode":"standard"})"),
              snapshot_trace + "shell astparam s v_eng_drv_option 0x80000000;\n");
    EXPECT_EQ(trace_of(apply_aes256_section, R"({"aes256_mode":"high"})"),
              snapshot_trace + "shell astparam s v_eng_drv_option 0x00000000;\n");
}

TEST_F(Aes256, ANumberThatNamesNoStrengthRunsAnEmptyLine) {
    for (const char* mode : {"0", "3", "7", "0.9", "-0.9", "2147483647", "1e99"}) {
        reset_recorder();
        EXPECT_EQ(trace_of(apply_aes256_section, std::string(R"({"aes256_mode":)") + mode + "}"),
                  snapshot_trace + "shell \n")
            << mode;
    }
}

TEST_F(Aes256, NegativeNumbersAndOtherWordsDoNothing) {
    for (const char* mode : {"-1", "-2", "-1.5", "-1e99", "\"\"", "\"Standard\"", "\"HIGH\"",
                             "\"high \"", "\"1\"", "\"2\"", "true", "null", "[1]", "{}"}) {
        reset_recorder();
        EXPECT_EQ(trace_of(apply_aes256_section, std::string(R"({"aes256_mode":)") + mode + "}"),
                  snapshot_trace)
            << mode;
    }
}

// --- snmp
// -----------------------------------------------------------------------------------------

using Snmp = Security;

TEST_F(Snmp, AWholeSectionIsAppliedInOrder) {
    EXPECT_EQ(trace_of(apply_snmp_section, R"json({
                  "enable": true, "is_get": true, "is_set": false, "port": 161,
                  "sys_contact": "AV <av@example.com>", "sys_name": "Hall 1", "sys_location": "Main, $1",
                  "v2_enable": true, "public_community": "pub", "private_community": "priv",
                  "v3_enable": true, "v3_username": "mon",
                  "v3_auth_algorithm": "sha-256", "v3_auth_password": "a;b",
                  "v3_privacy_algorithm": "aes-128", "v3_privacy_password": "p\"w",
                  "trap_mode": 3, "trap": true,
                  "v3_trap": {"username": "trapper", "engine_id": "8000000001020304",
                              "auth_algorithm": "md5", "auth_password": "tap",
                              "privacy_algorithm": "des", "privacy_password": "tpp"},
                  "trap_receiver1": "10.0.0.1", "trap_receiver2": "10.0.0.2"})json"),
              R"(shell astparam s snmpStatu 1;
shell astparam s EnableSnmpV1Get 1;
shell astparam s EnableSnmpV1Set 0;
shell astparam s SnmpPort 161;
shell astparam s SnmpSysContact "AV <av@example.com>" > /dev/null 2>&1
shell astparam s SnmpSysName "Hall 1" > /dev/null 2>&1
shell astparam s SnmpSysLocation "Main, $1" > /dev/null 2>&1
shell astparam s EnableSnmpV2 1;
shell astparam s EnableSnmpV2public pub > /dev/null 2>&1
shell astparam s EnableSnmpV2private priv > /dev/null 2>&1
shell astparam s EnableSnmpV3 1;
shell astparam s SnmpV3Username mon > /dev/null 2>&1
shell astparam s SnmpV3Algorithm SHA-256 > /dev/null 2>&1
shell astparam s SnmpV3AuthPassword a;b > /dev/null 2>&1
shell astparam s SnmpV3PrivacyAlg AES-128 > /dev/null 2>&1
shell astparam s SnmpV3Privacypassword p"w > /dev/null 2>&1
shell astparam s EnableSnmpTrap 3;
shell astparam s EnableSnmpTrapEnable 1
shell astparam s TrapV3Name trapper > /dev/null 2>&1
shell astparam s TrapV3EngID trapper > /dev/null 2>&1
shell astparam s TrapV3AA MD5 > /dev/null 2>&1
shell astparam s TrapV3AP tap > /dev/null 2>&1
shell astparam s TrapV3PA DES > /dev/null 2>&1
shell astparam s TrapV3PP tpp > /dev/null 2>&1
shell astparam s SnmpTrapreceiver1 10.0.0.1 > /dev/null 2>&1
shell astparam s SnmpTrapreceiver2 10.0.0.2 > /dev/null 2>&1
)");
}

TEST_F(Snmp, EveryFlagHasItsOtherLine) {
    EXPECT_EQ(trace_of(apply_snmp_section, R"({"trap":false,"v3_enable":false,"v2_enable":false,
                                               "is_set":true,"is_get":false,"enable":false})"),
              "shell astparam s snmpStatu 0;\n"
              "shell astparam s EnableSnmpV1Get 0;\n"
              "shell astparam s EnableSnmpV1Set 1;\n"
              "shell astparam s EnableSnmpV2 0;\n"
              "shell astparam s EnableSnmpV3 0;\n"
              "shell astparam s EnableSnmpTrapEnable 0\n");
}

TEST_F(Snmp, AnEmptySectionRunsNothing) {
    EXPECT_EQ(trace_of(apply_snmp_section, "{}"), "");
    EXPECT_EQ(trace_of(apply_snmp_section, R"({"v3_trap":{}})"), "");
}

struct AlgorithmCase {
    const char* value;
    const char* authentication;  // null: no line
    const char* privacy;
};

TEST_F(Snmp, AlgorithmsAreExactWordsOnly) {
    static constexpr AlgorithmCase cases[] = {
        {"\"none\"", "0", "0"},
        {"\"md5\"", "MD5", nullptr},
        {"\"sha\"", "SHA", nullptr},
        {"\"sha-256\"", "SHA-256", nullptr},
        {"\"sha-384\"", "SHA-384", nullptr},
        {"\"sha-512\"", "SHA-512", nullptr},
        {"\"des\"", nullptr, "DES"},
        {"\"aes\"", nullptr, "AES"},
        {"\"aes-128\"", nullptr, "AES-128"},
        {"\"SHA\"", nullptr, nullptr},
        {"\"MD5\"", nullptr, nullptr},
        {"\"AES\"", nullptr, nullptr},
        {"\"None\"", nullptr, nullptr},
        {"\"sha-1\"", nullptr, nullptr},
        {"\"aes-256\"", nullptr, nullptr},
        {"\"0\"", nullptr, nullptr},
        {"\"\"", nullptr, nullptr},
        {"\"sha \"", nullptr, nullptr},
        {"0", nullptr, nullptr},
        {"1", nullptr, nullptr},
        {"true", nullptr, nullptr},
        {"null", nullptr, nullptr},
        {"[\"md5\"]", nullptr, nullptr},
        {"{}", nullptr, nullptr},
    };
    const auto line = [](const char* key, const char* algorithm) {
        return algorithm == nullptr ? std::string()
                                    : std::string("shell astparam s ") + key + " " + algorithm +
                                          " > /dev/null 2>&1\n";
    };
    for (const AlgorithmCase& each : cases) {
        const std::string value = each.value;
        EXPECT_EQ(trace_of(apply_snmp_section, std::string("{\"v3_auth_algorithm\":") + value +
                                                   ",\"v3_privacy_algorithm\":" + value +
                                                   ",\"v3_trap\":{\"auth_algorithm\":" + value +
                                                   ",\"privacy_algorithm\":" + value + "}}"),
                  line("SnmpV3Algorithm", each.authentication) +
                      line("SnmpV3PrivacyAlg", each.privacy) +
                      line("TrapV3AA", each.authentication) + line("TrapV3PA", each.privacy))
            << value;
    }
}

TEST_F(Snmp, TheTrapsEngineIdIsItsUserName) {
    static constexpr Case cases[] = {
        {R"({"v3_trap":{"engine_id":"80","username":"u"}})",
         "shell astparam s TrapV3Name u > /dev/null 2>&1\n"
         "shell astparam s TrapV3EngID u > /dev/null 2>&1\n"},
        {R"({"V3_Trap":{"Engine_ID":"80","UserName":"u"}})",
         "shell astparam s TrapV3Name u > /dev/null 2>&1\n"
         "shell astparam s TrapV3EngID u > /dev/null 2>&1\n"},
        // An empty user name is a text, and what is stored then.
        {R"({"v3_trap":{"engine_id":"80","username":""}})",
         "shell astparam s TrapV3EngID  > /dev/null 2>&1\n"},
        // Without a user name there is nothing to store.
        {R"({"v3_trap":{"engine_id":"80"}})", ""},
        {R"({"v3_trap":{"engine_id":"80","username":null}})", ""},
        {R"({"v3_trap":{"engine_id":"80","username":5}})", ""},
        {R"({"v3_trap":{"engine_id":"80","username":["u"]}})", ""},
        {R"({"username":"u","v3_trap":{"engine_id":"80"}})", ""},
        // Without an engine ID nothing is stored as one.
        {R"({"v3_trap":{"engine_id":"","username":"u"}})",
         "shell astparam s TrapV3Name u > /dev/null 2>&1\n"},
        {R"({"v3_trap":{"engine_id":80,"username":"u"}})",
         "shell astparam s TrapV3Name u > /dev/null 2>&1\n"},
        {R"({"v3_trap":{"username":"u"}})", "shell astparam s TrapV3Name u > /dev/null 2>&1\n"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(trace_of(apply_snmp_section, each.document), each.trace) << each.document;
    }
}

TEST_F(Snmp, TrapMembersCountOnlyWithinTheirObject) {
    EXPECT_EQ(trace_of(apply_snmp_section,
                       R"({"username":"u","auth_password":"a","v3_trap":[{"username":"u"}]})"),
              "");
}

TEST_F(Snmp, NumbersAreNotLimited) {
    EXPECT_EQ(trace_of(apply_snmp_section, R"({"port":-1,"trap_mode":1e99})"),
              "shell astparam s SnmpPort -1;\nshell astparam s EnableSnmpTrap 2147483647;\n");
    EXPECT_EQ(trace_of(apply_snmp_section, R"({"port":161.9,"trap_mode":0})"),
              "shell astparam s SnmpPort 161;\nshell astparam s EnableSnmpTrap 0;\n");
}

// --- mqtt
// -----------------------------------------------------------------------------------------

using Mqtt = Security;

TEST_F(Mqtt, AWholeSectionIsAppliedInOrder) {
    EXPECT_EQ(trace_of(apply_mqtt_section, R"({
                  "tls_key": "S0VZ", "tls_cert": "Q0VSVA==", "tls_ca": "Q0E=",
                  "publish_data_interval": 30, "keep_alive_ping": 60, "qos": 1,
                  "topics": "venue/hall1", "client_id": "hall1", "password": "p w",
                  "username": "avoip", "user_credentials": true, "enable_ssl": true,
                  "port": 8883, "host": "mqtt.example.com", "enable": true})"),
              R"(shell astparam s mqttStatu 1;
shell astparam s mqttHost mqtt.example.com > /dev/null 2>&1
shell astparam s mqttPort 8883;
shell astparam s mqttSSLStatus 1;
shell astparam s mqttUseCredentials 1;
shell astparam s mqttUsername avoip > /dev/null 2>&1
shell astparam s mqttPassword p w > /dev/null 2>&1
shell astparam s mqttClientID hall1 > /dev/null 2>&1
shell astparam s mqttTopic venue/hall1 > /dev/null 2>&1
shell astparam s mqttQos 1;
shell astparam s mqttInterval 60;
shell astparam s mqttPubInterval 30;
shell crypto_program -d "Q0E=" /var/tmp/CAFile
shell crypto_program -d "Q0VSVA==" /var/tmp/CERTFile
shell crypto_program -d "S0VZ" /var/tmp/KEYFile
shell mqtt_upgrade_cert.sh &
)");
    EXPECT_EQ(trace_of(apply_mqtt_section,
                       R"({"enable":false,"enable_ssl":false,"user_credentials":false})"),
              "shell astparam s mqttStatu 0;\n"
              "shell astparam s mqttSSLStatus 0;\n"
              "shell astparam s mqttUseCredentials 0;\n"
              "shell mqtt_upgrade_cert.sh &\n");
}

TEST_F(Mqtt, AnEmptySectionOnlyRunsTheInstallScript) {
    EXPECT_EQ(trace_of(apply_mqtt_section, "{}"), "shell mqtt_upgrade_cert.sh &\n");
    EXPECT_EQ(trace_of(apply_mqtt_section, "null"), "shell mqtt_upgrade_cert.sh &\n");
}

TEST_F(Mqtt, CertificatesOfAnySizeAreRunWhole) {
    for (const size_t size : {2011UL, 2012UL, 4096UL, 16384UL, 200000UL}) {
        const std::string text = encrypted_text(size);
        EXPECT_EQ(trace_of(apply_mqtt_section, R"({"tls_ca":")" + text + R"("})"),
                  "shell crypto_program -d \"" + text +
                      "\" /var/tmp/CAFile\nshell mqtt_upgrade_cert.sh &\n");
    }
}

TEST_F(Mqtt, NumbersAreNotLimited) {
    EXPECT_EQ(trace_of(apply_mqtt_section, R"({"port":0,"qos":-5,"keep_alive_ping":-1e99,
                                               "publish_data_interval":2147483648})"),
              "shell astparam s mqttPort 0;\n"
              "shell astparam s mqttQos -5;\n"
              "shell astparam s mqttInterval -2147483648;\n"
              "shell astparam s mqttPubInterval 2147483647;\n"
              "shell mqtt_upgrade_cert.sh &\n");
}

// --- https
// ----------------------------------------------------------------------------------------

using Https = Security;

TEST_F(Https, AWholeSectionIsAppliedInOrder) {
    EXPECT_EQ(trace_of(apply_https_section,
                       R"({"tls_ca":"Q0E=","tls_private_key":"pass phrase",
                           "use_internal_certificate":true,"enable":true})"),
              R"(shell astparam s en_https y;
shell astparam s httpsInOrServer 1;
shell astparam s httpsKeyPassword "pass phrase" > /dev/null 2>&1
shell crypto_program -d "Q0E=" /var/tmp/HTTPS_CAFILE
shell https_upgrade_cert.sh &
)");
    EXPECT_EQ(trace_of(apply_https_section, R"({"enable":false,"use_internal_certificate":false})"),
              "shell astparam s en_https n;\nshell astparam s httpsInOrServer 2;\n");
}

TEST_F(Https, OnlyACertificateRunsTheInstallScript) {
    EXPECT_EQ(trace_of(apply_https_section, "{}"), "");
    for (const char* none : {"\"\"", "null", "5", "true", "[\"x\"]", "{}"}) {
        EXPECT_EQ(trace_of(apply_https_section, std::string(R"({"tls_ca":)") + none + "}"), "")
            << none;
    }
}

// --- ldap
// -----------------------------------------------------------------------------------------

using Ldap = Security;

TEST_F(Ldap, AWholeSectionIsAppliedInOrder) {
    EXPECT_EQ(trace_of(apply_ldap_section, R"({
                  "enable": true, "domain_name": "dc=example,dc=com", "username": "cn=avoip",
                  "password": "secret", "server": "ldap.example.com", "port": 636, "use_tls": true,
                  "tls_ca": "Q0E=", "tls_cert": "Q0VSVA==", "tls_key": "S0VZ"})"),
              R"(shell astparam s ldapStatu 1;
shell astparam s ldapInfoDn dc=example,dc=com > /dev/null 2>&1
shell astparam s ldapInfoUsername cn=avoip > /dev/null 2>&1
shell astparam s ldapInfoPassword secret > /dev/null 2>&1
shell astparam s ldapInfoServer ldap.example.com > /dev/null 2>&1
shell astparam s ldapInfoPort 636;
shell astparam s ldapInfoTls 1;
shell crypto_program -d "Q0E=" /var/tmp/LDAP_CAFile
shell crypto_program -d "Q0VSVA==" /var/tmp/LDAP_CERTFile
shell crypto_program -d "S0VZ" /var/tmp/LDAP_KEYFile
shell ldap_upgrade_cert.sh &
)");
    EXPECT_EQ(trace_of(apply_ldap_section, R"({"use_tls":false,"enable":false})"),
              "shell astparam s ldapStatu 0;\n"
              "shell astparam s ldapInfoTls 0;\n"
              "shell ldap_upgrade_cert.sh &\n");
}

TEST_F(Ldap, AnEmptySectionOnlyRunsTheInstallScript) {
    EXPECT_EQ(trace_of(apply_ldap_section, "{}"), "shell ldap_upgrade_cert.sh &\n");
}

// --- auth_8021x
// -----------------------------------------------------------------------------------

using Auth8021x = Security;

TEST_F(Auth8021x, AWholeSectionIsAppliedPortByPort) {
    EXPECT_EQ(trace_of(apply_8021x_section, R"({
                  "lan2": {"ca_time": "2025-01-01 00:00", "ca": "Q0Ey", "server_certificate_enable": false,
                           "tls_key": "S0VZMg==", "tls_cert": "Q0VSVDI=", "private_key_password": "k2",
                           "password": "p2", "username": "u2", "method": "PEAP", "enable": false},
                  "lan1": {"ca_time": "2024-12-31 23:59", "ca": "Q0Ex", "server_certificate_enable": true,
                           "tls_key": "S0VZMQ==", "tls_cert": "Q0VSVDE=", "private_key_password": "k 1",
                           "password": "p 1", "username": "u 1", "method": "EAP-TLS", "enable": true}})"),
              R"(shell astparam s auth_1x_en y;
shell astparam s auth_1x_method EAP-TLS > /dev/null 2>&1
shell astparam s auth_1x_username "u 1" > /dev/null 2>&1
shell astparam s auth_1x_passwd "p 1" > /dev/null 2>&1
shell astparam s auth_1x_priv_key_passwd "k 1" > /dev/null 2>&1
shell crypto_program -d "Q0VSVDE=" /var/tmp/client.pem
shell crypto_program -d "S0VZMQ==" /var/tmp/client.key
shell astparam s auth_1x_valid_server_en y;
shell crypto_program -d "Q0Ex" /var/tmp/ca.pem
shell astparam s auth_1x_server_cert_start_time "2024-12-31 23:59" > /dev/null 2>&1
shell update_1x_cert_upload_conf.sh lan1
shell astparam s auth_1x_en_2 n;
shell astparam s auth_1x_method_2 PEAP > /dev/null 2>&1
shell astparam s auth_1x_username_2 "u2" > /dev/null 2>&1
shell astparam s auth_1x_passwd_2 "p2" > /dev/null 2>&1
shell astparam s auth_1x_priv_key_passwd_2 "k2" > /dev/null 2>&1
shell crypto_program -d "Q0VSVDI=" /var/tmp/client_2.pem
shell crypto_program -d "S0VZMg==" /var/tmp/client_2.key
shell astparam s auth_1x_valid_server_en_2 n;
shell crypto_program -d "Q0Ey" /var/tmp/ca_2.pem
shell astparam s auth_1x_server_cert_start_time_2 "2025-01-01 00:00" > /dev/null 2>&1
shell update_1x_cert_upload_conf.sh lan2
)");
}

TEST_F(Auth8021x, EveryFlagHasItsOtherLine) {
    EXPECT_EQ(trace_of(apply_8021x_section,
                       R"({"lan1":{"enable":false,"server_certificate_enable":false},
                           "lan2":{"enable":true,"server_certificate_enable":true}})"),
              "shell astparam s auth_1x_en n;\n"
              "shell astparam s auth_1x_valid_server_en n;\n"
              "shell update_1x_cert_upload_conf.sh lan1\n"
              "shell astparam s auth_1x_en_2 y;\n"
              "shell astparam s auth_1x_valid_server_en_2 y;\n"
              "shell update_1x_cert_upload_conf.sh lan2\n");
}

TEST_F(Auth8021x, APortsScriptRunsWheneverThePortIsAnObject) {
    EXPECT_EQ(trace_of(apply_8021x_section, "{}"), "");
    EXPECT_EQ(trace_of(apply_8021x_section, R"({"lan1":{}})"),
              "shell update_1x_cert_upload_conf.sh lan1\n");
    EXPECT_EQ(trace_of(apply_8021x_section, R"({"lan2":{}})"),
              "shell update_1x_cert_upload_conf.sh lan2\n");
    EXPECT_EQ(trace_of(apply_8021x_section, R"({"LAN2":{"other":1},"Lan1":{"enable":"true"}})"),
              "shell update_1x_cert_upload_conf.sh lan1\n"
              "shell update_1x_cert_upload_conf.sh lan2\n");
    for (const char* other : {"[]", "true", "null", "3", "\"x\"", "[{\"enable\":true}]"}) {
        EXPECT_EQ(trace_of(apply_8021x_section,
                           std::string(R"({"lan1":)") + other + R"(,"lan2":)" + other + "}"),
                  "")
            << other;
    }
}

// --- All six
// --------------------------------------------------------------------------------------

struct SectionUnderTest {
    Applier apply;
    const SectionTable* table;
};

constexpr SectionUnderTest sections[] = {
    {apply_aes256_section, &aes256_table}, {apply_snmp_section, &snmp_table},
    {apply_mqtt_section, &mqtt_table},     {apply_https_section, &https_table},
    {apply_ldap_section, &ldap_table},     {apply_8021x_section, &auth_8021x_table},
};

TEST_F(Security, AMemberOfAnotherTypeCountsAsAbsent) {
    for (const SectionUnderTest& section : sections) {
        expect_wrong_types_to_count_as_absent(section.apply, *section.table);
    }
}

TEST_F(Security, OnlyBooleansNeedTheirExactCase) {
    for (const SectionUnderTest& section : sections) {
        expect_only_booleans_to_need_exact_case(section.apply, *section.table);
    }
}

TEST_F(Security, ASectionThatIsNoObjectIsTakenAsEmpty) {
    for (const SectionUnderTest& section : sections) {
        expect_other_sections_to_be_taken_as_empty(section.apply);
    }
}

TEST_F(Security, AnEmptyTextSendsNothing) {
    for (const SectionUnderTest& section : sections) {
        for_each_member(section.table->rows, section.table->count, {},
                        [&](const Member& row, const std::vector<std::string>& path) {
                            const std::string document = document_of(path, named(row.key, "\"\""));
                            EXPECT_EQ(fresh_trace_of(section.apply, document),
                                      fresh_trace_of(section.apply, document_of(path, "")))
                                << document;
                        });
    }
}

}  // namespace
