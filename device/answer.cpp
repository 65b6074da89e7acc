#include "device/answer.h"

// What stands at the end of an answer, before a line end.
static constexpr char end_mark[] = "printf \":mcu_end\" | nc -w 3 127.0.0.1 4445";
static constexpr size_t end_mark_length = sizeof end_mark - 1;

// CR, LF and five bytes more.
static constexpr char line_end[] = {'\r', '\n'};
static constexpr size_t needed_behind_mark = 7;

// A mismatch within the mark can only start a new match with the byte at hand.
static constexpr bool first_character_is_unique() {
    for (size_t i = 1; i < end_mark_length; i++) {
        if (end_mark[i] == end_mark[0]) {
            return false;
        }
    }
    return true;
}
static_assert(first_character_is_unique());
static_assert(end_mark_length == 42);

static void follow_byte(AnswerProgress* answer, char byte) {
    if (answer->mark_matched < end_mark_length) {
        if (byte != end_mark[answer->mark_matched]) {
            answer->mark_matched = 0;
        }
        if (byte == end_mark[answer->mark_matched]) {
            answer->mark_matched++;
        }
        return;
    }
    if (answer->behind_mark < sizeof line_end && byte != line_end[answer->behind_mark]) {
        answer->mark_broken = true;
    }
    if (answer->behind_mark < needed_behind_mark) {
        answer->behind_mark++;
    }
    answer->complete = answer->behind_mark == needed_behind_mark && !answer->mark_broken;
}

void follow_answer(AnswerProgress* answer, const char* piece, size_t size) {
    for (size_t i = 0; i < size; i++) {
        follow_byte(answer, piece[i]);
    }
}
