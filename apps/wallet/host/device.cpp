#include "device.h"

#include "host/output.h"

#include <fmt/format.h>

#include <utility>

namespace kavio::wallet {

LinuxPlatformOptions deviceOptions(const Options& options, std::shared_ptr<MainQueue> mainQueue) {
    auto device = driver::deviceOptions(options, std::move(mainQueue));
    device.information.emplace("CFBundleIdentifier", std::string("kavio-wallet"));  // whatever name it is started under
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
