#pragma once

#include "models/json/json_types.h"

#include <kavio/date.h>

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace kavio {

/// Where the JSON library keeps a value. Its header is large, so ours do not include it.
struct Element {
    const void* document = nullptr;
    std::size_t index = 0;
};

/// What the JSON library has made of a text, in the format that it documents: a word for each value, whose upper byte
/// is its type; a number's value in the word after that; and texts, each after its size. Members are read from here if
/// they are as nearly all are, and by the library's own functions otherwise.
struct Tape {
    const std::uint64_t* words = nullptr;
    const char* texts = nullptr;

    static constexpr int typeShift = 56;

    char type(std::size_t index) const { return static_cast<char>(words[index] >> typeShift); }
    std::uint64_t payload(std::size_t index) const { return words[index] & ((std::uint64_t{1} << typeShift) - 1); }
    /// Only of a text: its size, as four bytes, and the text.
    const char* sized(std::size_t index) const { return texts + payload(index); }
    std::string_view text(std::size_t index) const {
        std::uint32_t size = 0;
        std::memcpy(&size, sized(index), sizeof size);
        return {sized(index) + sizeof size, size};
    }
    /// Of the elements or members of an array or object; more than sixteen million count as so many.
    std::size_t count(std::size_t index) const { return static_cast<std::size_t>(payload(index) >> 32); }
    /// The index after a value: an object or array says where it ends, and a number has a word more.
    std::size_t after(std::size_t index) const {
        switch (type(index)) {
            case '{':
            case '[':
                return static_cast<std::uint32_t>(words[index]);
            case 'l':
            case 'u':
            case 'd':
                return index + 2;
            default:
                return index + 1;
        }
    }

    // Each says whether the value is of that type, spelled as it mostly is.

    bool read(std::size_t index, bool& value) const {
        value = type(index) == 't';
        return value || type(index) == 'f';
    }
    bool read(std::size_t index, std::int64_t& value) const {
        value = static_cast<std::int64_t>(words[index + 1]);
        return type(index) == 'l';
    }
    bool read(std::size_t index, std::int32_t& value) const {
        const auto number = static_cast<std::int64_t>(words[index + 1]);
        value = static_cast<std::int32_t>(number);
        return type(index) == 'l' && number == value;
    }
    bool read(std::size_t index, std::uint64_t& value) const {
        value = words[index + 1];
        return type(index) == 'l' && static_cast<std::int64_t>(value) >= 0;
    }
    bool read(std::size_t index, double& value) const {
        const bool isInteger = type(index) == 'l';
        value = isInteger ? static_cast<double>(static_cast<std::int64_t>(words[index + 1]))
                          : std::bit_cast<double>(words[index + 1]);
        return isInteger || type(index) == 'd';
    }
    bool read(std::size_t index, std::string_view& value) const {
        if (type(index) != '"') return false;
        value = text(index);
        return true;
    }
    bool read(std::size_t, auto&) const { return false; }
};

/// Types that are read without any help of their own.
template <class T>
concept SimpleValue = std::same_as<T, bool> || std::same_as<T, std::string> || std::same_as<T, std::string_view> ||
    std::same_as<T, double> || std::same_as<T, float> || std::same_as<T, std::int32_t> ||
    std::same_as<T, std::int64_t> || std::same_as<T, std::uint32_t> || std::same_as<T, std::uint64_t> ||
    std::same_as<T, Date> || std::same_as<T, JsonObject> || std::same_as<T, JsonValue>;

}  // namespace kavio
