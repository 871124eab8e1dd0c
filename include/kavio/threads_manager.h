#pragma once

#include <kavio/export.h>

#include <functional>
#include <thread>

namespace kavio {

/// Thread helpers for the application. All calls are safe from any thread.
class KAVIO_API ThreadsManager {
public:
    ThreadsManager() = delete;

    /// Whether the caller is on the thread of the platform's main queue.
    static bool isMainThread();
    /// The caller's own thread.
    static std::thread::id getCurrentThread();
    /// On the main thread runs `block` before returning; elsewhere posts it to the main queue and returns.
    static void runOnMainThread(std::function<void()> block);
    /// Posts to a background queue that runs one block at a time, in order. Never waits.
    static void startSyncTask(std::function<void()> block);
    /// Posts to a background queue that runs blocks side by side, in any order.
    static void startAsyncTask(std::function<void()> block);
    /// Runs `block` while no other thread runs one under the same `lock`, which is told by its address. A thread may
    /// nest calls.
    static void synchronized(const void* lock, const std::function<void()>& block);
};

}  // namespace kavio
