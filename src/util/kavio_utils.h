#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kavio {

/// Text helpers. Safe from any thread.
class KavioUtils {
public:
    KavioUtils() = delete;

    /// Every match of `pattern` anywhere in `text`, in order; none for an invalid pattern.
    static std::vector<std::string> matches(std::string_view pattern, std::string_view text);
};

}  // namespace kavio
