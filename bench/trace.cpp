// What a unit configuration tells a unit, without a unit: one line of output for each shell line,
// microcontroller command, read value, written file and pause, in order.
//
// Usage: trace MODEL DOCUMENT [PARAMETERS]
// PARAMETERS are the present values: KEY=VALUE lines, those of the run-time store behind a line
// "[astparam]", those of the live store behind "[lmparam]".
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/support/recorder.h"
#include "unitconf/configuration.h"

static void set_present_values(const char* path) {
    std::ifstream file(path);
    std::string store;
    for (std::string line; std::getline(file, line);) {
        const size_t equals = line.find('=');
        if (line[0] == '[') {
            store = line;
        } else if (line[0] == '#' || equals == std::string::npos) {
            continue;
        } else if (store == "[astparam]") {
            set_rw_value(line.substr(0, equals), line.substr(equals + 1));
        } else if (store == "[lmparam]") {
            set_lm_value(line.substr(0, equals), line.substr(equals + 1));
        }
    }
}

int main(int count, char** arguments) {
    if (count < 3) {
        return 2;
    }
    std::ifstream file(arguments[2]);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    if (count > 3) {
        set_present_values(arguments[3]);
    }
    const int result = apply_configuration_to_model(arguments[1], text.c_str());
    fputs(recorded_trace().c_str(), stdout);
    return result == configuration_applied ? 0 : 1;
}
