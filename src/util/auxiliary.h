#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace kavio {

/// What the library knows about itself.
class Auxiliary {
public:
    Auxiliary() = delete;

    /// From the library's own bundle, not the host application's; absent if the bundle does not say.
    static std::optional<std::string> version();
    static std::optional<std::string> build();

    /// "1d 1h 1m 1.005s". Days, hours and minutes that are zero are left out.
    static std::string durationText(std::uint64_t milliseconds);
};

}  // namespace kavio
