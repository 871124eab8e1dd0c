#pragma once

#include "storage/kavio_user_defaults.h"

#include <kavio/kavio.h>
#include <kavio/testing/device.h>
#include <kavio/testing/recording_delegate.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kavio::test {

/// What the network brings: a reply of any status, or why none came.
struct Answer {
    int status = 0;
    std::string body;
    std::optional<UrlError::Code> error = std::nullopt;

    Answer(int replyStatus, std::string replyBody) : status(replyStatus), body(std::move(replyBody)) {}
    Answer(UrlError::Code code) : error(code) {}
};

/// The whole library on a device in a box whose network answers only when the test does. Every instance starts afresh.
class World {
public:
    /// With a time sample that is fresh for a day, so that no time request gets in between.
    World() {
        mDevice.network().hold();
        setFreshTime();
        makeFacade();
    }

    Kavio& kavio() { return *mKavio; }
    RecordingDelegate& delegate() { return *mDelegate; }
    const std::vector<Report>& reports() const { return mDelegate ? mDelegate->reports : mReports; }
    const std::vector<std::string>& outcomes() const { return mDelegate->outcomes; }
    /// Whether the facade refuses operations and says so. This is not counted among the reports.
    bool isBusy() {
        kavio().getOrder("no number");  // nothing is sent for this
        const bool busy = mDelegate->reports.back().type == ResultType::BUSY;
        mDelegate->reports.pop_back();
        mDelegate->outcomes.pop_back();
        EXPECT_EQ(kavio().isBusy(), busy);
        return busy;
    }
    /// A time sample that is fresh for a day.
    void setFreshTime() {
        const auto now = mDevice.time().now();
        store().set(keys::serverTime, now + std::chrono::microseconds(1));  // exactly `now` would be the device's own
        store().set(keys::savedCpuTime, now);
        store().set(keys::serverExpiredTime, now + std::chrono::hours(24));
    }
    KeyValueStore& store() { return *KavioUserDefaults::shared()->defualt; }
    Device& device() { return mDevice; }

    void destroyFacade() { mKavio.reset(); }
    /// Ends the program in the middle of whatever it is doing, and starts it again on the same store.
    void restart(Kavio::EnvironmentType environment = Kavio::EnvironmentType::TEST) {
        mDevice.killProgram(std::move(mKavio));
        mDelegate = std::make_shared<RecordingDelegate>();
        makeFacade(environment);
    }
    /// Drops the application's reference; the test can still see the reports.
    void destroyDelegate() {
        mReports = mDelegate->reports;
        mDelegate.reset();
    }
    void makeFacade(Kavio::EnvironmentType environment = Kavio::EnvironmentType::TEST) {
        mKavio = std::make_unique<Kavio>(mDelegate, "key", environment);
    }

    /// Answers the oldest open request, first those of the background session, and lets the main thread do what
    /// follows. Fails the test if nothing is open.
    void answer(const Answer& answer) {
        auto& network = mDevice.network();
        EXPECT_TRUE(answer.error ? network.fail(*answer.error) : network.answer(answer.status, answer.body))
            << "no request is open";
        run();
    }
    void run() { mDevice.run(); }
    void advance(std::chrono::milliseconds time) { mDevice.letPass(time); }

    std::vector<UrlRequest> sent() const { return mDevice.network().requests(); }
    std::vector<UrlRequest> sentInBackground() const {
        return mDevice.network().requests(Network::Session::BACKGROUND);
    }
    /// Paths, below "/v1" and with queries, of everything sent on the ordinary session.
    std::vector<std::string> paths() const {
        std::vector<std::string> paths;
        for (const auto& request : sent())
            paths.push_back(request.url.substr(std::min(request.url.find("/v1") + 3, request.url.size())));
        return paths;
    }

private:
    Device mDevice;
    std::shared_ptr<RecordingDelegate> mDelegate = std::make_shared<RecordingDelegate>();
    std::vector<Report> mReports;  // from a delegate that is gone
    std::unique_ptr<Kavio> mKavio;
};

/// The ways in which an application can let go of the library.
using Loss = void (*)(World&);
inline const std::vector<Loss> losses{[](World& world) { world.destroyFacade(); },
                                      [](World& world) { world.destroyDelegate(); },
                                      [](World& world) { world.kavio().release(&world.kavio()); }};

/// The header's value; "none" if the request does not have it.
inline std::string header(const UrlRequest& request, std::string_view name) {
    for (const auto& [key, value] : request.headers) {
        if (key == name) return value;
    }
    return "none";
}

}  // namespace kavio::test
