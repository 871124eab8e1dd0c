#pragma once

#include <CLI/CLI.hpp>

#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

namespace kavio::command_line {

/// Absent unless the whole text is a number, and one that fits.
template <class T>
std::optional<T> numberFrom(std::string_view text) {
    T number{};
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    return read.ec == std::errc{} && read.ptr == end ? std::optional{number} : std::nullopt;
}

// What options with numbers accept. Left to itself, the command line library clamps numbers that are out of range and
// reads "010" as 8.

CLI::Validator wholeNumber(std::int64_t least = std::numeric_limits<std::int64_t>::min(),
                           std::int64_t most = std::numeric_limits<std::int64_t>::max());
/// The length of a list that the service may be asked for.
CLI::Validator listLength();
CLI::Validator coordinate();

}  // namespace kavio::command_line
