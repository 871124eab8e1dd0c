#pragma once

#include "support/fakes/fake_clock.h"
#include "support/fakes/fake_main_queue.h"
#include "support/fakes/fake_url_session.h"
#include "support/fakes/memory_stores.h"

#include <kavio/platform/platform.h>

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace kavio::test {

/// A bundle whose values a test sets and takes away.
class FakeBundle final : public Bundle {
public:
    std::optional<Value> informationValue(std::string_view key) const override;
    std::string localizedString(std::string_view key) const override;

    void setInformation(const std::string& key, std::optional<Value> value);
    void setLocalizedString(const std::string& key, const std::string& text);

private:
    mutable std::mutex mMutex;
    std::map<std::string, Value, std::less<>> mInformation;
    std::map<std::string, std::string, std::less<>> mStrings;
};

/// A user who speaks `language`; regions are named as ICU names them in English.
class FakeLocale final : public Locale {
public:
    std::optional<std::string> languageCode() const override;
    std::optional<std::string> regionName(std::string_view code) const override;

    void setLanguageCode(std::optional<std::string> language);

private:
    mutable std::mutex mMutex;
    std::optional<std::string> mLanguage = "en";
};

/// UUIDs that are no surprise: "00000000-0000-4000-8000-000000000001" is the first, then …0002.
class FakeUuid final : public Uuid {
public:
    std::string make() const override;

private:
    mutable std::atomic<unsigned> mMade = 0;
};

/// A device whose world is scripted: network, time, store, main thread and settings. Its work queues, dates, texts and
/// digests are the real ones.
struct FakeDevice {
    std::shared_ptr<FakeClock> clock = std::make_shared<FakeClock>();
    std::shared_ptr<FakeMainQueue> mainQueue = std::make_shared<FakeMainQueue>(clock);
    std::shared_ptr<FakeUrlSession> urlSession = std::make_shared<FakeUrlSession>();
    std::shared_ptr<FakeBackgroundUrlSession> backgroundUrlSession = std::make_shared<FakeBackgroundUrlSession>();
    std::shared_ptr<MemoryStores> stores = std::make_shared<MemoryStores>();
    std::shared_ptr<FakeBundle> mainBundle = std::make_shared<FakeBundle>();
    std::shared_ptr<FakeBundle> libraryBundle = std::make_shared<FakeBundle>();
    std::shared_ptr<FakeLocale> locale = std::make_shared<FakeLocale>();
    std::shared_ptr<FakeUuid> uuid = std::make_shared<FakeUuid>();

    FakeDevice();
    Platform platform() const;
};

/// Makes `platform` the process's platform for as long as this lives, then puts the former one back.
class InstalledPlatform {
public:
    explicit InstalledPlatform(Platform platform);
    ~InstalledPlatform();
    InstalledPlatform(const InstalledPlatform&) = delete;
    InstalledPlatform& operator=(const InstalledPlatform&) = delete;

private:
    std::unique_ptr<Platform> mFormer;
};

}  // namespace kavio::test
