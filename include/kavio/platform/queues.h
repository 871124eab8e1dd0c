#pragma once

#include <kavio/export.h>

#include <chrono>
#include <functional>

namespace kavio {

/// The queue of the application's main thread.
/// Work runs on the main thread, one at a time, in the order in which it was posted, and never inside the posting call.
/// All calls are safe from any thread.
class KAVIO_API MainQueue {
public:
    virtual ~MainQueue() = default;
    /// Runs `work` as soon as it is its turn.
    virtual void post(std::function<void()> work) = 0;
    /// Runs `work` once `delay` has passed on the monotonic clock, never sooner.
    virtual void postAfter(std::chrono::milliseconds delay, std::function<void()> work) = 0;
    /// Whether the caller is on the main thread.
    virtual bool isMainThread() const = 0;
};

/// A queue of background threads. A serial one runs one piece of work at a time, in order; a concurrent one runs
/// several side by side. Work never runs on the caller's thread. Destroying the queue waits for work under way and
/// drops what has not begun.
class KAVIO_API WorkQueue {
public:
    virtual ~WorkQueue() = default;
    /// Runs `work` on a thread of the queue, and returns at once.
    virtual void async(std::function<void()> work) = 0;
};

}  // namespace kavio
