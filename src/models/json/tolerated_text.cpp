#include "models/json/tolerated_text.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>

namespace kavio {
namespace {

constexpr std::string_view digits = "0123456789";

template <class Integer>
bool holds(std::string_view literal) {
    Integer value = 0;
    return std::from_chars(literal.data(), literal.data() + literal.size(), value).ec == std::errc();
}

std::string_view takeDigits(std::string_view& rest) {
    const auto taken = rest.substr(0, rest.find_first_not_of(digits));
    rest.remove_prefix(taken.size());
    return taken;
}

/// Whether the literal is a JSON number whose value is too large for a double.
bool isTooLarge(std::string_view literal) {
    auto rest = literal;
    if (rest.starts_with('-')) rest.remove_prefix(1);
    const auto whole = takeDigits(rest);
    if (whole.empty() || (whole.size() > 1 && whole.front() == '0')) return false;
    std::string_view fraction;
    if (rest.starts_with('.')) {
        rest.remove_prefix(1);
        fraction = takeDigits(rest);
        if (fraction.empty()) return false;
    }
    // The decimal exponent of the first significant digit.
    auto magnitude = static_cast<std::int64_t>(whole.size());
    if (whole == "0")
        magnitude = -static_cast<std::int64_t>(std::min(fraction.find_first_not_of('0'), fraction.size()));
    if (rest.starts_with('e') || rest.starts_with('E')) {
        rest.remove_prefix(1);
        const bool isNegative = rest.starts_with('-');
        if (isNegative || rest.starts_with('+')) rest.remove_prefix(1);
        const auto exponent = takeDigits(rest);
        if (exponent.empty()) return false;
        std::int64_t value = 0;
        const auto* const end = exponent.data() + exponent.size();
        if (std::from_chars(exponent.data(), end, value).ec != std::errc()) value = INT64_MAX / 2;
        magnitude += isNegative ? -value : value;
    }
    double value = 0;
    const auto* const end = literal.data() + literal.size();
    return rest.empty() && magnitude > 0 &&
           std::from_chars(literal.data(), end, value).ec == std::errc::result_out_of_range;
}

/// The code unit of an escape "\uXXXX" at the start of `text`; absent where there is none.
std::optional<unsigned> escapedUnit(std::string_view text) {
    if (text.size() < 6 || !text.starts_with("\\u")) return std::nullopt;
    unsigned unit = 0;
    const auto* const end = text.data() + 6;
    const auto read = std::from_chars(text.data() + 2, end, unit, 16);
    return read.ec == std::errc() && read.ptr == end ? std::optional(unit) : std::nullopt;
}

bool isHigh(std::optional<unsigned> unit) { return unit && *unit >= 0xD800 && *unit <= 0xDBFF; }
bool isLow(std::optional<unsigned> unit) { return unit && *unit >= 0xDC00 && *unit <= 0xDFFF; }

/// How much of `text`, which begins with a backslash, is one escape: a surrogate pair counts as one.
std::size_t escapeLength(std::string_view text) {
    const auto unit = escapedUnit(text);
    if (!unit) return std::min<std::size_t>(2, text.size());
    return isHigh(unit) && isLow(escapedUnit(text.substr(6))) ? 12 : 6;
}

/// Copies the text that `rest` begins with, including its quotes.
void copyText(std::string_view& rest, std::string& result) {
    const auto copy = [&](std::size_t size) {
        result += rest.substr(0, size);
        rest.remove_prefix(std::min(size, rest.size()));
    };
    copy(1);
    for (;;) {
        copy(rest.find_first_of("\"\\"));
        if (!rest.starts_with('\\')) return copy(1);
        const auto unit = escapedUnit(rest);
        const auto length = escapeLength(rest);
        if (length == 6 && (isHigh(unit) || isLow(unit))) {
            result += "\\uFFFD";
            rest.remove_prefix(length);
        } else {
            copy(length);
        }
    }
}

void copyNumber(std::string_view& rest, std::string& result) {
    const auto literal = rest.substr(0, rest.find_first_not_of("+-.0123456789Ee"));
    rest.remove_prefix(literal.size());
    if (isTooLarge(literal)) {
        result += "[[]]";
        return;
    }
    result += literal;
    const bool isInteger = literal.find_first_of(".Ee") == std::string_view::npos;
    if (isInteger && !holds<std::int64_t>(literal) && !holds<std::uint64_t>(literal)) result += "e0";
}

}  // namespace

std::string toleratedText(std::string_view json) {
    std::string result;
    result.reserve(json.size() + json.size() / 8);
    while (!json.empty()) {
        const auto plain = std::min(json.find_first_of("\"-0123456789"), json.size());
        result += json.substr(0, plain);
        json.remove_prefix(plain);
        if (json.empty()) break;
        json.front() == '"' ? copyText(json, result) : copyNumber(json, result);
    }
    return result;
}

}  // namespace kavio
