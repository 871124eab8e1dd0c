#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kavio {

/// The first and the last characters of a member's name as numbers. Up to 16 characters they are the whole name.
struct NameEnds {
    template <class Word>
    static constexpr std::uint64_t load(const char* from) {
        std::array<char, sizeof(Word)> bytes{};
        std::copy_n(from, sizeof(Word), bytes.begin());
        return std::bit_cast<Word>(bytes);
    }

    std::uint64_t first = 0;
    std::uint64_t last = 0;

    constexpr explicit NameEnds(std::string_view name) {
        const char* begin = name.data();
        const char* end = begin + name.size();
        if (name.size() >= 8) {
            first = load<std::uint64_t>(begin);
            last = load<std::uint64_t>(end - 8);
        } else if (name.size() >= 4) {
            first = load<std::uint32_t>(begin);
            last = load<std::uint32_t>(end - 4);
        } else if (!name.empty()) {
            first = load<std::uint8_t>(begin) << 8U | load<std::uint8_t>(begin + name.size() / 2);
            last = load<std::uint8_t>(end - 1);
        }
    }
    bool operator==(const NameEnds&) const = default;
};

/// Its upper bits are the good ones. Names can be made to collide; its users must limit what that costs.
constexpr std::uint32_t nameHash(std::string_view name) {
    const NameEnds ends(name);
    const auto mixed = ends.first * 0x9E3779B97F4A7C15U + std::rotl(ends.last, 29) + name.size();
    return static_cast<std::uint32_t>((mixed * 0xD6E8FEB86659FD93U) >> 32U);
}

inline bool isSameName(std::string_view a, std::string_view b) {
    return a.size() == b.size() && NameEnds(a) == NameEnds(b) && (a.size() <= 16 || a == b);
}

/// A member's name as a record writes it, hashed at compile time. Small enough to be passed in registers.
class Key {
public:
    template <std::size_t N>
    consteval Key(const char (&literal)[N])  // NOLINT(google-explicit-constructor): records write bare literals
        : mName(literal), mSize(N - 1), mHash(nameHash({literal, N - 1})) {}

    std::string_view name() const { return {mName, mSize}; }
    std::uint32_t hash() const { return mHash; }

private:
    const char* mName;
    std::uint32_t mSize;
    std::uint32_t mHash;
};

}  // namespace kavio
