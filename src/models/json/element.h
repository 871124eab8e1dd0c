#pragma once

#include "models/json/json_types.h"

#include <kavio/date.h>

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kavio {

/// Where the JSON library keeps a value. Its header is large, so ours do not include it.
struct Element {
    const void* document = nullptr;
    std::size_t index = 0;
};

/// Types that are read without any help of their own.
template <class T>
concept SimpleValue = std::same_as<T, bool> || std::same_as<T, std::string> || std::same_as<T, std::string_view> ||
    std::same_as<T, double> || std::same_as<T, float> || std::same_as<T, std::int32_t> ||
    std::same_as<T, std::int64_t> || std::same_as<T, std::uint32_t> || std::same_as<T, std::uint64_t> ||
    std::same_as<T, Date> || std::same_as<T, JsonObject> || std::same_as<T, JsonValue>;

}  // namespace kavio
