#pragma once

#include <kavio/result.h>

#include <string>

namespace kavio::wallet {

/// What a failure means for the person.
struct Explanation {
    enum class Remedy { NONE, TRY_AGAIN, LOG_IN };

    std::string problem;  ///< a sentence
    std::string advice;   ///< what to do next, if what was asked for has certainly not been done; may be empty
    Remedy remedy = Remedy::NONE;
};

/// Of any result but `SUCCESS`.
Explanation explain(const KavioResult& result);

}  // namespace kavio::wallet
