#include "models/json/keyed_container.h"

#include "models/json/decoding_error.h"
#include "models/json/read_element.h"

#include <utility>

namespace kavio {

namespace {

simdjson::dom::object objectOf(const DecodedValue& value) {
    simdjson::dom::object object;
    if (domElement(value.element()).get_object().get(object) != simdjson::SUCCESS) value.refuse("an object");
    if (object.size() > mostElements) value.refuse("an object of at most a million members");
    return object;
}

KnownShape& placeOfShape(const simdjson::dom::object& object) {
    return knownShape(object.size(), object.size() == 0 ? std::string_view() : object.begin().key());
}

std::unique_ptr<ObjectShape> shapeOf(const simdjson::dom::object& object) {
    std::vector<std::string_view> names;
    for (const auto member : object) names.push_back(member.key);
    return std::make_unique<ObjectShape>(names);
}

}  // namespace

KeyedContainer::KeyedContainer(const DecodedValue& value)
    : mDocument(value.element().document),
      mPath(value.path()),
      mShapePlace(placeOfShape(objectOf(value))),
      mShape(std::move(mShapePlace.shape)) {
    const auto object = objectOf(value);
    const std::size_t size = object.size();
    if (size > mFewIndices.size()) mManyIndices.resize(size);
    mIndices = size > mFewIndices.size() ? std::span(mManyIndices) : std::span(mFewIndices).first(size);
    bool isKnown = mShape && mShape->size() == size;
    std::size_t position = 0;
    const auto end = object.end();
    for (auto member = object.begin(); member != end; ++member, ++position) {
        mIndices[position] = static_cast<std::uint32_t>(fromDom(member.value()).index);
        isKnown = isKnown && mShape->isName(position, member.key());
    }
    if (!isKnown) mShape = shapeOf(object);
    mShapePlace.isTaken = true;  // last: where memory runs out before, nobody would give it back
}

KeyedContainer::~KeyedContainer() {
    mShapePlace.isTaken = false;
    if (mShape->isOrdinary()) mShapePlace.shape = std::move(mShape);
}

std::optional<KeyedContainer> KeyedContainer::nestedIfPresent(Key key) const& {
    const auto found = valueIfPresent(key);
    if (!found) return std::nullopt;
    return std::optional<KeyedContainer>(*found);
}

std::optional<KeyedContainer> KeyedContainer::nestedIfObject(Key key) const& {
    const auto found = valueIfObject(key);
    return found ? std::optional<KeyedContainer>(*found) : std::nullopt;
}

std::optional<std::string> KeyedContainer::textIfText(Key key) const {
    const auto found = valueIfPresent(key);
    if (!found || found->kind() != DecodedValue::Kind::text) return std::nullopt;
    return found->as<std::string>();
}

std::optional<std::int64_t> KeyedContainer::integerIfInteger(Key key) const {
    const auto element = find(key);
    return element ? Reading<std::int64_t>::read(domElement(*element)) : std::nullopt;
}

void KeyedContainer::requireNumbers() const {
    for (std::size_t position = 0; position < mShape->size(); ++position) {
        const auto name = mShape->name(position);
        if (mShape->find(name) == position) DecodedValue({mDocument, mIndices[position]}, {&mPath, name}).as<double>();
    }
}

DecodedValue KeyedContainer::value(Key key) const {
    const auto found = valueIfPresent(key);
    if (!found) refuseMissing(key);
    return *found;
}

std::optional<DecodedValue> KeyedContainer::valueIfPresent(Key key) const {
    const auto element = find(key);
    if (!element) return std::nullopt;
    return DecodedValue(*element, {&mPath, key.name()});
}

std::optional<DecodedValue> KeyedContainer::valueIfObject(Key key) const {
    auto found = valueIfPresent(key);
    if (found && found->kind() != DecodedValue::Kind::object) found.reset();
    return found;
}

void KeyedContainer::refuseMissing(Key key) const {
    throw DecodingError(Path{&mPath, key.name()}.text() + ": missing");
}

void KeyedContainer::refuse(Key key, Element element, std::string_view expected) const {
    DecodedValue(element, {&mPath, key.name()}).refuse(expected);
}

/// The value of the member; absent when it is missing or null.
inline std::optional<Element> KeyedContainer::find(Key key) const {
    const auto position = mShape->find(key, mTurn++);
    if (position == ObjectShape::absent) return std::nullopt;
    const Element element{mDocument, mIndices[position]};
    return domElement(element).is_null() ? std::nullopt : std::optional(element);
}

template <SimpleValue T>
std::optional<T> KeyedContainer::simple(Key key) const {
    const auto element = find(key);
    if (!element) return std::nullopt;
    auto value = Reading<T>::read(domElement(*element));
    if (!value) refuse(key, *element, Reading<T>::expectation);
    return value;
}

#define KAVIO_INSTANTIATE(T) template std::optional<T> KeyedContainer::simple(Key) const;
KAVIO_FOR_SIMPLE_VALUES(KAVIO_INSTANTIATE)

}  // namespace kavio
