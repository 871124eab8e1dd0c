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
        return value(key).template as<T>();
    }
    template <class T>
    std::optional<T> optional(Key key) const {
        const auto found = valueIfPresent(key);
        if (!found) return std::nullopt;
        return found->template as<T>();
    }
    template <class T>
    T optional(Key key, T fallback) const {
        const auto found = valueIfPresent(key);
        return found ? found->template as<T>() : std::move(fallback);
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

private:
    struct Member {
        const char* name;
        std::uint32_t nameSize;
        std::uint32_t index;
    };
    // Objects of up to this many members have their index on the stack. Larger ones, which no record of ours has, are
    // sorted instead, so that names made to collide cannot make them quadratic.
    static constexpr std::size_t maximumTableMembers = 128;
    // A slot is 0 when it is free, else one more than the position of its member.
    using Slot = std::uint8_t;

    static std::string_view nameOf(const Member& member) { return {member.name, member.nameSize}; }
    DecodedValue value(Key key) const;
    std::optional<DecodedValue> valueIfPresent(Key key) const;
    const Member* find(Key key) const;
    std::size_t slotOf(std::string_view name, std::uint64_t hash) const;

    const void* mDocument;
    Path mPath;
    int mHashShift = 0;
    std::array<Slot, 2 * maximumTableMembers> mSlots;
    std::array<Member, maximumTableMembers> mMembers;
    std::unique_ptr<std::vector<Member>> mSorted;
};

}  // namespace kavio
