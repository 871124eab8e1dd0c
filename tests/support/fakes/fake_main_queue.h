#pragma once

#include "support/fakes/fake_clock.h"

#include <kavio/platform/queues.h>

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

namespace kavio::test {

/// A main queue that runs by hand, on the thread that made it.
class FakeMainQueue final : public MainQueue {
public:
    explicit FakeMainQueue(std::shared_ptr<FakeClock> clock) : mClock(std::move(clock)) {}

    void post(std::function<void()> work) override { postAfter({}, std::move(work)); }
    void postAfter(std::chrono::milliseconds delay, std::function<void()> work) override;
    bool isMainThread() const override { return std::this_thread::get_id() == mMainThread; }

    /// Runs what is due, and what that posts, until nothing is due. Gives how many pieces of work ran.
    std::size_t runAll();
    /// Lets `time` pass, and runs each piece of work when its time has come. Gives how many ran.
    std::size_t advance(std::chrono::milliseconds time);
    /// How many pieces of work wait, due or not.
    std::size_t pending() const;

private:
    std::size_t runUntil(std::chrono::nanoseconds end);

    const std::thread::id mMainThread = std::this_thread::get_id();
    const std::shared_ptr<FakeClock> mClock;
    mutable std::mutex mMutex;
    std::multimap<std::chrono::nanoseconds, std::function<void()>> mWork;  // by the uptime at which it is due
};

}  // namespace kavio::test
