#pragma once

#include "models/json/decoded_value.h"
#include "models/json/key.h"
#include "models/json/object_shape.h"
#include "models/json/shared_object.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace kavio {

class BorrowingContainer;

/// How a type that is not a simple value is read: by its own `decode` or, if it should not know about JSON, by that of
/// a specialisation. `decode` takes a `KeyedContainer`, a `BorrowingContainer` if the value keeps texts in the
/// document, or a `DecodedValue` if it accepts other values than objects.
template <class T>
struct Decoder {
    static T decode(const auto& in) requires requires { T::decode(in); }
    { return T::decode(in); }
};

template <class T, class Source>
concept DecodesFrom = requires(const Source& in) {
    Decoder<T>::decode(in);
};

template <class T>
inline constexpr bool isList = false;
template <class T>
inline constexpr bool isList<std::vector<T>> = true;
template <class T>
inline constexpr bool isShared = false;
template <class T>
inline constexpr bool isShared<std::shared_ptr<const T>> = true;
template <class T>
inline constexpr bool isWithoutMembers = std::conjunction_v<std::is_empty<T>, std::is_aggregate<T>>;

/// Types that `DecodedValue` reads.
template <class T>
concept Decodable = SimpleValue<T> || isList<T> || isShared<T> || isWithoutMembers<T> || DecodesFrom<T, DecodedValue> ||
    DecodesFrom<T, BorrowingContainer>;

/// Whether the value depends on the document's lifetime.
template <class T>
inline constexpr bool borrowsTexts = DecodesFrom<T, BorrowingContainer> && !DecodesFrom<T, KeyedContainer>;
template <>
inline constexpr bool borrowsTexts<std::string_view> = true;
template <class T>
inline constexpr bool borrowsTexts<std::vector<T>> = borrowsTexts<T>;
template <class T>
inline constexpr bool borrowsTexts<std::shared_ptr<const T>> = borrowsTexts<T>;

/// The members of one JSON object, read by name. For an optional member, absent and null are the same; every
/// other mismatch is a `DecodingError`. If a member is repeated, the last one counts; members that nobody asks
/// for are ignored.
///
/// A member is found by the object's shape, so that a record's cost grows with its size and not with keys times
/// members. Lives on the stack, in the frame that decodes a record.
class KeyedContainer {
public:
    explicit KeyedContainer(const DecodedValue& object);
    ~KeyedContainer();
    KeyedContainer(const KeyedContainer&) = delete;
    KeyedContainer& operator=(const KeyedContainer&) = delete;

    // A member is read as the type that it initialises, so that the two cannot differ.

    template <bool mayBorrow>
    struct Required {
        const KeyedContainer& in;
        Key key;
        template <Decodable T>
        requires(mayBorrow || !borrowsTexts<T>) operator T() const {  // NOLINT(google-explicit-constructor)
            if constexpr (SimpleValue<T>) {
                auto found = in.read<T>(key);
                if (!found) in.refuseMissing(key);
                return *std::move(found);
            } else {
                return in.value(key).template borrowed<T>();
            }
        }
    };

    template <bool mayBorrow>
    struct Optional {
        const KeyedContainer& in;
        Key key;
        template <Decodable T>
        requires(mayBorrow || !borrowsTexts<T>) operator std::optional<T>()
            const {  // NOLINT(google-explicit-constructor)
            return in.read<T>(key);
        }
    };

    template <bool mayBorrow, class Fallback>
    struct WithFallback {
        const KeyedContainer& in;
        Key key;
        Fallback fallback;
        template <Decodable T>
        requires(mayBorrow || !borrowsTexts<T>) && requires(Fallback f) { T{f}; }  // without narrowing
        operator T() const {  // NOLINT(google-explicit-constructor)
            auto found = in.read<T>(key);
            return found ? *std::move(found) : T{fallback};
        }
    };

    template <bool mayBorrow>
    struct OrEmpty {
        const KeyedContainer& in;
        Key key;
        template <Decodable T>
        requires(mayBorrow || !borrowsTexts<T>) operator T() const {  // NOLINT(google-explicit-constructor)
            return in.read<T>(key).value_or(T{});
        }
    };

    /// `DecodingError` when it is missing.
    Required<false> required(Key key) const { return {*this, key}; }
    /// For a `std::optional`; empty when the member is missing.
    Optional<false> optional(Key key) const { return {*this, key}; }
    /// `fallback` when it is missing.
    template <class Fallback>
    WithFallback<false, Fallback> optional(Key key, Fallback fallback) const {
        return {*this, key, fallback};
    }
    /// The empty value of its type when it is missing.
    OrEmpty<false> orEmpty(Key key) const { return {*this, key}; }

    // The containers that these return refer to this one for the path in their errors, so they cannot come from
    // a temporary.
    KeyedContainer nested(Key key) const& { return KeyedContainer(value(key)); }
    KeyedContainer nested(Key key) const&& = delete;
    std::optional<KeyedContainer> nestedIfPresent(Key key) const&;
    std::optional<KeyedContainer> nestedIfPresent(Key key) const&& = delete;
    /// Also absent when the member is not an object.
    std::optional<KeyedContainer> nestedIfObject(Key key) const&;
    std::optional<KeyedContainer> nestedIfObject(Key key) const&& = delete;
    /// Also absent when the member is not a text.
    std::optional<std::string> textIfText(Key key) const;
    /// Also absent when the member is not an integer.
    std::optional<std::int64_t> integerIfInteger(Key key) const;
    /// Checks that every member is a number, even those that nobody asks for; null is not a number.
    void requireNumbers() const;

protected:
    std::optional<DecodedValue> valueIfObject(Key key) const;

private:
    KeyedContainer(const DecodedValue& object, std::size_t size);

