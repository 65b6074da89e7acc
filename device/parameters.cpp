#include "device/parameters.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "device/unit.h"

const char* find_after(const char* text, const char* needle) {
    const char* found = strstr(text, needle);
    return found == nullptr ? nullptr : found + strlen(needle);
}

void read_file_text(const char* path, char** out_text) {
    FileBytes file = {};
    if (read_file(path, &file)) {
        *out_text = file.bytes;
    }
}

void split_lines(FileBytes dump) {
    for (size_t i = 0; i < dump.size; i++) {
        if (dump.bytes[i] == '\r' || dump.bytes[i] == '\n') {
            dump.bytes[i] = '\0';
        }
    }
}

// Copies the value of the first line of `dump` that begins with `key`.
static void copy_value(FileBytes dump, const char* key, char* out) {
    split_lines(dump);
    const size_t key_length = strlen(key);
    const char* end = dump.bytes + dump.size;
    for (const char* line = dump.bytes; line < end; line += strlen(line) + 1) {
        if (strncmp(line, key, key_length) == 0) {
            const char* value = find_after(line, "=");
            snprintf(out, output_text_size, "%s", value == nullptr ? "" : value);
            return;
        }
    }
}

static void get_value(const char* path, const char* key, char* out) {
    FileBytes dump = {};
    if (key == nullptr || !read_file(path, &dump)) {
        return;
    }
    if (dump.bytes != nullptr) {
        copy_value(dump, key, out);
    }
    free(dump.bytes);
}

void lm_get_value(const char* key, char* out) {
    get_value("/var/tmp/lmparam_dump", key, out);
}

void rw_get_value(const char* key, char* out) {
    get_value("/dev/shm/rwparam", key, out);
}
