#pragma once

#include <cstddef>
#include <string_view>

namespace kavio {

/// A member's name as a record writes it.
class Key {
public:
    template <std::size_t N>
    consteval Key(const char (&literal)[N])  // NOLINT(google-explicit-constructor): records write bare literals
        : mName(literal, N - 1) {}

    std::string_view name() const { return mName; }

private:
    std::string_view mName;
};

}  // namespace kavio
