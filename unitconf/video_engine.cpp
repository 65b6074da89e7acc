#include "unitconf/video_engine.h"

#include <cstring>

void normalise_video_engine_option(char* option) {
    if (strcmp(option, "0x8") == 0) {
        strcpy(option, "0x80000000");
    } else if (strcmp(option, "0x0") == 0 || option[0] == '\0') {
        strcpy(option, "0x00000000");
    }
}
