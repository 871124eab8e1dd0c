#include "platform/default_platform.h"
#include "platform/linux/dictionary_bundle.h"
#include "platform/linux/icu.h"
#include "platform/linux/openssl.h"
#include "platform/linux/sqlite_stores.h"
#include "platform/linux/thread_queue.h"
#include "platform/linux/url_session.h"
#include "platform/linux/url_session_libraries.h"

#include <kavio/platform/linux.h>

#include <sys/utsname.h>

#include <ctime>
#include <memory>
#include <utility>

namespace kavio {
namespace {

constexpr std::size_t concurrentThreads = 64;  // made when needed

// The service is told which system it is called from.
std::string kernelRelease() {
    utsname system{};
    return uname(&system) == 0 ? system.release : "";
}

std::shared_ptr<KeyValueStores> makeStores(LinuxPlatformOptions& options, const Bundle& host,
                                           const std::shared_ptr<const Digest>& digest) {
    auto folder = options.storeDirectory.empty()
                      ? defaultStoreFolder(host.informationText("CFBundleIdentifier"), *digest)
                      : std::move(options.storeDirectory);
    return makeSqliteStores(std::move(folder), digest, std::move(options.onStoreDamaged));
}

std::shared_ptr<Bundle> makeLibraryBundle() {
    return std::make_shared<DictionaryBundle>(DictionaryBundle::Information{
        {"CFBundleShortVersionString", std::string(KAVIO_VERSION)},
        {"CFBundleVersion", std::string(KAVIO_BUILD_NUMBER)},
        {"DTPlatformName", std::string("linux")},
        {"DTPlatformVersion", kernelRelease()},
    });
}

std::chrono::nanoseconds read(clockid_t clock) {
    timespec time{};
    ::clock_gettime(clock, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

class SystemClock final : public Clock {
public:
    Date now() const override { return Date(read(CLOCK_REALTIME)); }
    std::chrono::nanoseconds uptime() const override { return read(CLOCK_BOOTTIME); }  // keeps counting while suspended
};

}  // namespace

Platform makeLinuxPlatform(LinuxPlatformOptions options) {
    initializeLibraries();  // first, as the digest uses OpenSSL
    const auto digest = makeOpensslDigest();
    const auto mainBundle =
        std::make_shared<DictionaryBundle>(std::move(options.information), std::move(options.localizedStrings));
    return {
        .urlSession = makeUrlSession(options.session),
        .backgroundUrlSession = makeBackgroundUrlSession(options.session),
        .keyValueStores = makeStores(options, *mainBundle, digest),
        .mainQueue = options.mainQueue ? std::move(options.mainQueue) : std::make_shared<RunLoop>(),
        .serialQueue = makeThreadQueue("serial", 1),
        .concurrentQueue = makeThreadQueue("concurent", concurrentThreads),
        .mainBundle = mainBundle,
        .libraryBundle = makeLibraryBundle(),
        .locale = makeIcuLocale(),
        .dateFormatter = makeIcuDateFormatter(),
        .regularExpression = makeIcuRegularExpression(),
        .characters = makeIcuCharacters(),
        .digest = digest,
        .base64 = makeOpensslBase64(),
        .uuid = makeOpensslUuid(),
        .clock = std::make_shared<SystemClock>(),
        .windows = nullptr,
    };
}

std::unique_ptr<Platform> makeDefaultPlatform() { return std::make_unique<Platform>(makeLinuxPlatform()); }

}  // namespace kavio
