#pragma once

#include "jsonl/facades.h"

#include <functional>
#include <string_view>

namespace kavio::wallet {

/// Something that a line can ask for.
struct Operation {
    std::string_view name;
    /// The callback through which it reports; empty if it reports nothing.
    std::string_view callback;
    /// Reads all of its arguments before doing anything.
    std::function<void(Facades&, const Call&)> run;
};

/// Throws `Refused` when no operation has that name.
const Operation& operationNamed(const std::string& name);

}  // namespace kavio::wallet
