#pragma once

#include "driver/facades.h"

#include <chrono>
#include <functional>
#include <istream>
#include <optional>
#include <string>

// The library for programs: operations come as JSON lines and are carried out in order, and what is reported goes out
// as JSON lines. docs/wallet.md is its contract.

namespace kavio::driver {

/// What has to happen after one line before the next one is carried out.
struct Wait {
    /// Asked after each piece of work on the main queue.
    std::function<bool()> isOver;
    std::chrono::milliseconds limit;
    /// What to do if it was not over within the limit.
    std::function<void()> giveUp;
};

/// Carries out one line. Absent if the next one may follow at once.
std::optional<Wait> carryOut(const std::string& line, Facades& facades);

/// Runs the main queue until `done` returns true, which is asked after each piece of work, or until `limit` has passed.
/// Returns the last answer of `done`.
using RunUntil = std::function<bool(const std::function<bool()>& done, std::chrono::milliseconds limit)>;

/// Carries out lines until the end of input.
void drive(std::istream& input, Facades& facades, const RunUntil& runUntil);

}  // namespace kavio::driver
