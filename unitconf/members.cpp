#include "unitconf/members.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "device/unit.h"
#include "unitconf/numbers.h"

const cJSON* find_member(const cJSON* object, const char* key, Case key_case) {
    return key_case == Case::exact ? cJSON_GetObjectItemCaseSensitive(object, key)
                                   : cJSON_GetObjectItem(object, key);
}

static Case case_of(bool exact) {
    return exact ? Case::exact : Case::ignored;
}

const Word* find_word(const char* text, Vocabulary words) {
    for (size_t i = 0; i < words.count; i++) {
        if (strcmp(text, words.words[i].word) == 0) {
            return &words.words[i];
        }
    }
    return nullptr;
}

const Word* find_code(int code, Vocabulary words) {
    for (size_t i = 0; i < words.count; i++) {
        if (words.words[i].code == code) {
            return &words.words[i];
        }
    }
    return nullptr;
}

int choice_code(const cJSON* item, Vocabulary words) {
    if (cJSON_IsNumber(item)) {
        return item->valueint;
    }
    const Word* found = cJSON_IsString(item) ? find_word(item->valuestring, words) : nullptr;
    return found == nullptr ? -1 : found->code;
}

const char* nonempty_text(const cJSON* item) {
    return cJSON_IsString(item) && item->valuestring[0] != '\0' ? item->valuestring : nullptr;
}

static bool send_value(const Line& line, const char* value) {
    send_filled_line(line.channel, line.text, value);
    return true;
}

static bool send_number(const Line& line, int value) {
    char digits[16];
    snprintf(digits, sizeof digits, "%d", value);
    return send_value(line, digits);
}

static bool send_plain(const Line& line) {
    send_line(line.channel, line.text);
    return true;
}

static bool apply_number(const Member& row, int value) {
    // One unsigned comparison tests both limits.
    const unsigned above_lowest = static_cast<unsigned>(value) - static_cast<unsigned>(row.lowest);
    const unsigned width = static_cast<unsigned>(row.highest) - static_cast<unsigned>(row.lowest);
    return above_lowest <= width && send_number(row.line, value + row.offset);
}

static bool apply_chosen_text(const Member& row, int code) {
    const Word* chosen = code < 0 ? nullptr : find_code(code, row.words);
    return chosen != nullptr && chosen->text != nullptr && send_value(row.line, chosen->text);
}

static bool send_number_list(const Line& line, const cJSON* item) {
    char* list = json_number_array_to_list(item);
    const bool sent = list != nullptr && send_value(line, list);
    free(list);
    return sent;
}

static bool apply_text(const Member& row, const char* value) {
    switch (row.kind) {
        case Kind::text:
        case Kind::any_text:
            return (row.own.test == nullptr || row.own.test(value)) && send_value(row.line, value);
        case Kind::begins_with:
            return send_plain(strncmp(value, row.own.beginning, strlen(row.own.beginning)) == 0
                                  ? row.line
                                  : row.other);
        default:
            break;
    }
    const Word* found = find_word(value, row.words);
    if (row.kind == Kind::word_or_minus_one) {
        return send_number(row.line, found == nullptr ? -1 : found->code);
    }
    if (found == nullptr) {
        return false;
    }
    return row.kind == Kind::translated ? send_value(row.line, found->text)
                                        : send_number(row.line, found->code);
}

// Applies a member that is there. True when a line was run or a command sent.
static bool apply_member(const Section& section, const Member& row, const cJSON* item) {
    switch (row.kind) {
        case Kind::flag:
        case Kind::flag_or_empty:
            if (cJSON_IsBool(item)) {
                return send_plain(cJSON_IsTrue(item) ? row.line : row.other);
            }
            return row.kind == Kind::flag_or_empty && send_plain({"", row.line.channel});
        case Kind::number:
            return cJSON_IsNumber(item) && send_number(row.line, item->valueint);
        case Kind::number_in_range:
            return cJSON_IsNumber(item) && apply_number(row, item->valueint);
        case Kind::choice: {
            const int code = choice_code(item, row.words);
            return code >= 0 && send_number(row.line, code);
        }
        case Kind::chosen_text:
            return apply_chosen_text(row, choice_code(item, row.words));
        case Kind::text:
        case Kind::any_text:
        case Kind::word:
        case Kind::word_or_minus_one:
        case Kind::translated:
        case Kind::begins_with:
            return cJSON_IsString(item) && (!row.not_empty || item->valuestring[0] != '\0') &&
                   apply_text(row, item->valuestring);
        case Kind::number_list:
            return send_number_list(row.line, item);
        case Kind::handled:
            return row.own.handler({section.whole, section.object, section.present, &row}, item);
        case Kind::object_only:
            if (!cJSON_IsObject(item)) {
                return false;
            }
            [[fallthrough]];
        case Kind::object:
            apply_member_rows({section.whole, item, section.present}, row.own.members,
                              row.member_count);
            return true;
        case Kind::always:
        case Kind::pause:
        case Kind::ignored:
            break;
    }
    return false;
}

static bool apply_row(const Section& section, const Member& row) {
    if (row.key == nullptr) {
        return row.line.text != nullptr && send_plain(row.line);
    }
    const cJSON* object = row.of_whole_section ? section.whole : section.object;
    if (row.partner != nullptr &&
        find_member(object, row.partner, case_of(row.partner_exact_case)) == nullptr) {
        return false;
    }
    if (row.displaced_by != nullptr &&
        cJSON_IsObject(find_member(section.whole, row.displaced_by))) {
        return false;
    }
    const cJSON* holder = row.parent == nullptr ? object : find_member(object, row.parent);
    const cJSON* item = find_member(holder, row.key, case_of(row.exact_case));
    return item != nullptr && apply_member(section, row, item);
}

void apply_member_rows(const Section& section, const Member* members, size_t count) {
    for (size_t i = 0; i < count; i++) {
        const Member& row = members[i];
        const bool sent = apply_row(section, row);
        if (sent && row.then.text != nullptr) {
            send_plain(row.then);
        }
        if (sent && row.pauses.when_sent > 0) {
            pause_seconds(row.pauses.when_sent);
        }
        if (row.pauses.always > 0) {
            pause_seconds(row.pauses.always);
        }
    }
}
