// What leaves the unit: its certificates and keys, encrypted by the unit's own tool.
#include <cjson/cJSON.h>

#include <cstdlib>

#include "cgi/uploads.h"
#include "device/lines.h"
#include "device/parameters.h"
#include "device/unit.h"

struct ExportedFile {
    const char* stored;
    const char* encrypted;  // where the tool's output stands for a moment
    const char* key;
};

// In the order of the object. Several rows use the same working file, so each row removes it before
// the next one runs, and two exports do not run at a time.
static constexpr ExportedFile exported_files[] = {
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

// Allocated; null when the tool left no file behind.
static char* encrypt_file(const ExportedFile& file) {
    run_shell_format("crypto_program -e %s > %s", file.stored, file.encrypted);
    char* text = nullptr;
    read_file_text(file.encrypted, &text);
    run_shell_format("rm -rf %s", file.encrypted);
    return text;
}

char* export_certificates() {
    const int turn = take_turn();
    cJSON* object = cJSON_CreateObject();
    for (const ExportedFile& file : exported_files) {
        char* text = file_exists(file.stored) ? encrypt_file(file) : nullptr;
        if (text == nullptr || cJSON_AddStringToObject(object, file.key, text) == nullptr) {
            cJSON_AddStringToObject(object, file.key, "");
        }
        free(text);
    }
    end_turn(turn);
    char* printed = cJSON_PrintUnformatted(object);
    cJSON_Delete(object);
    return printed;
}
