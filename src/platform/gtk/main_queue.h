#pragma once

#include <kavio/platform/queues.h>

#include <thread>

namespace kavio {

/// The queue of a GLib main context, the default one. The thread that makes it is the main thread.
class GlibMainQueue final : public MainQueue {
public:
    void post(std::function<void()> work) override;
    void postAfter(std::chrono::milliseconds delay, std::function<void()> work) override;
    bool isMainThread() const override { return std::this_thread::get_id() == mMainThread; }

private:
    const std::thread::id mMainThread = std::this_thread::get_id();
};

}  // namespace kavio
