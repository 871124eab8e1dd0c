#pragma once

#include <unicode/unistr.h>

#include <string>
#include <string_view>

namespace kavio {

/// Ill-formed bytes become U+FFFD.
inline icu::UnicodeString toIcu(std::string_view text) {
    return icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
}

inline std::string fromIcu(const icu::UnicodeString& text) {
    std::string utf8;
    return text.toUTF8String(utf8);
}

}  // namespace kavio
