#pragma once

#include "c/outbox.h"
#include "driver/driver.h"
#include "driver/options.h"

#include <kavio/platform/queues.h>

#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace kavio::c {

/// Carries out a session's lines in order, on the main thread, where all of it happens.
class Session : public std::enable_shared_from_this<Session> {
public:
    Session(std::shared_ptr<MainQueue> mainQueue, std::shared_ptr<Outbox> outbox);

    void begin(const driver::Options& options);
    void take(std::string line);
    /// Drops the facades, and with them work under way. Nothing happens afterwards.
    void end();

private:
    using Monotonic = std::chrono::steady_clock;

    void write(const std::string& line);
    /// Carries out lines until one has to be waited for.
    void proceed();
    /// Has `onAlarm` called at the deadline or before. The main queue does not take work back: an alarm that is
    /// pending serves the waits that follow, too.
    void setAlarm();
    void onAlarm();

    const std::shared_ptr<MainQueue> mMainQueue;
    const std::shared_ptr<Outbox> mOutbox;
    std::unique_ptr<driver::Facades> mFacades;
    std::deque<std::string> mLines;
    std::optional<driver::Wait> mWait;
    Monotonic::time_point mDeadline;
    std::set<Monotonic::time_point> mAlarms;
};

}  // namespace kavio::c
