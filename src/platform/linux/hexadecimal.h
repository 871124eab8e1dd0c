#pragma once

#include <cstdint>
#include <string>

namespace kavio {

/// Two upper-case digits.
inline void appendHexadecimal(std::string& text, std::uint8_t byte) {
    constexpr auto digits = "0123456789ABCDEF";
    text += digits[byte >> 4];
    text += digits[byte & 0x0F];
}

}  // namespace kavio
