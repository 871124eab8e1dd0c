#pragma once

#include "models/json/json_types.h"

#include <kavio/date.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace kavio {

class KeyedContainer;

/// Where a value stands in its document: the chain of names and positions that leads to it, spelled out only for an
/// error. Each link lives in the frame that reads the enclosing object or array.
struct Path {
    const Path* parent = nullptr;
    std::string_view name;
    std::size_t position = 0;

    std::string text() const;
};

/// Where the JSON library keeps a value. Its header is large and stays out of ours.
struct Element {
    const void* document = nullptr;
    std::size_t index = 0;
};

/// One value of a parsed document, valid as long as that. Everything about strictness is decided here.
class DecodedValue {
public:
    enum class Kind { null, boolean, number, text, object, array };

    DecodedValue(Element element, Path path) : mElement(element), mPath(path) {}

    Kind kind() const;
    Element element() const { return mElement; }
    const Path& path() const { return mPath; }

    /// The value as a `T`, or `DecodingError`.
    /// - bool, std::string, float, double: a JSON value of that kind. `true` is no number, a number is no text.
    /// - std::int32_t, std::int64_t, std::uint32_t, std::uint64_t: a number with an integral value in range, however it
    /// is
    ///   spelled: 1, 1.0, 1e2.
    /// - Date: a number of seconds since 2001-01-01 00:00:00 UTC.
    /// - JsonObject, JsonValue: loosely typed, see loose_value.cpp for the rule.
    /// - std::vector of any of these.
    /// - a record, which is a type with `static T decode(const KeyedContainer&)`, or `decode(const DecodedValue&)` when
    ///   it takes other values than objects. A record without fields takes any value.
    template <class T>
    T as() const;

    /// Throws `DecodingError`: expected this, found what there is.
    [[noreturn]] void refuse(std::string_view expected) const;

private:
    template <class T>
    T simple() const = delete;

    Element mElement;
    Path mPath;
};

/// Walks the elements of an array; `DecodingError` for another value.
class ArrayReader {
public:
    explicit ArrayReader(const DecodedValue& array);

    bool atEnd() const { return mNext == mEnd; }
    DecodedValue next();
    /// Number of elements that is safe to reserve room for: a short hostile reply must not make us allocate gigabytes.
    std::size_t expectedCount() const { return mExpectedCount; }

private:
    const void* mDocument;
    std::size_t mNext;
    std::size_t mEnd;
    std::size_t mExpectedCount;
    std::size_t mPosition = 0;
    Path mPath;
};

// The types that `as` reads itself; a type that is no record and not among these does not compile.
template <>
bool DecodedValue::simple() const;
template <>
std::string DecodedValue::simple() const;
template <>
double DecodedValue::simple() const;
template <>
float DecodedValue::simple() const;
template <>
std::int64_t DecodedValue::simple() const;
template <>
std::int32_t DecodedValue::simple() const;
template <>
std::uint64_t DecodedValue::simple() const;
template <>
std::uint32_t DecodedValue::simple() const;
template <>
Date DecodedValue::simple() const;
template <>
JsonObject DecodedValue::simple() const;
template <>
JsonValue DecodedValue::simple() const;

template <class T>
inline constexpr bool isList = false;
template <class T>
inline constexpr bool isList<std::vector<T>> = true;

template <class T>
T DecodedValue::as() const {
    if constexpr (std::is_empty_v<T>) {
        return T{};
    } else if constexpr (isList<T>) {
        ArrayReader reader(*this);
        T list;
        list.reserve(reader.expectedCount());
        while (!reader.atEnd()) list.push_back(reader.next().template as<typename T::value_type>());
        return list;
    } else if constexpr (requires { T::decode(*this); }) {
        return T::decode(*this);
    } else if constexpr (requires(const KeyedContainer& in) { T::decode(in); }) {
        return T::decode(KeyedContainer(*this));
    } else {
        return simple<T>();
    }
}

}  // namespace kavio
