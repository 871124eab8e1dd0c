#pragma once

#include "ledger.h"
#include "schedule.h"

#include <cstdint>

namespace kavio::simulate {

/// An operation that needs nothing that the person has seen before.
struct Question {
    Kind kind;
    Callback callback;
    void (*ask)(Kavio& kavio, std::int64_t value);
};

/// The question that a step of that kind asks; null if it does something else.
const Question* questionOf(Kind kind);

/// The two halves of what LOG_IN stands for.
extern const Question login;
extern const Question verify;

}  // namespace kavio::simulate
