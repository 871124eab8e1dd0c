#include "support/fakes/fake_main_queue.h"

#include <algorithm>

namespace kavio::test {

void FakeMainQueue::postAfter(std::chrono::milliseconds delay, std::function<void()> work) {
    const std::lock_guard lock(mMutex);
    mWork.emplace(mClock->uptime() + std::max(delay, std::chrono::milliseconds(0)), std::move(work));
}

std::size_t FakeMainQueue::runAll() { return runUntil(mClock->uptime()); }

std::size_t FakeMainQueue::advance(std::chrono::milliseconds time) {
    const auto end = mClock->uptime() + time;
    const auto ran = runUntil(end);
    mClock->advance(end - mClock->uptime());
    return ran;
}

std::size_t FakeMainQueue::pending() const {
    const std::lock_guard lock(mMutex);
    return mWork.size();
}

std::size_t FakeMainQueue::runUntil(std::chrono::nanoseconds end) {
    for (std::size_t ran = 0;; ++ran) {
        std::unique_lock lock(mMutex);
        if (mWork.empty() || mWork.begin()->first > end) return ran;
        const auto next = mWork.extract(mWork.begin());
        lock.unlock();
        mClock->advance(std::max(next.key() - mClock->uptime(), std::chrono::nanoseconds(0)));
        next.mapped()();
    }
}

}  // namespace kavio::test
