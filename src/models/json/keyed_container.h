#pragma once

#include "models/json/decoded_value.h"
#include "models/json/key.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace kavio {

/// The members of one JSON object, read by name. Absent and null are alike for an optional member; every other mismatch
/// is a `DecodingError`. Of a repeated member the last counts; members that nobody asks for are ignored.
///
/// The members are indexed once, so that a record costs what its size is, and not keys times members. Lives on the
/// stack, in the frame that decodes a record.
class KeyedContainer {
public:
    explicit KeyedContainer(const DecodedValue& object);
    KeyedContainer(const KeyedContainer&) = delete;
    KeyedContainer& operator=(const KeyedContainer&) = delete;

    template <class T>
    T required(Key key) const {
        if constexpr (SimpleValue<T>) {
            auto found = simple<T>(key);
            if (!found) refuseMissing(key);
            return *std::move(found);
        } else {
            return value(key).template as<T>();
        }
    }
    template <class T>
    std::optional<T> optional(Key key) const {
        if constexpr (SimpleValue<T>) {
            return simple<T>(key);
        } else {
            const auto found = valueIfPresent(key);
            if (!found) return std::nullopt;
            return found->template as<T>();
        }
    }
    template <class T>
    T optional(Key key, T fallback) const {
        auto found = optional<T>(key);
        return found ? *std::move(found) : std::move(fallback);
    }

    // The container that they give holds on to this one for the path in its errors, hence not from a temporary.
    KeyedContainer nested(Key key) const& { return KeyedContainer(value(key)); }
    KeyedContainer nested(Key key) const&& = delete;
    std::optional<KeyedContainer> nestedIfPresent(Key key) const&;
    std::optional<KeyedContainer> nestedIfPresent(Key key) const&& = delete;
    /// Absent as well when the member is no object.
    std::optional<KeyedContainer> nestedIfObject(Key key) const&;
    std::optional<KeyedContainer> nestedIfObject(Key key) const&& = delete;
    /// Absent as well when the member is no text.
    std::optional<std::string> textIfText(Key key) const;
    /// Of an object of numbers each member is one, those as well that nobody asks for; null is none.
    void requireNumbers() const;

private:
    struct Member {
        const char* text;
        std::uint32_t size;
        std::uint32_t index;
        std::string_view name() const { return {text, size}; }
    };
    // Objects of up to this many members have their index on the stack. Larger ones, which no record of ours has, are
    // sorted instead, so that names made to collide cannot make them quadratic.
    static constexpr std::size_t maximumTableMembers = 128;
    // A slot is 0 when it is free, else one more than the position of its member.
    using Slot = std::uint8_t;

    template <SimpleValue T>
    std::optional<T> simple(Key key) const;
    DecodedValue value(Key key) const;
    std::optional<DecodedValue> valueIfPresent(Key key) const;
    std::optional<Element> find(Key key) const;
    const Member* findInTable(Key key) const;
    const Member* findSorted(Key key) const;
    std::size_t slotOf(std::string_view name, std::uint32_t hash) const;
    [[noreturn]] void refuseMissing(Key key) const;
    [[noreturn]] void refuse(Key key, Element element, std::string_view expected) const;

    const void* mDocument;
    Path mPath;
    int mHashShift = 0;
    std::array<Slot, 4 * maximumTableMembers> mSlots;
    std::array<Member, maximumTableMembers> mMembers;
    std::size_t mMemberCount = 0;
    std::unique_ptr<std::vector<Member>> mSorted;
};

/// Converts to whatever is to be decoded, so that a list's elements are made in their place instead of being moved
/// there.
struct Decoding {
    DecodedValue value;
    template <class T>
    operator T() const {  // NOLINT(google-explicit-constructor)
        return value.as<T>();
    }
};

template <class T>
inline constexpr bool isList = false;
template <class T>
inline constexpr bool isList<std::vector<T>> = true;

template <class T>
T DecodedValue::as() const {
    if constexpr (SimpleValue<T>) {
        return simple<T>();
    } else if constexpr (std::is_empty_v<T>) {
        return T{};
    } else if constexpr (isList<T>) {
        ArrayReader reader(*this);
        T list;
        list.reserve(reader.size());
        while (!reader.atEnd()) list.emplace_back(Decoding{reader.next()});
        return list;
    } else if constexpr (requires { T::decode(*this); }) {
        return T::decode(*this);
    } else {
        return T::decode(KeyedContainer(*this));
    }
}

}  // namespace kavio
