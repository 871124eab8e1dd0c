#pragma once

#include "platform/current_platform.h"
#include "platform/linux/dictionary_bundle.h"
#include "platform/linux/icu.h"
#include "platform/linux/openssl.h"
#include "platform/linux/thread_queue.h"
#include "support/fakes/fake_clock.h"
#include "support/fakes/fake_main_queue.h"
#include "support/fakes/fake_url_session.h"
#include "support/fakes/memory_stores.h"

#include <kavio/platform/platform.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace kavio::test {

/// A bundle whose values a test sets.
struct FakeBundle final : Bundle {
    std::optional<Value> informationValue(std::string_view key) const override {
        return DictionaryBundle(information).informationValue(key);
    }
    std::string localizedString(std::string_view key) const override {
        return DictionaryBundle({}, strings).localizedString(key);
    }

    DictionaryBundle::Information information;
    DictionaryBundle::Strings strings;
};

/// A user whose language the test chooses; regions have ICU's names.
struct FakeLocale final : Locale {
    std::optional<std::string> languageCode() const override { return language; }
    std::optional<std::string> regionName(std::string_view code) const override {
        return makeIcuLocale()->regionName(code);
    }

    std::optional<std::string> language = "en";
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

    Platform platform() const {
        return {
            .urlSession = urlSession,
            .backgroundUrlSession = backgroundUrlSession,
            .keyValueStores = stores,
            .mainQueue = mainQueue,
            .serialQueue = makeThreadQueue("serial", 1),
            .concurrentQueue = makeThreadQueue("concurent", 4),
            .mainBundle = mainBundle,
            .libraryBundle = libraryBundle,
            .locale = locale,
            .dateFormatter = makeIcuDateFormatter(),
            .regularExpression = makeIcuRegularExpression(),
            .characters = makeIcuCharacters(),
            .digest = makeOpensslDigest(),
            .base64 = makeOpensslBase64(),
            .uuid = makeOpensslUuid(),
            .clock = clock,
            .windows = nullptr,
        };
    }
};

}  // namespace kavio::test
