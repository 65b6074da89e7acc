// What an upload's handler answers and what it does to the unit.
#pragma once

#include <ostream>
#include <string>

#include "tests/support/recorder.h"

struct Outcome {
    int result;
    std::string trace;
};

inline bool operator==(const Outcome& a, const Outcome& b) {
    return a.result == b.result && a.trace == b.trace;
}

inline void PrintTo(const Outcome& outcome, std::ostream* out) {
    *out << "result " << outcome.result << "\n" << outcome.trace;
}
