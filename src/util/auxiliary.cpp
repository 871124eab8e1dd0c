#include "util/auxiliary.h"

#include <kavio/platform/platform.h>

namespace kavio {

std::optional<std::string> Auxiliary::version() {
    return Platform::current().libraryBundle->informationText("CFBundleShortVersionString");
}

std::optional<std::string> Auxiliary::build() {
    return Platform::current().libraryBundle->informationText("CFBundleVersion");
}

std::string Auxiliary::durationText(std::uint64_t milliseconds) {
    const auto seconds = milliseconds / 1000;
    const auto days = seconds / 86'400;
    const auto hours = seconds / 3600 % 24;
    const auto minutes = seconds / 60 % 60;

    std::string text;
    if (days > 0) text += std::to_string(days) + "d ";
    if (hours > 0) text += std::to_string(hours) + "h ";
    if (minutes > 0) text += std::to_string(minutes) + "m ";
    const auto fraction = std::to_string(1000 + milliseconds % 1000).substr(1);  // three digits, with leading zeros
    return text + std::to_string(seconds % 60) + "." + fraction + "s";
}

}  // namespace kavio
