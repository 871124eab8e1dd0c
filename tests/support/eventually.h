#pragma once

#include <chrono>
#include <functional>

namespace kavio::test {

/// Waits for real threads and processes: gives true as soon as `condition` holds, false when `limit` has passed.
bool eventually(const std::function<bool()>& condition, std::chrono::milliseconds limit = std::chrono::seconds(20));

}  // namespace kavio::test
