#include "unitconf/names.h"

#include <cstdlib>

#include "device/lines.h"
#include "device/unit.h"

size_t utf8_characters(const char* text) {
    size_t count = 0;
    for (const char* at = text; *at != '\0'; at++) {
        if ((static_cast<unsigned char>(*at) & 0xC0U) != 0x80U) {
            count++;
        }
    }
    return count;
}

// Not isalnum: it follows the locale, and only ASCII is accepted.
static bool is_plain(char byte) {
    return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= 'a' && byte <= 'z') || byte == '-';
}

char* plain_name(const char* name, size_t bytes, char blank) {
    char* plain = static_cast<char*>(malloc(bytes + 1));
    if (plain == nullptr) {
        return nullptr;
    }
    for (size_t i = 0; i < bytes; i++) {
        plain[i] = 'O';
        if (name[i] == ' ') {
            plain[i] = blank;
        } else if (is_plain(name[i])) {
            plain[i] = name[i];
        }
    }
    plain[bytes] = '\0';
    return plain;
}

void store_name_sync_flag(NameSyncFlag flag, bool on) {
    char flags[output_text_size] = {};
    read_command_output("astparam g device_name_sync_enable", flags);
    flags[flag] = on ? '1' : '0';
    run_shell_format("astparam s device_name_sync_enable %s;", flags);
}
