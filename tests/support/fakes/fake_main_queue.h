#pragma once

#include "support/fakes/fake_clock.h"

#include <kavio/platform/queues.h>
#include <kavio/testing/boundary.h>

#include <algorithm>
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
    void postAfter(std::chrono::milliseconds delay, std::function<void()> work) override {
        const std::lock_guard lock(mMutex);
        mWork.emplace(mClock->uptime() + std::max(delay, std::chrono::milliseconds(0)), std::move(work));
    }
    bool isMainThread() const override { return std::this_thread::get_id() == mMainThread; }

    /// Runs what is due, and what that posts, until nothing is due.
    void runAll() { runUntil(mClock->uptime()); }
    /// Lets `time` pass, and runs each piece of work when it is due.
    void advance(std::chrono::milliseconds time) {
        const auto end = mClock->uptime() + time;
        runUntil(end);
        mClock->advance(end - mClock->uptime());
    }
    /// Drops all work that is waiting.
    void forget() {
        decltype(mWork) forgotten;  // destroyed without the lock
        const std::lock_guard lock(mMutex);
        mWork.swap(forgotten);
    }
    /// How many pieces of work are waiting, due or not.
    std::size_t pending() const {
        const std::lock_guard lock(mMutex);
        return mWork.size();
    }

private:
    void runUntil(std::chrono::nanoseconds end) {
        for (std::unique_lock lock(mMutex); !mWork.empty() && mWork.begin()->first <= end; lock.lock()) {
            const auto next = mWork.extract(mWork.begin());
            lock.unlock();
            mClock->advance(std::max(next.key() - mClock->uptime(), std::chrono::nanoseconds(0)));
            const InLibrary entered;
            next.mapped()();
        }
    }

    const std::thread::id mMainThread = std::this_thread::get_id();
    const std::shared_ptr<FakeClock> mClock;
    mutable std::mutex mMutex;
    std::multimap<std::chrono::nanoseconds, std::function<void()>> mWork;  // by the uptime at which it is due
};

}  // namespace kavio::test
