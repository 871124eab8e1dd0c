#include <kavio/platform/linux.h>
#include <kavio/platform/start_over.h>
#include <kavio/testing/device.h>

#include <cstdio>
#include <random>
#include <utility>

namespace kavio::test {
namespace {

Platform makeRealDevice() { return makeLinuxPlatform({.storeDirectory = "/nonexistent"}); }

/// Its dates, texts and digests are good for any device.
const Platform& realDevice() {
    static const Platform real = makeRealDevice();
    return real;
}

class TimelineMainQueue final : public MainQueue {
public:
    explicit TimelineMainQueue(std::shared_ptr<Timeline> timeline) : mTimeline(std::move(timeline)) {}
    void post(std::function<void()> work) override { mTimeline->post(Lane::MAIN, {}, std::move(work)); }
    void postAfter(std::chrono::milliseconds delay, std::function<void()> work) override {
        mTimeline->post(Lane::MAIN, delay, std::move(work));
    }
    bool isMainThread() const override { return mTimeline->isMain(); }

private:
    const std::shared_ptr<Timeline> mTimeline;
};

class TimelineWorkQueue final : public WorkQueue {
public:
    TimelineWorkQueue(std::shared_ptr<Timeline> timeline, Lane lane) : mTimeline(std::move(timeline)), mLane(lane) {}
    void async(std::function<void()> work) override {
        mTimeline->post(mLane, {}, [queue = std::weak_ptr(mIsAlive), task = std::move(work)] {
            if (queue.lock()) task();
        });
    }

private:
    const std::shared_ptr<Timeline> mTimeline;
    const Lane mLane;
    const std::shared_ptr<bool> mIsAlive = std::make_shared<bool>(true);
};

class SettableUuid final : public Uuid {
public:
    explicit SettableUuid(std::function<std::string()> hexadecimal) : mHexadecimal(std::move(hexadecimal)) {}
    std::string make() const override {
        auto text = mHexadecimal();
        text[12] = '4';
        text[16] = "89AB"[text[16] % 4];
        for (const std::size_t at : {20U, 16U, 12U, 8U}) text.insert(at, "-");
        return text;
    }

private:
    const std::function<std::string()> mHexadecimal;
};

template <class Map>
auto found(const Map& map, std::string_view key) {
    const auto entry = map.find(key);
    return entry == map.end() ? std::nullopt : std::optional(entry->second);
}

/// Where the page's text says that it ends, if it does so by itself.
std::vector<Deed> deedsOf(const std::string& html) {
    const auto start = html.find(std::string("\"") + loopbackUrl);
    if (start == std::string::npos) return {};
    return {{Deed::Kind::GO, html.substr(start + 1, html.find('"', start + 1) - start - 1)}};
}

}  // namespace

struct Device::RandomTexts {
    explicit RandomTexts(std::uint64_t seed) : engine(seed) {}
    /// 32 hexadecimal digits.
    std::string next() {
        char text[33];
        std::snprintf(text, sizeof text, "%016llX%016llX", static_cast<unsigned long long>(engine()),
                      static_cast<unsigned long long>(engine()));
        return text;
    }
    std::mt19937_64 engine;
};

std::optional<Bundle::Value> SettableBundle::informationValue(std::string_view key) const {
    return found(information, key);
}
std::string SettableBundle::localizedString(std::string_view key) const {
    return found(strings, key).value_or(std::string(key));
}

struct Device::SettableLocale final : Locale {
    std::optional<std::string> languageCode() const override { return language; }
    std::optional<std::string> regionName(std::string_view code) const override {
        return realDevice().locale->regionName(code);
    }
    std::optional<std::string> language = "en";
};

Device::Device(Options options)
    : mTexts(std::make_shared<RandomTexts>(options.seed)),
      mTimeline(std::make_shared<Timeline>()),
      mService(std::make_shared<Service>(
          mTimeline, Service::Options{.orderStep = options.orderStep,
                                      .unguessableText = [texts = mTexts] { return texts->next(); }})),
      mNetwork(std::make_shared<Network>(
          mTimeline, [service = mService](const auto& request) { return service->handle(request); })),
      mStores(std::make_shared<MemoryStores>()),
      mScreen(std::make_shared<Screen>(mTimeline)),
      mMainBundle(std::make_shared<SettableBundle>()),
      mLibraryBundle(std::make_shared<SettableBundle>()),
      mLocale(std::make_shared<SettableLocale>()) {
    describeLibrary();
    connectScreen();
    install(options.hasThreads);
}

void Device::describeLibrary() {
    mLibraryBundle->information = {{"CFBundleShortVersionString", std::string("1.0.0")},
                                   {"CFBundleVersion", std::string("1")},
                                   {"DTPlatformName", std::string("box")},
                                   {"DTPlatformVersion", std::string("1")}};
}

void Device::connectScreen() {
    mScreen->browse = [service = mService](const std::string& content,
                                           bool isAddress) -> std::optional<std::vector<Deed>> {
        if (!isAddress) return deedsOf(content);
        if (!content.starts_with("https://localhost:")) return std::nullopt;
        const auto handled = service->handle({.url = content});
        if (handled.isLost || !handled.reply.body) return std::nullopt;
        return deedsOf(*handled.reply.body);
    };
}

void Device::install(bool hasThreads) {
    const auto& real = realDevice();
    const auto threads = hasThreads ? makeRealDevice() : Platform{};  // which end with this device
    const auto queue = [&](Lane lane, const std::shared_ptr<WorkQueue>& realQueue) {
        return hasThreads ? realQueue : std::make_shared<TimelineWorkQueue>(mTimeline, lane);
    };
    auto platform = std::make_unique<Platform>(Platform{
        .urlSession = mNetwork->ordinarySession(),
        .backgroundUrlSession = mNetwork->backgroundSession(),
        .keyValueStores = mStores,
        .mainQueue = std::make_shared<TimelineMainQueue>(mTimeline),
        .serialQueue = queue(Lane::SERIAL, threads.serialQueue),
        .concurrentQueue = queue(Lane::CONCURRENT, threads.concurrentQueue),
        .mainBundle = mMainBundle,
        .libraryBundle = mLibraryBundle,
        .locale = mLocale,
        .dateFormatter = real.dateFormatter,
        .regularExpression = real.regularExpression,
        .characters = real.characters,
        .digest = real.digest,
        .base64 = real.base64,
        .uuid = std::make_shared<SettableUuid>([texts = mTexts] { return texts->next(); }),
        .clock = mTimeline,
        .windows = mScreen,
    });
    mPlatform = platform.get();
    mFormer = startOver(std::move(platform));
}

Device::~Device() {
    mKilled.clear();
    // The end of one request may begin another.
    while (mNetwork->open() > 0) {
        mNetwork->close();
        mTimeline->run();
    }
    mNetwork->close();
    mTimeline->clear();
    const auto own = startOver(std::move(mFormer));
    mTimeline->clear();  // what that has left
}

void Device::setLanguage(std::optional<std::string> code) { mLocale->language = std::move(code); }
void Device::removeScreen() { mPlatform->windows = nullptr; }

bool Device::logIn(const Person& person) {
    struct Login final : QuietDelegate {
        void onLogin(Result result) override { type = result->type; }
        void onVerify(Result result) override { type = result->type; }
        ResultType type = ResultType::UNKNOWN;
    };
    const auto login = std::make_shared<Login>();
    Kavio facade(login, "key", Kavio::EnvironmentType::TEST);
    facade.login(person.countryCode, person.phoneNumber);
    mTimeline->runUntil([&] { return !facade.isBusy(); });
    facade.verify("123456", person.country, person.countryCode, person.phoneNumber);
    mTimeline->runUntil([&] { return !facade.isBusy(); });
    return login->type == ResultType::SUCCESS;
}

bool Device::answerChallenge(const std::string& code) {
    const auto address = mScreen->content();
    if (!address.starts_with("https://")) return false;
    const auto answer = mService->submit(address, {{"code", code}});
    return answer && mScreen->navigate(*answer);
}

void Device::killProgram(std::unique_ptr<Kavio> facade) {
    std::vector<std::unique_ptr<Kavio>> facades;
    facades.push_back(std::move(facade));
    killProgram(std::move(facades));
}

void Device::killProgram(std::vector<std::unique_ptr<Kavio>> facades) {
    auto& killed = mKilled.emplace_back();
    killed.facades = std::move(facades);
    mTimeline->forget();
    mNetwork->forget();
    mScreen->forget();
    // The platform is made anew by the program that starts; what it is made of is the device itself.
    auto platform = std::make_unique<Platform>(*mPlatform);
    mPlatform = platform.get();
    killed.platform = startOver(std::move(platform), &killed.rest);
}

}  // namespace kavio::test
