#include <kavio/platform/run_loop.h>

#include <algorithm>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

namespace kavio {
namespace {

using Monotonic = std::chrono::steady_clock;

/// A delay beyond this never elapses, and adding it to the clock could overflow.
constexpr std::chrono::milliseconds longestDelay = std::chrono::years(100);
constexpr auto never = Monotonic::time_point::max();

struct Queue {
    const std::thread::id mainThread = std::this_thread::get_id();
    std::mutex mutex;
    std::condition_variable changed;
    /// Plain work is due at once. Entries for the same time keep the order in which they came.
    std::multimap<Monotonic::time_point, std::function<void()>> work;
    bool stopping = false;

    void add(std::chrono::milliseconds delay, std::function<void()> block) {
        delay = std::clamp(delay, std::chrono::milliseconds(0), longestDelay);
        {
            const std::lock_guard lock(mutex);
            // The clock is read under the lock; otherwise the later of two posts could be due first.
            work.emplace(Monotonic::now() + delay, std::move(block));
        }
        changed.notify_one();
    }

    /// Runs the next piece of work that is due; false if `end` came first or, when `stoppable`, a stop.
    bool runOne(Monotonic::time_point end, bool stoppable) {
        std::unique_lock lock(mutex);
        while (true) {
            if (stoppable && stopping) return false;
            const auto now = Monotonic::now();
            if (!work.empty() && work.begin()->first <= now) break;
            if (end <= now) return false;
            const auto next = work.empty() ? end : std::min(end, work.begin()->first);
            if (next < never) {
                changed.wait_until(lock, next);
            } else {
                changed.wait(lock);  // the system needs no timer for this
            }
        }
        const auto block = std::move(work.extract(work.begin()).mapped());
        lock.unlock();
        block();
        return true;
    }

    void stop(bool value) {
        {
            const std::lock_guard lock(mutex);
            stopping = value;
        }
        changed.notify_all();
    }

    /// Drops what was not run; false when there was nothing.
    bool dropAll() {
        decltype(work) dropped;
        const std::lock_guard lock(mutex);
        work.swap(dropped);
        return !dropped.empty();
    }
};

}  // namespace

struct RunLoop::State {
    // Shared with the running loop so that a block may drop the last reference to its queue.
    std::shared_ptr<Queue> queue = std::make_shared<Queue>();
};

RunLoop::RunLoop() : mState(std::make_unique<State>()) {}

RunLoop::~RunLoop() {
    stop();
    while (mState->queue->dropAll()) {
        // Whatever a dropped block held may post once more as it is destroyed.
    }
}

void RunLoop::post(std::function<void()> work) { mState->queue->add({}, std::move(work)); }

void RunLoop::postAfter(std::chrono::milliseconds delay, std::function<void()> work) {
    mState->queue->add(delay, std::move(work));
}

bool RunLoop::isMainThread() const { return std::this_thread::get_id() == mState->queue->mainThread; }

void RunLoop::run() {
    const auto queue = mState->queue;
    while (queue->runOne(never, true)) {
    }
    queue->stop(false);
}

void RunLoop::stop() { mState->queue->stop(true); }

bool RunLoop::runUntil(const std::function<bool()>& done, std::chrono::milliseconds limit) {
    const auto queue = mState->queue;
    const auto end = Monotonic::now() + std::clamp(limit, std::chrono::milliseconds(0), longestDelay);
    while (!done()) {
        if (!queue->runOne(end, false)) return done();
    }
    return true;
}

}  // namespace kavio
