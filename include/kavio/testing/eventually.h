#pragma once

#include <kavio/export.h>

#include <chrono>
#include <functional>

namespace kavio::test {

/// How long a test waits for something that must come. Even on a busy machine, only a broken program takes longer.
inline constexpr std::chrono::minutes patience{2};

/// Waits for real threads and processes: returns true as soon as `condition` holds, false once `limit` has passed.
KAVIO_API bool eventually(const std::function<bool()>& condition, std::chrono::milliseconds limit = patience);

}  // namespace kavio::test
