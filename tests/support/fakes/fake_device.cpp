#include "support/fakes/fake_device.h"

#include "platform/current_platform.h"
#include "platform/linux/openssl.h"
#include "platform/linux/thread_queue.h"

#include <utility>

namespace kavio::test {

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
        .uuid = makeOpensslUuid(),
        .clock = clock,
        .windows = nullptr,
    };
}

InstalledPlatform::InstalledPlatform(Platform platform)
    : mFormer(exchangePlatform(std::make_unique<Platform>(std::move(platform)))) {}

InstalledPlatform::~InstalledPlatform() { exchangePlatform(std::move(mFormer)); }

}  // namespace kavio::test
