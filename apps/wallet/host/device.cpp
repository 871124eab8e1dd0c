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
    device.information.emplace("CFBundleIdentifier", std::string("kavio-wallet"));  // whatever name it is started under
    if (options.kavioKey) device.information.emplace("KavioKey", *options.kavioKey);
    if (options.bundleVersion) device.information.emplace("CFBundleVersion", *options.bundleVersion);
    device.mainQueue = std::move(mainQueue);
    device.onStoreDamaged = [](const std::filesystem::path& damaged, const std::filesystem::path& setAside) {
        writeText(stderr, setAside.empty()
                              ? fmt::format("kavio-wallet: {} cannot be used, so changes made now will be lost\n",
                                            damaged.string())
                              : fmt::format("kavio-wallet: {} was damaged; it is kept for a week as {}\n",
                                            damaged.string(), setAside.string()));
    };
    return device;
}

}  // namespace kavio::wallet
