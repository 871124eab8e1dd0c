#pragma once

#include <kavio/platform/device.h>

#include <atomic>
#include <chrono>

namespace kavio::test {

/// A clock that stands still until it is driven. It starts at 2024-01-01 00:00:00 UTC, one hour after the device did.
class FakeClock final : public Clock {
public:
    Date now() const override { return mNow; }
    std::chrono::nanoseconds uptime() const override { return mUptime; }

    /// Time passes.
    void advance(std::chrono::nanoseconds time) {
        mUptime = mUptime.load() + time;
        mNow = mNow.load() + time;
    }
    /// Somebody sets the device's wall clock.
    void setWallClock(Date date) { mNow = date; }

private:
    std::atomic<Date> mNow = Date(std::chrono::sys_days(std::chrono::January / 1 / 2024));
    std::atomic<std::chrono::nanoseconds> mUptime = std::chrono::nanoseconds(std::chrono::hours(1));
};

}  // namespace kavio::test
