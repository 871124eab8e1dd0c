#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kavio {

template <class Word>
constexpr std::uint64_t loadWord(const char* from) {
    std::array<char, sizeof(Word)> bytes{};
    std::copy_n(from, sizeof(Word), bytes.begin());
    return std::bit_cast<Word>(bytes);
}

/// Hash of a member's name, good in its upper bits. It looks at the length and at both ends only: names of records
/// differ there, and a reply made of names that do not is held in check by the bounded size of the table.
constexpr std::uint64_t keyHash(std::string_view name) {
    const char* begin = name.data();
    const char* end = begin + name.size();
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    if (name.size() >= 8) {
        first = loadWord<std::uint64_t>(begin);
        last = loadWord<std::uint64_t>(end - 8);
    } else if (name.size() >= 4) {
        first = loadWord<std::uint32_t>(begin);
        last = loadWord<std::uint32_t>(end - 4);
    } else if (!name.empty()) {
        first = loadWord<std::uint8_t>(begin) << 8U | loadWord<std::uint8_t>(begin + name.size() / 2);
        last = loadWord<std::uint8_t>(end - 1);
    }
    return (first * 0x9E3779B97F4A7C15U + std::rotl(last, 29) + name.size()) * 0xD6E8FEB86659FD93U;
}

/// A member's name as a record writes it, hashed while compiling.
struct Key {
    template <std::size_t N>
    consteval Key(const char (&literal)[N])  // NOLINT(google-explicit-constructor): keys are written as bare literals
        : name(literal, N - 1), hash(keyHash(name)) {}

    std::string_view name;
    std::uint64_t hash;
};

}  // namespace kavio
