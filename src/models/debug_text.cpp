#include "models/debug_text.h"

#include "models/date_text.h"

#include <array>
#include <charconv>
#include <cmath>

namespace kavio {

std::string debugText(std::int64_t value) { return std::to_string(value); }

std::string quoted(std::string_view text) {
    constexpr std::string_view escaped = "\n\t\r\"\\", letters = "ntr\"\\";
    std::string quoted = "\"";
    for (const char c : text) {
        const auto position = escaped.find(c);
        if (position != escaped.npos) quoted += '\\';
        quoted += position == escaped.npos ? c : letters[position];
    }
    return quoted + '"';
}

std::string wrapped(std::string_view text) { return std::string("Optional(").append(text).append(")"); }

std::string debugText(const std::optional<std::string>& value) { return value ? wrapped(quoted(*value)) : "nil"; }

std::string debugText(double value) {
    // Plain digits for magnitudes that people write that way, and an exponent beyond them.
    const auto magnitude = std::abs(value);
    const bool isPlain = magnitude == 0 || (magnitude >= 1e-4 && magnitude < 1e16);
    std::array<char, 40> digits{};
    const auto end = std::to_chars(digits.begin(), digits.end(), value,
                                   isPlain ? std::chars_format::fixed : std::chars_format::scientific);
    return {digits.begin(), end.ptr};
}

std::string debugText(Date value) { return DateText::debug(value); }

DebugText& DebugText::add(std::string_view label, std::string_view value, std::string_view end) {
    mText.append("\n\t").append(label).append(value).append(end);
    return *this;
}

}  // namespace kavio
