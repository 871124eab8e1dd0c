#pragma once

#include <string>
#include <string_view>

namespace kavio::sandbox {

/// Whether what is shown includes tokens, codes, signatures and card numbers.
enum class Secrets { masked, shown };

/// A header's value, by its name in lower case.
std::string maskedHeader(std::string_view name, const std::string& value);

/// A body or a target without the secrets that its JSON members and query items have. It may have been cut.
std::string masked(std::string_view text);

}  // namespace kavio::sandbox
