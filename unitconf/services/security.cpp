// The unit's security services: stream encryption, SNMP, MQTT, HTTPS, LDAP and the IEEE 802.1X
// authentication of both network ports. Certificates and keys come encrypted in the document; a
// line decrypts each into a file of its own and a script of the service installs what it finds
// there.
#include <cstddef>
#include <cstring>

#include "device/lines.h"
#include "device/snapshot.h"
#include "device/unit.h"
#include "unitconf/members.h"
#include "unitconf/sections.h"
#include "unitconf/tables.h"
#include "unitconf/video_engine.h"

// --- "aes256": stream encryption -----------------------------------------------------------------

// The most significant hexadecimal digit of the video engine option holds the encryption strength.
static constexpr size_t strength_digit = 2;

enum EncryptionStrength : int { strength_standard = 1, strength_high = 2 };

static constexpr Word strength_words[] = {
    {"standard", strength_standard},
    {"high", strength_high},
};

// Writes the digit of the wanted strength into the present option and keeps its other digits. A
// number that names no strength still runs a line, an empty one.
static bool set_encryption_strength(const Section& section, const cJSON* item) {
    const int strength = choice_code(item, strength_words);
    if (strength < 0) {
        return false;
    }
    if (strength != strength_standard && strength != strength_high) {
        run_shell_line("");
        return true;
    }
    char option[output_text_size];
    change_video_engine_option(option, section.present->value[slot_v_eng_drv_option],
                               strength_digit, strength == strength_standard ? '8' : '0');
    send_filled_line(Channel::shell, "astparam s v_eng_drv_option %s;", option);
    return true;
}

static constexpr Member aes256_members[] = {
    flag("enable", "astparam s aes_encrypt_en 1;", "astparam s aes_encrypt_en 0;"),
    handled("aes256_mode", JsonType::number_or_string, set_encryption_strength, {}, strength_words),
    flag("custom_key_enable", "astparam s encrypt_en 1;", "astparam s encrypt_en 0;"),
    text("custom_key_string", "astparam s encrypt_val \"%s\";"),
};
static_assert(well_formed(aes256_members));

void apply_aes256_section(const cJSON* section) {
    apply_members_with_snapshot(section, aes256_members);
}

// --- "snmp" --------------------------------------------------------------------------------------

static constexpr Word authentication_words[] = {
    {"none", "0"},          {"md5", "MD5"},         {"sha", "SHA"},
    {"sha-256", "SHA-256"}, {"sha-384", "SHA-384"}, {"sha-512", "SHA-512"},
};

static constexpr Word privacy_words[] = {
    {"none", "0"},
    {"des", "DES"},
    {"aes", "AES"},
    {"aes-128", "AES-128"},
};

// What the unit keeps as the trap's engine ID is the user name; the engine ID of the document only
// says that it is to be stored. Without a user name there is nothing to store; an empty one is.
static bool store_user_name_as_engine_id(const Section& section, const cJSON* item) {
    const cJSON* user_name = find_member(section.object, "username");
    if (nonempty_text(item) == nullptr || !cJSON_IsString(user_name)) {
        return false;
    }
    send_filled_line(Channel::shell, "astparam s TrapV3EngID %s > /dev/null 2>&1",
                     user_name->valuestring);
    return true;
}

static constexpr Member v3_trap_members[] = {
    text("username", "astparam s TrapV3Name %s > /dev/null 2>&1"),
    handled("engine_id", JsonType::string, store_user_name_as_engine_id),
    translated("auth_algorithm", authentication_words, "astparam s TrapV3AA %s > /dev/null 2>&1"),
    text("auth_password", "astparam s TrapV3AP %s > /dev/null 2>&1"),
    translated("privacy_algorithm", privacy_words, "astparam s TrapV3PA %s > /dev/null 2>&1"),
    text("privacy_password", "astparam s TrapV3PP %s > /dev/null 2>&1"),
};
static_assert(well_formed(v3_trap_members));

