#pragma once

#include "driver/facades.h"

#include <chrono>
#include <functional>
#include <string_view>
#include <vector>

namespace kavio::driver {

/// Something that a line can ask for.
struct Operation {
    std::string_view name;
    /// The callbacks through which it reports, any of them; none if it reports nothing.
    std::vector<std::string_view> callbacks;
    /// Reads all of its arguments before doing anything.
    std::function<void(Facades&, const Call&)> run;
    /// How long the next line is held back, whatever is reported; null for not at all.
    std::function<std::chrono::milliseconds(const Arguments&)> pause = nullptr;
};

/// Throws `Refused` when no operation has that name.
const Operation& operationNamed(const std::string& name);

}  // namespace kavio::driver
