#pragma once

#include <kavio/kavio.h>

#include <filesystem>
#include <optional>
#include <string>

namespace kavio::wallet {

/// The user's choices for the whole run: the first facade, and the device that the library sees.
struct Options {
    std::string apiKey = "demo-key";
    Kavio::EnvironmentType environment = Kavio::EnvironmentType::TEST;
    std::filesystem::path storeDirectory;
    std::optional<std::string> kavioKey;
    std::optional<std::string> bundleVersion;
    std::string connectTo;
    std::filesystem::path certificateAuthorities;
    bool withoutFacade = false;
    bool withWindow = false;
};

}  // namespace kavio::wallet
