#pragma once

#include "failing/launcher.h"

#include <kavio/kavio.h>
#include <kavio/platform/run_loop.h>
#include <kavio/testing/recording_delegate.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace kavio::test {

/// The main queue of an application that is in a hurry: what is to happen after a second happens after a fiftieth of
/// it.
class HurriedQueue final : public MainQueue {
public:
    static constexpr int haste = 50;

    void post(std::function<void()> work) override { mLoop.post(std::move(work)); }
    void postAfter(std::chrono::milliseconds delay, std::function<void()> work) override {
        mLoop.postAfter(delay / haste, std::move(work));
    }
    bool isMainThread() const override { return mLoop.isMainThread(); }
    bool runUntil(const std::function<bool()>& done, std::chrono::milliseconds limit) {
        return mLoop.runUntil(done, limit);
    }

private:
    RunLoop mLoop;
};

/// An application on the real Linux platform, the only one of its process. `task` says where its "store" is, at which
/// "address" the service is, and which "authority" vouches for that. Everything runs within the library, as far as the
/// machine is concerned.
class Application {
public:
    explicit Application(Json task) : mTask(std::move(task)) {}

    /// What is made already stays.
    void start();
    template <class Operation>
    void call(Operation&& operation) {
        const InLibrary entered;
        operation(*kavio);
    }
    /// Whether the facade became idle before the time was up.
    bool runUntilIdle(std::chrono::milliseconds limit);

    const std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
    std::unique_ptr<Kavio> kavio;
    /// How often it was said that a store was set aside, and that one cannot be used.
    std::atomic<int> storesSetAside = 0;
    std::atomic<int> storesUnusable = 0;

private:
    void makePlatform();
    void makeFacade();

    const Json mTask;
    const std::shared_ptr<HurriedQueue> mQueue = std::make_shared<HurriedQueue>();
    bool mHasPlatform = false;
};

/// Carries out the "operation" of the task while the "call" of that "number" fails, and once more on a sound machine.
/// Tells "report" for each report, as in "onLogin SUCCESS DONE NONE PAYLOAD"; what the machine was asked for comes
/// between those of the two.
void failingApplication(const Json& task, const Tell& tell);
/// A later run of the program, on a sound machine: settles what is in doubt. Tells "settled" for each payment.
void laterApplication(const Json& task, const Tell& tell);

}  // namespace kavio::test
