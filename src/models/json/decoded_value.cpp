#include "models/json/decoded_value.h"

#include "models/json/decoding_error.h"
#include "models/json/read_element.h"

#include <array>

namespace kavio {
namespace {

using simdjson::dom::element_type;

// By `DecodedValue::Kind`.
constexpr std::array<std::string_view, 6> kindNames{"null", "a boolean", "a number", "text", "an object", "an array"};

}  // namespace

std::string Path::text() const {
    if (!parent) return {};
    auto text = parent->text();
    if (name.empty()) return text + '[' + std::to_string(position) + ']';
    if (!text.empty()) text += '.';
    return text.append(name);
}

DecodedValue::Kind DecodedValue::kind() const {
    switch (domElement(mElement).type()) {
        case element_type::NULL_VALUE:
            return Kind::null;
        case element_type::BOOL:
            return Kind::boolean;
        case element_type::INT64:
        case element_type::UINT64:
        case element_type::DOUBLE:
            return Kind::number;
        case element_type::STRING:
            return Kind::text;
        case element_type::OBJECT:
            return Kind::object;
        case element_type::ARRAY:
            return Kind::array;
    }
    return Kind::null;
}

void DecodedValue::refuse(std::string_view expected) const {
    auto message = mPath.text();
    if (!message.empty()) message += ": ";
    const auto found = kindNames[static_cast<std::size_t>(kind())];
    throw DecodingError(message.append("expected ").append(expected).append(", found ").append(found));
}

template <SimpleValue T>
T DecodedValue::simple() const {
    auto value = Reading<T>::read(domElement(mElement));
    if (!value) refuse(Reading<T>::expectation);
    return *std::move(value);
}

#define KAVIO_INSTANTIATE(T) template T DecodedValue::simple() const;
KAVIO_FOR_SIMPLE_VALUES(KAVIO_INSTANTIATE)

ArrayReader::ArrayReader(const DecodedValue& value)
    : mDocument(value.element().document), mTape(tapeOf(value.element())), mPath(value.path()) {
    const auto index = value.element().index;
    if (mTape.type(index) != '[') value.refuse("an array");
    mNext = index + 1;
    mEnd = mTape.after(index) - 1;
    mSize = mTape.count(index);
    if (mSize > mostElements) value.refuse("an array of at most a million elements");
}

DecodedValue ArrayReader::next() {
    const Element element{mDocument, mNext};
    mNext = mTape.after(mNext);
    return {element, Path{&mPath, {}, mPosition++}};
}

}  // namespace kavio
