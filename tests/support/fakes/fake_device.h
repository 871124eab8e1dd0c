#pragma once

#include "platform/linux/dictionary_bundle.h"
#include "platform/linux/icu.h"
#include "support/fakes/fake_clock.h"
#include "support/fakes/fake_main_queue.h"
#include "support/fakes/fake_url_session.h"
#include "support/fakes/memory_stores.h"

#include <kavio/platform/platform.h>

#include <memory>
#include <optional>
#include <string>

namespace kavio::test {

/// A bundle whose values a test sets and takes away.
class FakeBundle final : public Bundle {
public:
    std::optional<Value> informationValue(std::string_view key) const override {
        return DictionaryBundle(mInformation).informationValue(key);
    }
    std::string localizedString(std::string_view key) const override {
        return DictionaryBundle({}, mStrings).localizedString(key);
    }

    void setInformation(const std::string& key, std::optional<Value> value) {
        mInformation.erase(key);
        if (value) mInformation.emplace(key, std::move(*value));
    }
    void setLocalizedString(const std::string& key, const std::string& text) { mStrings[key] = text; }

private:
    DictionaryBundle::Information mInformation;
    DictionaryBundle::Strings mStrings;
};

/// A user who speaks a language of the test's choice; regions are named as ICU names them.
class FakeLocale final : public Locale {
public:
    std::optional<std::string> languageCode() const override { return mLanguage; }
    std::optional<std::string> regionName(std::string_view code) const override {
        return makeIcuLocale()->regionName(code);
    }

    void setLanguageCode(std::optional<std::string> language) { mLanguage = std::move(language); }

private:
    std::optional<std::string> mLanguage = "en";
};

/// A device whose world is scripted: network, time, store, main thread and settings. Its work queues, dates, texts,
/// digests and UUIDs are the real ones.
struct FakeDevice {
    std::shared_ptr<FakeClock> clock = std::make_shared<FakeClock>();
    std::shared_ptr<FakeMainQueue> mainQueue = std::make_shared<FakeMainQueue>(clock);
    std::shared_ptr<FakeUrlSession> urlSession = std::make_shared<FakeUrlSession>();
    std::shared_ptr<FakeBackgroundUrlSession> backgroundUrlSession = std::make_shared<FakeBackgroundUrlSession>();
    std::shared_ptr<MemoryStores> stores = std::make_shared<MemoryStores>();
    std::shared_ptr<FakeBundle> mainBundle = std::make_shared<FakeBundle>();
    std::shared_ptr<FakeBundle> libraryBundle = std::make_shared<FakeBundle>();
    std::shared_ptr<FakeLocale> locale = std::make_shared<FakeLocale>();

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
