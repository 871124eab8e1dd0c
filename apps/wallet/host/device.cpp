#include "device.h"

#include "host/output.h"

#include <fmt/format.h>

#include <utility>

namespace kavio::wallet {

LinuxPlatformOptions deviceOptions(const Options& options, std::shared_ptr<MainQueue> mainQueue) {
    LinuxPlatformOptions device;
    device.session.connectTo = options.connectTo;
    device.session.certificateAuthorities = options.certificateAuthorities;
    device.storeDirectory = options.storeDirectory;
    if (options.kavioKey) device.information.emplace("KavioKey", *options.kavioKey);
    if (options.bundleVersion) device.information.emplace("CFBundleVersion", *options.bundleVersion);
    device.mainQueue = std::move(mainQueue);
    device.onStoreDamaged = [](const std::filesystem::path& damaged, const std::filesystem::path& setAside) {
        writeText(stderr, fmt::format("kavio-wallet: {} was damaged; {}\n", damaged.string(),
                                      setAside.empty() ? "it could not be moved, so changes made now may be lost"
                                                       : "it has been kept as " + setAside.string()));
    };
    return device;
}

}  // namespace kavio::wallet
