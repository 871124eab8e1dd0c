#pragma once

#include <algorithm>
#include <array>
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

/// `names` as "A, B".
template <class Enum, std::size_t N>
constexpr std::array<EnumRow<Enum>, N> namedRows(const Enum (&values)[N], std::string_view names) {
    std::array<EnumRow<Enum>, N> rows{};
    for (std::size_t i = 0; i < N; ++i) {
        rows[i] = {values[i], names.substr(0, names.find(','))};
        names.remove_prefix(std::min(rows[i].text.size() + 2, names.size()));
    }
    return rows;
}

/// The rows of enumerators of `Enum` whose texts are their names.
#define KAVIO_ENUMERATORS(Enum, ...)                   \
    [] {                                               \
        using enum Enum;                               \
        return namedRows({__VA_ARGS__}, #__VA_ARGS__); \
    }()

/// Empty for a value that is not one of the enumerators.
template <class Row, std::size_t N>
constexpr std::string_view textOf(const std::array<Row, N>& rows, decltype(Row::value) value) {
    for (const auto& row : rows) {
        if (row.value == value) return row.text;
    }
    return {};
}

template <class Row, std::size_t N>
constexpr std::optional<decltype(Row::value)> withText(const std::array<Row, N>& rows, std::string_view text) {
    for (const auto& row : rows) {
        if (row.text == text) return row.value;
    }
    return std::nullopt;
}

template <class Row, std::size_t N>
constexpr std::optional<decltype(Row::value)> withCode(const std::array<Row, N>& rows, std::int64_t code) {
    const auto likely = static_cast<std::size_t>(code);  // most enumerators stand in the row of their code
    if (likely < N && static_cast<std::int64_t>(rows[likely].value) == code) return rows[likely].value;
    for (const auto& row : rows) {
        if (static_cast<std::int64_t>(row.value) == code) return row.value;
    }
    return std::nullopt;
}

}  // namespace kavio
