#pragma once

#include "jsonl/facades.h"

#include <functional>
#include <string_view>

namespace kavio::wallet {

/// What a line can ask for.
struct Operation {
    std::string_view name;
    /// The callback that it reports through; empty for an operation that reports nothing.
    std::string_view callback;
    /// Reads all of its arguments before it does anything.
    std::function<void(Facades&, const Call&)> run;
};

/// Throws `Refused` when no operation has that name.
const Operation& operationNamed(const std::string& name);

}  // namespace kavio::wallet
