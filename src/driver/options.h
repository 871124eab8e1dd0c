#pragma once

#include <kavio/kavio.h>
#include <kavio/platform/linux.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kavio::driver {

/// A program's choices for the whole run: the first facade, and the device that the library sees.
struct Options {
    std::string apiKey = "demo-key";
    Kavio::EnvironmentType environment = Kavio::EnvironmentType::TEST;
    std::filesystem::path storeDirectory;
    std::optional<std::string> kavioKey;
    std::optional<std::string> bundleVersion;
    std::string connectTo;
    std::filesystem::path certificateAuthorities;
    bool withoutFacade = false;
};

/// Whether the text is "HOST:PORT".
bool isAddress(std::string_view text);

/// What the device's platform is told of the options. The program adds its own name.
LinuxPlatformOptions deviceOptions(const Options& options, std::shared_ptr<MainQueue> mainQueue);

}  // namespace kavio::driver
