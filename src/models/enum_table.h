#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace kavio {

/// An enumeration and its texts, one row per enumerator.
template <class Enum>
struct EnumRow {
    Enum value;
    std::string_view text;
};

/// Empty for a value that is not one of the enumerators.
template <class Enum, std::size_t N>
constexpr std::string_view textOf(const EnumRow<Enum> (&rows)[N], Enum value) {
    for (const auto& row : rows) {
        if (row.value == value) return row.text;
    }
    return {};
}

template <class Enum, std::size_t N>
constexpr std::optional<Enum> withText(const EnumRow<Enum> (&rows)[N], std::string_view text) {
    for (const auto& row : rows) {
        if (row.text == text) return row.value;
    }
    return std::nullopt;
}

template <class Enum, std::size_t N>
constexpr std::optional<Enum> withCode(const EnumRow<Enum> (&rows)[N], std::int64_t code) {
    for (const auto& row : rows) {
        if (static_cast<std::int64_t>(row.value) == code) return row.value;
    }
    return std::nullopt;
}

}  // namespace kavio
