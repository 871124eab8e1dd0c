#pragma once

#include <kavio/export.h>
#include <kavio/kavio.h>
#include <kavio/platform/platform.h>
#include <kavio/testing/network.h>
#include <kavio/testing/screen.h>
#include <kavio/testing/service.h>
#include <kavio/testing/stores.h>
#include <kavio/testing/timeline.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A device in a box for the tests of applications, and the suites that judge a port.
namespace kavio::test {

/// A bundle whose values a test sets.
struct KAVIO_API SettableBundle final : Bundle {
    std::optional<Value> informationValue(std::string_view key) const override;
    std::string localizedString(std::string_view key) const override;

    /// What `informationValue` gives.
    std::map<std::string, Value, std::less<>> information;
    /// What `localizedString` gives; any other text stays as it is.
    std::map<std::string, std::string, std::less<>> strings;
};

/// A device in a box: everything that the library needs of a device, in memory and in virtual time, with the payment
/// service behind it. While it lives it is the process's platform, and the library starts afresh on it. One at a time;
/// make facades after it and let go of them before it.
///
/// Nothing happens until `letPass` or `run`; then everything happens on the test's own thread. Dates, texts and digests
/// are the real ones.
class KAVIO_API Device {
public:
    /// What a device is like.
    struct Options {
        /// Two devices with the same seed and the same test do exactly the same.
        std::uint64_t seed = 1;
        /// Background queues with real threads instead of lanes of the timeline.
        bool hasThreads = false;
        /// How long an order stays in each status.
        std::chrono::milliseconds orderStep{1000};
    };
    Device() : Device(Options{}) {}
    /// Makes it the process's platform.
    explicit Device(Options options);
    /// Ends what is open.
    ~Device();
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    ///@{
    /// Its parts, through which a test says what happens.
    Timeline& time() const { return *mTimeline; }
    Network& network() const { return *mNetwork; }
    Service& service() const { return *mService; }
    MemoryStores& stores() const { return *mStores; }
    Screen& screen() const { return *mScreen; }
    ///@}
    ///@{
    /// The application's, and the library's own.
    SettableBundle& mainBundle() const { return *mMainBundle; }
    SettableBundle& libraryBundle() const { return *mLibraryBundle; }
    ///@}
    /// ISO 639 code of the person's language; absent for a locale without one.
    void setLanguage(std::optional<std::string> code);
    /// Takes the screen away: a device without windows.
    void removeScreen();

    /// Lets time pass; what falls due happens.
    void letPass(std::chrono::milliseconds time) { mTimeline->letPass(time); }
    /// Lets happen what needs no time.
    void run() { mTimeline->run(); }

    /// Logs the person in, as a run of the application before this one would have. Returns whether that worked.
    bool logIn(const Person& person = {});
    /// Sends the code that the card issuer's page asks for. False if no page asks for one.
    bool answerChallenge(const std::string& code = "1234");
    ///@{
    /// The program is killed, in the middle of whatever it is doing, and starts again: what was stored is there, all
    /// else is lost. The facades go with it.
    void killProgram(std::vector<std::unique_ptr<Kavio>> facades = {});
    void killProgram(std::unique_ptr<Kavio> facade);
    ///@}

    /// What the library has been given.
    const Platform& platform() const { return *mPlatform; }

private:
    struct RandomTexts;
    struct SettableLocale;

    void describeLibrary();
    void connectScreen();  // what it shows comes from the service
    void install(bool hasThreads);

    const std::shared_ptr<RandomTexts> mTexts;
    const std::shared_ptr<Timeline> mTimeline;
    const std::shared_ptr<Service> mService;
    const std::shared_ptr<Network> mNetwork;
    const std::shared_ptr<MemoryStores> mStores;
    const std::shared_ptr<Screen> mScreen;
    const std::shared_ptr<SettableBundle> mMainBundle;
    const std::shared_ptr<SettableBundle> mLibraryBundle;
    const std::shared_ptr<SettableLocale> mLocale;
    Platform* mPlatform = nullptr;  // the process's
    std::unique_ptr<Platform> mFormer;
    /// What a killed program has left, which nobody destroys before the device.
    struct Killed {
        std::vector<std::unique_ptr<Kavio>> facades;
        std::shared_ptr<void> rest;
        std::unique_ptr<Platform> platform;
    };
    std::vector<Killed> mKilled;
};

}  // namespace kavio::test
