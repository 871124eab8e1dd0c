#pragma once

#include <cstddef>
#include <string_view>

namespace kavio {

/// A member's name as a record writes it.
class Key {
public:
    template <std::size_t N>
    consteval Key(const char (&literal)[N])  // NOLINT(google-explicit-constructor): records write bare literals
        : mName(literal, N - 1) {
        // Shapes tell keys apart by their addresses, and "a" may share its own with the beginning of "a\0b".
        if (mName.find('\0') != std::string_view::npos) throw "the name holds a NUL";
    }

    std::string_view name() const { return mName; }

private:
    std::string_view mName;
};

}  // namespace kavio
