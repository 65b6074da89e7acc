#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "device/signals.h"
#include "device/unit.h"

// The kernel takes no single exec argument of more bytes than this, the closing NUL included.
static constexpr size_t longest_argument = 131072;

// Hands the line to a shell that reads it from its standard input, where no limit stands.
static void run_long_shell_line(const char* line, size_t length) {
    FILE* shell = popen("sh", "we");
    if (shell == nullptr) {
        return;
    }
    fwrite(line, 1, length, shell);
    pclose(shell);
}

void run_shell_line(const char* line) {
    const size_t length = strlen(line);
    if (length >= longest_argument) {
        run_long_shell_line(line, length);
        return;
    }
    const int status = system(line);
    (void)status;
}

int read_command_output(const char* command, char* out) {
    char text[output_text_size] = {};
    int status = -1;
    FILE* output = popen(command, "re");
    if (output != nullptr) {
        while (fgets(text, sizeof text, output) != nullptr) {
            const size_t length = strlen(text);
            if (length > 0 && text[length - 1] == '\n') {
                text[length - 1] = '\0';
            }
        }
        status = pclose(output);
    }
    if (strlen(text) > 10 && strstr(text, "not defined") != nullptr) {
        return status;
    }
    memcpy(out, text, sizeof text);
    return status;
}

void pause_seconds(unsigned seconds) {
    hold_signals();
    sleep(seconds);
    release_signals();
}
