#include "unitconf/video_engine.h"

#include <cstdio>
#include <cstring>

#include "device/unit.h"

static constexpr char top_bit_only[] = "0x80000000";
static constexpr char no_bits[] = "0x00000000";

void normalise_video_engine_option(char* option) {
    if (strcmp(option, "0x8") == 0) {
        memcpy(option, top_bit_only, sizeof top_bit_only);
    } else if (strcmp(option, "0x0") == 0 || option[0] == '\0') {
        memcpy(option, no_bits, sizeof no_bits);
    }
}

void change_video_engine_option(char* option, const char* present, size_t place, char digit) {
    memset(option, 0, output_text_size);
    snprintf(option, output_text_size, "%s", present);
    normalise_video_engine_option(option);
    option[place] = digit;
}
