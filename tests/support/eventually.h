#pragma once

#include <poll.h>

#include <chrono>
#include <functional>

namespace kavio::test {

/// How long a test waits for something that must come. Even on a busy machine, only a broken program takes longer.
inline constexpr std::chrono::minutes patience{2};

/// Waits for real threads and processes: returns true as soon as `condition` holds, false once `limit` has passed.
inline bool eventually(const std::function<bool()>& condition, std::chrono::milliseconds limit = patience) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) return condition();
        ::poll(nullptr, 0, 1);  // leaves the processor to whatever we wait for
    }
    return true;
}

}  // namespace kavio::test
