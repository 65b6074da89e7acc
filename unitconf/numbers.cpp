#include "unitconf/numbers.h"

#include <climits>
#include <cstdio>
#include <cstdlib>

int decimal_value(const char* text) {
    const long long value = strtoll(text, nullptr, 10);
    if (value > INT_MAX) {
        return INT_MAX;
    }
    return value < INT_MIN ? INT_MIN : static_cast<int>(value);
}

char* json_number_array_to_list(const cJSON* array) {
    static constexpr size_t longest_item = sizeof "-2147483648,";
    if (!cJSON_IsArray(array)) {
        return nullptr;
    }
    const size_t size = static_cast<size_t>(cJSON_GetArraySize(array)) * longest_item + 1;
    char* list = static_cast<char*>(malloc(size));
    if (list == nullptr) {
        return nullptr;
    }
    char* end = list;
    *end = '\0';
    for (const cJSON* item = array->child; item != nullptr; item = item->next) {
        if (cJSON_IsNumber(item)) {
            end +=
                snprintf(end, longest_item, item->next == nullptr ? "%d" : "%d,", item->valueint);
        }
    }
    return list;
}
