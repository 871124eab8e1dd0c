#pragma once

#include "network/requests.h"

#include <optional>
#include <string>
#include <string_view>

namespace kavio {

/// What a scanned or typed code stands for: the filter values of its look-up. Absent for a text that is not a code.
std::optional<MachineQuery> machineQueryForCode(const std::string& text);

/// Whether `digits` ends in its Damm check digit. Anything but ASCII digits fails.
bool passesDammTest(std::string_view digits);

}  // namespace kavio