    // Objects of up to this many members have the places of their values on the stack.
    static constexpr std::size_t mostOnStack = 128;

    template <Decodable T>
    std::optional<T> read(Key key) const {
        if constexpr (SimpleValue<T>) {
            const auto index = indexOf(key);
            if (T value{}; mTape.read(index, value)) return value;
            return simple<T>(key, index);
        } else {
            const auto found = valueIfPresent(key);
            if (!found) return std::nullopt;
            return found->template borrowed<T>();
        }
    }
    /// Of any spelling.
    template <SimpleValue T>
    std::optional<T> simple(Key key, std::size_t index) const;
    /// Where the member's value is, or 0, where no value can be, when it is missing.
    std::size_t indexOf(Key key) const {
        const auto turn = mTurn++;
        if (turn < mAnswers.size() && mAnswers[turn].key == key.name().data()) return mIndices[mAnswers[turn].position];
        return search(key, turn);
    }
    std::size_t search(Key key, std::size_t turn) const;
    /// For an optional member, missing and null are the same.
    bool isAbsent(std::size_t index) const { return index == 0 || mTape.type(index) == 'n'; }
    DecodedValue value(Key key) const;
    std::optional<DecodedValue> valueIfPresent(Key key) const;
    std::optional<Element> find(Key key) const;
    [[noreturn]] void refuseMissing(Key key) const;
    [[noreturn]] void refuse(Key key, Element element, std::string_view expected) const;

    const void* mDocument;
    Tape mTape;
    Path mPath;
    KnownShape& mShapePlace;
    std::unique_ptr<ObjectShape> mShape;
    mutable std::span<const ObjectShape::Answer> mAnswers;  // of the shape
    mutable std::size_t mTurn = 0;
    // Where the members' values are in the document, in the order of the shape, and then a 0, which stands for a member
    // that is missing.
    std::uint32_t* mIndices;
    std::array<std::uint32_t, mostOnStack + 1> mFewIndices;
    std::vector<std::uint32_t> mManyIndices;
};

/// The members of an object whose record keeps texts in the document. Such a record says so by taking this in its
/// `decode`: a `KeyedContainer` does not give out such texts.
class BorrowingContainer : public KeyedContainer {
public:
    using KeyedContainer::KeyedContainer;

    Required<true> required(Key key) const { return {*this, key}; }
    Optional<true> optional(Key key) const { return {*this, key}; }
    template <class Fallback>
    WithFallback<true, Fallback> optional(Key key, Fallback fallback) const {
        return {*this, key, fallback};
    }
    OrEmpty<true> orEmpty(Key key) const { return {*this, key}; }

    std::optional<BorrowingContainer> nestedIfObject(Key key) const& {
        const auto found = valueIfObject(key);
        return found ? std::optional<BorrowingContainer>(*found) : std::nullopt;
    }
    std::optional<BorrowingContainer> nestedIfObject(Key key) const&& = delete;
};

/// Converts to whatever is to be decoded, so that a list's elements are made in place instead of being moved.
struct Decoding {
    DecodedValue value;
    template <Decodable T>
    operator T() const {  // NOLINT(google-explicit-constructor)
        return value.borrowed<T>();
    }
};

template <class T>
T DecodedValue::as() const {
    static_assert(!borrowsTexts<T>, "Its texts would be gone with the document.");
    return borrowed<T>();
}

template <class T>
T DecodedValue::borrowed() const {
    static_assert(Decodable<T>, "A record has a `static T decode(const KeyedContainer&)`.");
    if constexpr (SimpleValue<T>) {
        return simple<T>();
    } else if constexpr (isList<T>) {
        ArrayReader reader(*this);
        T list;
        list.reserve(reader.size());
        while (!reader.atEnd()) list.emplace_back(Decoding{reader.next()});
        return list;
    } else if constexpr (isShared<T>) {
        return sharedObject([this] { return borrowed<std::remove_const_t<typename T::element_type>>(); });
    } else if constexpr (isWithoutMembers<T>) {
        return T{};
    } else if constexpr (DecodesFrom<T, DecodedValue>) {
        return Decoder<T>::decode(*this);
    } else {
        return Decoder<T>::decode(BorrowingContainer(*this));
    }
}

}  // namespace kavio

// Otherwise the JSON library would make a `JsonValue` from the member's text.
template <bool mayBorrow>
struct nlohmann::adl_serializer<kavio::KeyedContainer::Required<mayBorrow>> {};
template <bool mayBorrow, class Fallback>
struct nlohmann::adl_serializer<kavio::KeyedContainer::WithFallback<mayBorrow, Fallback>> {};
template <bool mayBorrow>
struct nlohmann::adl_serializer<kavio::KeyedContainer::OrEmpty<mayBorrow>> {};
