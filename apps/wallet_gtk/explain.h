#pragma once

#include <kavio/result.h>

#include <string>

namespace kavio::wallet_gtk {

/// What a failure means for the person, and what to do next.
struct Explanation {
    enum class Remedy { NONE, TRY_AGAIN, LOG_IN };

    std::string sentence;
    Remedy remedy = Remedy::NONE;
};

/// Of any result but `SUCCESS`.
Explanation explain(const KavioResult& result);

}  // namespace kavio::wallet_gtk
