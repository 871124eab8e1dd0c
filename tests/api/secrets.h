#pragma once

#include <cstdint>

namespace kavio::test {

constexpr std::int64_t secret = 4000001234567899;
constexpr const char* secretText = "4000001234567899";
constexpr const char* shortSecretText = "73917391";  // finds room within a string

}  // namespace kavio::test
