#pragma once

#include "models/json/element.h"

#include <cstddef>
#include <string>
#include <string_view>

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

/// One value of a parsed document, valid for as long as the document. Everything about strictness is decided here.
class DecodedValue {
public:
    enum class Kind { null, boolean, number, text, object, array };

    DecodedValue(Element element, Path path) : mElement(element), mPath(path) {}

    Kind kind() const;
    Element element() const { return mElement; }
    const Path& path() const { return mPath; }

    /// The value as a `T`, or `DecodingError`.
    /// - bool, std::string, float, double: a JSON value of that kind. `true` is not a number, and a number is not
    ///   a text.
    /// - std::int32_t, std::int64_t, std::uint32_t, std::uint64_t: a number with an integral value in range, however
    ///   it is spelled: 1, 1.0, 1e2.
    /// - Date: a number of seconds since 2001-01-01 00:00:00 UTC.
    /// - JsonObject, JsonValue: loosely typed, see read_element.h for the rule.
    /// - std::vector of any of these, and std::shared_ptr of a const one.
    /// - a record, see `Decoder`. A record without members takes any value.
    template <class T>
    T as() const;
    /// In addition, types that keep texts in the document: a std::string_view, and a record that has some.
    template <class T>
    T borrowed() const;

    /// Throws a `DecodingError` that says what was expected and what was found.
    [[noreturn]] void refuse(std::string_view expected) const;

private:
    template <SimpleValue T>
    T simple() const;

    Element mElement;
    Path mPath;
};

/// Of an array or an object. None from the service has that many, and those of a hostile one take many times the memory
/// of their text.
inline constexpr std::size_t mostElements = 1'000'000;

/// Walks the elements of an array. `DecodingError` for any other value, and for an array of more than `mostElements`.
class ArrayReader {
public:
    explicit ArrayReader(const DecodedValue& array);

    bool atEnd() const { return mNext == mEnd; }
    DecodedValue next();
    template <SimpleValue T>
    T next() {
        T value{};
        if (!mTape.read(mNext, value)) return next().template as<T>();
        mNext = mTape.after(mNext);
        ++mPosition;
        return value;
    }
    std::size_t size() const { return mSize; }

private:
    const void* mDocument;
    Tape mTape;
    std::size_t mNext;
    std::size_t mEnd;
    std::size_t mSize;
    std::size_t mPosition = 0;
    Path mPath;
};

}  // namespace kavio
