#include "driver/options.h"

#include <charconv>
#include <cstdint>
#include <utility>

namespace kavio::driver {

bool isAddress(std::string_view text) {
    const auto colon = text.rfind(':');
    if (colon == std::string_view::npos || colon == 0) return false;
    std::uint16_t port = 0;
    const auto* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data() + colon + 1, end, port);
    return error == std::errc() && rest == end && port != 0;
}

LinuxPlatformOptions deviceOptions(const Options& options, std::shared_ptr<MainQueue> mainQueue) {
    LinuxPlatformOptions device;
    device.session.connectTo = options.connectTo;
    device.session.certificateAuthorities = options.certificateAuthorities;
    device.storeDirectory = options.storeDirectory;
    if (options.kavioKey) device.information.emplace("KavioKey", *options.kavioKey);
    if (options.bundleVersion) device.information.emplace("CFBundleVersion", *options.bundleVersion);
    device.mainQueue = std::move(mainQueue);
    return device;
}

}  // namespace kavio::driver
