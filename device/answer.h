// How far the microcontroller's answer has come. Its bytes are not kept: they only pace the
// commands, so that the next one goes out when this one has been dealt with.
#pragma once

#include <cstddef>

struct AnswerProgress {
    size_t mark_matched;  // characters of the end mark seen in a row
    size_t behind_mark;   // bytes seen behind the first end mark, counted up to what is needed
    bool mark_broken;     // the first end mark was not followed by CR LF: the answer never ends
    bool complete;        // the end mark, CR LF and the five bytes behind them have arrived
};

// Takes the next bytes of the answer, cut into pieces anywhere.
void follow_answer(AnswerProgress* answer, const char* piece, size_t size);
