#include "tests/support/applying.h"

#include <gtest/gtest.h>

#include "tests/support/recorder.h"

std::string trace_of(void (*apply)(const cJSON* section), const std::string& json) {
    cJSON* section = cJSON_Parse(json.c_str());
    EXPECT_NE(section, nullptr) << "not JSON: " << json;
    const size_t before = recorded_trace().size();
    apply(section);
    cJSON_Delete(section);
    return recorded_trace().substr(before);
}