static constexpr Member snmp_members[] = {
    flag("enable", "astparam s snmpStatu 1;", "astparam s snmpStatu 0;"),
    flag("is_get", "astparam s EnableSnmpV1Get 1;", "astparam s EnableSnmpV1Get 0;"),
    flag("is_set", "astparam s EnableSnmpV1Set 1;", "astparam s EnableSnmpV1Set 0;"),
    number("port", "astparam s SnmpPort %d;"),
    text("sys_contact", "astparam s SnmpSysContact \"%s\" > /dev/null 2>&1"),
    text("sys_name", "astparam s SnmpSysName \"%s\" > /dev/null 2>&1"),
    text("sys_location", "astparam s SnmpSysLocation \"%s\" > /dev/null 2>&1"),
    flag("v2_enable", "astparam s EnableSnmpV2 1;", "astparam s EnableSnmpV2 0;"),
    text("public_community", "astparam s EnableSnmpV2public %s > /dev/null 2>&1"),
    text("private_community", "astparam s EnableSnmpV2private %s > /dev/null 2>&1"),
    flag("v3_enable", "astparam s EnableSnmpV3 1;", "astparam s EnableSnmpV3 0;"),
    text("v3_username", "astparam s SnmpV3Username %s > /dev/null 2>&1"),
    translated("v3_auth_algorithm", authentication_words,
               "astparam s SnmpV3Algorithm %s > /dev/null 2>&1"),
    text("v3_auth_password", "astparam s SnmpV3AuthPassword %s > /dev/null 2>&1"),
    translated("v3_privacy_algorithm", privacy_words,
               "astparam s SnmpV3PrivacyAlg %s > /dev/null 2>&1"),
    text("v3_privacy_password", "astparam s SnmpV3Privacypassword %s > /dev/null 2>&1"),
    number("trap_mode", "astparam s EnableSnmpTrap %d;"),
    flag("trap", "astparam s EnableSnmpTrapEnable 1", "astparam s EnableSnmpTrapEnable 0"),
    object("v3_trap", v3_trap_members),
    text("trap_receiver1", "astparam s SnmpTrapreceiver1 %s > /dev/null 2>&1"),
    text("trap_receiver2", "astparam s SnmpTrapreceiver2 %s > /dev/null 2>&1"),
};
static_assert(well_formed(snmp_members));

void apply_snmp_section(const cJSON* section) {
    apply_members(section, snmp_members);
}

// --- "mqtt" --------------------------------------------------------------------------------------

static constexpr Member mqtt_members[] = {
    flag("enable", "astparam s mqttStatu 1;", "astparam s mqttStatu 0;"),
    text("host", "astparam s mqttHost %s > /dev/null 2>&1"),
    number("port", "astparam s mqttPort %d;"),
    flag("enable_ssl", "astparam s mqttSSLStatus 1;", "astparam s mqttSSLStatus 0;"),
    flag("user_credentials", "astparam s mqttUseCredentials 1;",
         "astparam s mqttUseCredentials 0;"),
    text("username", "astparam s mqttUsername %s > /dev/null 2>&1"),
    text("password", "astparam s mqttPassword %s > /dev/null 2>&1"),
    text("client_id", "astparam s mqttClientID %s > /dev/null 2>&1"),
    text("topics", "astparam s mqttTopic %s > /dev/null 2>&1"),
    number("qos", "astparam s mqttQos %d;"),
    number("keep_alive_ping", "astparam s mqttInterval %d;"),
    number("publish_data_interval", "astparam s mqttPubInterval %d;"),
    text("tls_ca", "crypto_program -d \"%s\" /var/tmp/CAFile"),
    text("tls_cert", "crypto_program -d \"%s\" /var/tmp/CERTFile"),
    text("tls_key", "crypto_program -d \"%s\" /var/tmp/KEYFile"),
    always("mqtt_upgrade_cert.sh &"),
};
static_assert(well_formed(mqtt_members));

void apply_mqtt_section(const cJSON* section) {
    apply_members(section, mqtt_members);
}

// --- "https" -------------------------------------------------------------------------------------

// Unlike its sisters, this service installs only when a certificate has come.
static constexpr Member https_members[] = {
    flag("enable", "astparam s en_https y;", "astparam s en_https n;"),
    flag("use_internal_certificate", "astparam s httpsInOrServer 1;",
         "astparam s httpsInOrServer 2;"),
    text("tls_private_key", "astparam s httpsKeyPassword \"%s\" > /dev/null 2>&1"),
    and_then("https_upgrade_cert.sh &",
             text("tls_ca", "crypto_program -d \"%s\" /var/tmp/HTTPS_CAFILE")),
};
static_assert(well_formed(https_members));

void apply_https_section(const cJSON* section) {
    apply_members(section, https_members);
}

// --- "ldap" --------------------------------------------------------------------------------------

static constexpr Member ldap_members[] = {
    flag("enable", "astparam s ldapStatu 1;", "astparam s ldapStatu 0;"),
    text("domain_name", "astparam s ldapInfoDn %s > /dev/null 2>&1"),
    text("username", "astparam s ldapInfoUsername %s > /dev/null 2>&1"),
    text("password", "astparam s ldapInfoPassword %s > /dev/null 2>&1"),
    text("server", "astparam s ldapInfoServer %s > /dev/null 2>&1"),
    number("port", "astparam s ldapInfoPort %d;"),
    flag("use_tls", "astparam s ldapInfoTls 1;", "astparam s ldapInfoTls 0;"),
    text("tls_ca", "crypto_program -d \"%s\" /var/tmp/LDAP_CAFile"),
    text("tls_cert", "crypto_program -d \"%s\" /var/tmp/LDAP_CERTFile"),
    text("tls_key", "crypto_program -d \"%s\" /var/tmp/LDAP_KEYFile"),
    always("ldap_upgrade_cert.sh &"),
};
static_assert(well_formed(ldap_members));

