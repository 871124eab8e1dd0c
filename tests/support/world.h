#pragma once

#include "support/fakes/fake_device.h"
#include "support/recording_delegate.h"

#include <kavio/kavio.h>

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

/// The whole library on a scripted device: the network, the clock and the main thread are driven by hand, the store
/// lives in memory; the library itself is real. Every instance starts over.
class World {
public:
    /// With a time sample that is fresh for a day, so that no time request comes between.
    World();
    ~World();

    Kavio& kavio() { return *mKavio; }
    RecordingDelegate& delegate() { return *mDelegate; }
    const std::vector<Report>& reports() const { return mDelegate ? mDelegate->reports : mReports; }
    /// Whether the facade refuses operations. Not counted among the reports.
    bool isBusy();
    KeyValueStore& store();
    FakeDevice& device() { return mDevice; }

    void destroyFacade() { mKavio.reset(); }
    /// The application's reference; the reports stay for the test to see.
    void destroyDelegate();
    void makeFacade(Kavio::EnvironmentType environment = Kavio::EnvironmentType::TEST);

    /// Answers the oldest open request, of the background session when it has one, and lets the main thread do what
    /// follows. Fails the test when nothing is open.
    void answer(const Answer& answer);
    void run() { mDevice.mainQueue->runAll(); }
    void advance(std::chrono::milliseconds time) { mDevice.mainQueue->advance(time); }

    std::vector<UrlRequest> sent() const { return mDevice.urlSession->requests(); }
    std::vector<UrlRequest> sentInBackground() const { return mDevice.backgroundUrlSession->requests(); }
    /// Paths with queries of all that was sent on the ordinary session, below "/v1".
    std::vector<std::string> paths() const;

private:
    FakeDevice mDevice;
    InstalledPlatform mPlatform;
    std::shared_ptr<RecordingDelegate> mDelegate = std::make_shared<RecordingDelegate>();
    std::vector<Report> mReports;  // of a delegate that is gone
    std::unique_ptr<Kavio> mKavio;
};

/// The ways in which an application lets go of the library.
using Loss = void (*)(World&);
inline const std::vector<Loss> losses{[](World& world) { world.destroyFacade(); },
                                      [](World& world) { world.destroyDelegate(); },
                                      [](World& world) { world.kavio().release(&world.kavio()); }};

/// The header's value; "none" when the request has none.
std::string header(const UrlRequest& request, std::string_view name);

}  // namespace kavio::test
