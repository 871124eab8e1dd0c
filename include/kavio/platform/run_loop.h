#pragma once

#include <kavio/platform/queues.h>

#include <chrono>
#include <functional>
#include <memory>

namespace kavio {

/// A main queue for programs that have no loop of their own. The thread that makes it is the main thread, and the only
/// one that may run it.
class KAVIO_API RunLoop final : public MainQueue {
public:
    RunLoop();
    ~RunLoop() override;

    void post(std::function<void()> work) override;
    void postAfter(std::chrono::milliseconds delay, std::function<void()> work) override;
    bool isMainThread() const override;

    /// Runs work until `stop` is called, from any thread.
    void run();
    /// Ends `run` once the work under way is done. Safe from any thread.
    void stop();
    /// Runs work until `done`, which is asked after each piece of work, returns true, or until `limit` has passed.
    /// Returns the last answer of `done`.
    bool runUntil(const std::function<bool()>& done, std::chrono::milliseconds limit);

private:
    struct State;
    std::unique_ptr<State> mState;
};

}  // namespace kavio
