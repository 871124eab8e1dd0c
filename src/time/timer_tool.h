#pragma once

#include <cstdint>
#include <functional>

namespace kavio {

/// Runs work once, on the main thread, after a delay on the monotonic clock. Scheduled work always runs: an object that
/// may be gone by then should capture itself weakly.
class TimerTool {
public:
    TimerTool() = delete;

    /// A handle for a delay that could be cancelled; nothing makes one.
    struct TimeHandler {
        std::function<void()> task;
        const std::function<void()> action;
    };

    static void delay(std::function<void()> action, std::int64_t milliseconds);
};

}  // namespace kavio
