#include "support/fakes/fake_device.h"

#include "platform/current_platform.h"
#include "platform/linux/icu.h"
#include "platform/linux/openssl.h"
#include "platform/linux/thread_queue.h"

#include <cstdio>
#include <utility>

namespace kavio::test {

std::optional<Bundle::Value> FakeBundle::informationValue(std::string_view key) const {
    const std::lock_guard lock(mMutex);
    const auto found = mInformation.find(key);
    if (found == mInformation.end()) return std::nullopt;
    return found->second;
}

std::string FakeBundle::localizedString(std::string_view key) const {
    const std::lock_guard lock(mMutex);
    const auto found = mStrings.find(key);
    return found == mStrings.end() ? std::string(key) : found->second;
}

void FakeBundle::setInformation(const std::string& key, std::optional<Value> value) {
    const std::lock_guard lock(mMutex);
    mInformation.erase(key);
    if (value) mInformation.emplace(key, std::move(*value));
}

void FakeBundle::setLocalizedString(const std::string& key, const std::string& text) {
    const std::lock_guard lock(mMutex);
    mStrings.insert_or_assign(key, text);
}

std::optional<std::string> FakeLocale::languageCode() const {
    const std::lock_guard lock(mMutex);
    return mLanguage;
}

std::optional<std::string> FakeLocale::regionName(std::string_view code) const {
    return makeIcuLocale()->regionName(code);
}

void FakeLocale::setLanguageCode(std::optional<std::string> language) {
    const std::lock_guard lock(mMutex);
    mLanguage = std::move(language);
}

std::string FakeUuid::make() const {
    char text[37];
    std::snprintf(text, sizeof text, "00000000-0000-4000-8000-%012X", ++mMade);
    return text;
}

FakeDevice::FakeDevice() {
    libraryBundle->setInformation("CFBundleShortVersionString", "1.2.3");
    libraryBundle->setInformation("CFBundleVersion", "45");
}

Platform FakeDevice::platform() const {
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
        .uuid = uuid,
        .clock = clock,
        .windows = nullptr,
    };
}

InstalledPlatform::InstalledPlatform(Platform platform)
    : mFormer(exchangePlatform(std::make_unique<Platform>(std::move(platform)))) {}

InstalledPlatform::~InstalledPlatform() { exchangePlatform(std::move(mFormer)); }

}  // namespace kavio::test
