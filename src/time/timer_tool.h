#pragma once

#include <cstdint>
#include <functional>

namespace kavio {

/// Runs work once, on the main thread, after a delay on the monotonic clock. What is scheduled runs: who may be gone by
/// then captures itself weakly.
class TimerTool {
public:
    TimerTool() = delete;

    /// The record of a delay that could be cancelled; nothing makes one.
    struct TimeHandler {
        std::function<void()> task;
        const std::function<void()> action;
    };

    static void delay(std::function<void()> action, std::int64_t milliseconds);
};

}  // namespace kavio