void apply_ldap_section(const cJSON* section) {
    apply_members(section, ldap_members);
}

// --- "auth_8021x" --------------------------------------------------------------------------------

// The lines of one network port.
struct PortLines {
    const char* enable;
    const char* disable;
    const char* method;
    const char* user_name;
    const char* password;
    const char* private_key_password;
    const char* certificate;
    const char* key;
    const char* check_server;
    const char* trust_server;
    const char* ca;
    const char* ca_time;
    const char* install;
};

static constexpr PortLines lan1_lines = {
    .enable = "astparam s auth_1x_en y;",
    .disable = "astparam s auth_1x_en n;",
    .method = "astparam s auth_1x_method %s > /dev/null 2>&1",
    .user_name = "astparam s auth_1x_username \"%s\" > /dev/null 2>&1",
    .password = "astparam s auth_1x_passwd \"%s\" > /dev/null 2>&1",
    .private_key_password = "astparam s auth_1x_priv_key_passwd \"%s\" > /dev/null 2>&1",
    .certificate = "crypto_program -d \"%s\" /var/tmp/client.pem",
    .key = "crypto_program -d \"%s\" /var/tmp/client.key",
    .check_server = "astparam s auth_1x_valid_server_en y;",
    .trust_server = "astparam s auth_1x_valid_server_en n;",
    .ca = "crypto_program -d \"%s\" /var/tmp/ca.pem",
    .ca_time = "astparam s auth_1x_server_cert_start_time \"%s\" > /dev/null 2>&1",
    .install = "update_1x_cert_upload_conf.sh lan1",
};

static constexpr PortLines lan2_lines = {
    .enable = "astparam s auth_1x_en_2 y;",
    .disable = "astparam s auth_1x_en_2 n;",
    .method = "astparam s auth_1x_method_2 %s > /dev/null 2>&1",
    .user_name = "astparam s auth_1x_username_2 \"%s\" > /dev/null 2>&1",
    .password = "astparam s auth_1x_passwd_2 \"%s\" > /dev/null 2>&1",
    .private_key_password = "astparam s auth_1x_priv_key_passwd_2 \"%s\" > /dev/null 2>&1",
    .certificate = "crypto_program -d \"%s\" /var/tmp/client_2.pem",
    .key = "crypto_program -d \"%s\" /var/tmp/client_2.key",
    .check_server = "astparam s auth_1x_valid_server_en_2 y;",
    .trust_server = "astparam s auth_1x_valid_server_en_2 n;",
    .ca = "crypto_program -d \"%s\" /var/tmp/ca_2.pem",
    .ca_time = "astparam s auth_1x_server_cert_start_time_2 \"%s\" > /dev/null 2>&1",
    .install = "update_1x_cert_upload_conf.sh lan2",
};

struct PortTable {
    Member members[11];
};

static constexpr PortTable port_table(const PortLines& port) {
    return {{
        flag("enable", port.enable, port.disable),
        text("method", port.method),
        text("username", port.user_name),
        text("password", port.password),
        text("private_key_password", port.private_key_password),
        text("tls_cert", port.certificate),
        text("tls_key", port.key),
        flag("server_certificate_enable", port.check_server, port.trust_server),
        text("ca", port.ca),
        text("ca_time", port.ca_time),
        always(port.install),
    }};
}

static constexpr PortTable lan1 = port_table(lan1_lines);
static constexpr PortTable lan2 = port_table(lan2_lines);
static_assert(well_formed(lan1.members) && well_formed(lan2.members));

// A port's certificates are installed whenever its object is there, whatever that holds.
static constexpr Member auth_8021x_members[] = {
    object_only("lan1", lan1.members),
    object_only("lan2", lan2.members),
};
static_assert(well_formed(auth_8021x_members));

void apply_8021x_section(const cJSON* section) {
    apply_members(section, auth_8021x_members);
}

// --- The tables as others see them ---------------------------------------------------------------

const SectionTable aes256_table = {"aes256", every_model, aes256_members};
const SectionTable snmp_table = {"snmp", every_model, snmp_members};
const SectionTable mqtt_table = {"mqtt", every_model, mqtt_members};
const SectionTable https_table = {"https", every_model, https_members};
const SectionTable ldap_table = {"ldap", every_model, ldap_members};
const SectionTable auth_8021x_table = {"auth_8021x", every_model, auth_8021x_members};
