#pragma once

#include <string>
#include <string_view>

namespace kavio {

/// The same text without the things that would make the parser refuse it whole, although perhaps no record reads them:
/// an integer beyond 64 bits is spelled as a double, a number too large for a double becomes a list in a list, which no
/// record reads, and half of a surrogate pair becomes U+FFFD.
std::string toleratedText(std::string_view json);

}  // namespace kavio
