#pragma once

#include <kavio/export.h>
#include <kavio/platform/device.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>

namespace kavio::test {

/// Where work runs: on the application's main thread, on one of the background queues, or on the network's thread.
enum class Lane { MAIN, SERIAL, CONCURRENT, NETWORK };

/// The time of a device in a box, and everything that is going to happen there. Time stands still until a test lets it
/// pass; then each piece of work runs when it is due, on the test's own thread, in an order that never varies.
///
/// It starts at 2024-01-01 00:00:00 UTC, one hour after the device was switched on. `post` and the two readings are
/// safe from any thread; everything else is for the thread that made it.
class KAVIO_API Timeline final : public Clock {
public:
    Timeline();
    ~Timeline() override;

    Date now() const override;
    std::chrono::nanoseconds uptime() const override;
    /// Somebody sets the device's wall clock.
    void setWallClock(Date date);

    /// Has `work` run on `lane` once `delay` has passed; after what is due at the same moment already.
    void post(Lane lane, std::chrono::nanoseconds delay, std::function<void()> work);
    /// Runs what is due now, and what that brings about at once. An exception from work on the main lane leaves it;
    /// what was still due then is left to the next call. One from any other lane ends there.
    void run();
    /// Lets time pass, and runs everything that falls due.
    void letPass(std::chrono::nanoseconds time);
    /// Lets time pass until `done`, which is asked after each piece of work, or until `limit` has passed. Returns the
    /// last answer of `done`.
    bool runUntil(const std::function<bool()>& done, std::chrono::nanoseconds limit = std::chrono::hours(1));
    /// Nothing that is waiting is going to happen. It is kept as it is until the end, since a program that is killed
    /// destroys nothing.
    void forget();
    /// Destroys all of it, and what is waiting.
    void clear();
    /// How much work of `lane` is waiting, due or not.
    std::size_t waiting(Lane lane) const;
    /// Whether this is the main thread: the test's own code, or work on the main lane.
    bool isMain() const;

    /// How much later than asked for a piece of work runs; nothing if unset. Work of the serial lane keeps its order,
    /// and so does that of the main lane which is due at the same moment.
    std::function<std::chrono::nanoseconds(Lane lane)> lateness;

private:
    struct State;
    std::unique_ptr<State> mState;
};

}  // namespace kavio::test
