#include <kavio/platform/linux.h>
#include <kavio/platform/run_loop.h>
#include <kavio/testing/conformance/device.h>
#include <kavio/testing/conformance/queues.h>
#include <kavio/testing/conformance/stores.h>
#include <kavio/testing/device.h>

#include <sys/resource.h>

#include <csignal>

namespace kavio::test {
namespace {

const std::map<std::string, Bundle::Value> information{{"text", std::string("t")}, {"number", std::int64_t{7}}};
const std::map<std::string, std::string> translations{{"hello", "hallo"}};

/// No file can grow, as on a full disk.
void fillDisk(Platform&, bool isFull) {
    ::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = isFull ? 0 : limit.rlim_max;
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

const Port linuxPort{
    .name = "Linux",
    .start =
        [](const std::filesystem::path& folder) {
            LinuxPlatformOptions options;
            options.storeDirectory = folder / "store";
            options.information.insert(information.begin(), information.end());
            options.localizedStrings.insert(translations.begin(), translations.end());
            return std::make_shared<Platform>(makeLinuxPlatform(std::move(options)));
        },
    .runUntil =
        [](Platform& platform, const std::function<bool()>& done) {
            return dynamic_cast<RunLoop&>(*platform.mainQueue).runUntil(done, patience);
        },
    .information = information,
    .translations = translations,
    .sharesStores = true,
    .failWrites = fillDisk,
};

/// The folder's device, on which the program starts again. Another folder is another device.
std::shared_ptr<Device> deviceIn(const std::filesystem::path& folder) {
    static std::filesystem::path last;
    static std::shared_ptr<Device> device;
    if (std::exchange(last, folder) == folder) {
        device->killProgram();
    } else {
        device.reset();  // only one at a time
        device = std::make_shared<Device>();
    }
    return device;
}

Port boxPort() {
    return {
        .name = "Box",
        .start =
            [](const std::filesystem::path& folder) {
                const auto device = deviceIn(folder);
                for (const auto& [key, value] : information) device->mainBundle().information[key] = value;
                for (const auto& [key, text] : translations) device->mainBundle().strings[key] = text;
                auto platform = std::make_shared<Platform>(device->platform());
                platform->serialQueue = platform->concurrentQueue = nullptr;  // lanes of the timeline
                return platform;
            },
        .runUntil =
            [](Platform& platform, const std::function<bool()>& done) {
                return dynamic_cast<Timeline&>(*platform.clock).runUntil(done);
            },
        .information = information,
        .translations = translations,
        .failWrites = [](Platform& platform,
                         bool fail) { dynamic_cast<MemoryStores&>(*platform.keyValueStores).refuseWrites(fail); },
    };
}

Port boxPortWithThreads() {
    return {
        .name = "BoxWithThreads",
        .start =
            [](const std::filesystem::path&) {
                const Device device({.hasThreads = true});
                auto platform = std::make_shared<Platform>();
                platform->serialQueue = device.platform().serialQueue;
                platform->concurrentQueue = device.platform().concurrentQueue;
                return platform;
            },
    };
}

INSTANTIATE_TEST_SUITE_P(Linux, DeviceConformance, testing::Values(linuxPort));
INSTANTIATE_TEST_SUITE_P(Linux, MainQueueConformance, testing::Values(linuxPort));
INSTANTIATE_TEST_SUITE_P(Linux, WorkQueueConformance, testing::Values(linuxPort));
INSTANTIATE_TEST_SUITE_P(Linux, StoresConformance, testing::Values(linuxPort));

INSTANTIATE_TEST_SUITE_P(Box, DeviceConformance, testing::Values(boxPort()));
INSTANTIATE_TEST_SUITE_P(Box, MainQueueConformance, testing::Values(boxPort()));
INSTANTIATE_TEST_SUITE_P(Box, WorkQueueConformance, testing::Values(boxPortWithThreads()));
INSTANTIATE_TEST_SUITE_P(Box, StoresConformance, testing::Values(boxPort()));

}  // namespace
}  // namespace kavio::test
