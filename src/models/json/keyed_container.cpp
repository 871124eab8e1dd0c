#include "models/json/keyed_container.h"

#include "models/json/decoding_error.h"
#include "models/json/read_element.h"

#include <utility>

namespace kavio {

namespace {

/// Throws for anything but an object of a size that can be.
std::size_t sizeOf(const DecodedValue& value) {
    const auto tape = tapeOf(value.element());
    const auto index = value.element().index;
    if (tape.type(index) != '{') value.refuse("an object");
    const auto size = tape.count(index);
    if (size > mostElements) value.refuse("an object of at most a million members");
    return size;
}

std::unique_ptr<ObjectShape> shapeOf(const Tape& tape, std::span<const std::uint32_t> indices) {
    std::vector<std::string_view> names;
    names.reserve(indices.size());
    for (const auto index : indices) names.push_back(tape.text(index - 1));
    return std::make_unique<ObjectShape>(names);
}

}  // namespace

KeyedContainer::KeyedContainer(const DecodedValue& value) : KeyedContainer(value, sizeOf(value)) {}

KeyedContainer::KeyedContainer(const DecodedValue& value, std::size_t size)
    : mDocument(value.element().document),
      mTape(tapeOf(value.element())),
      mPath(value.path()),
      mShapePlace(knownShape(size, size == 0 ? nullptr : mTape.sized(value.element().index + 1))),
      mShape(std::move(mShapePlace.shape)) {
    if (size > mostOnStack) mManyIndices.resize(size + 1);
    mIndices = size > mostOnStack ? mManyIndices.data() : mFewIndices.data();
    mIndices[size] = 0;
    bool isKnown = mShape && mShape->size() == size;
    auto name = value.element().index + 1;
    for (std::size_t position = 0; position < size; ++position, name = mTape.after(name + 1)) {
        mIndices[position] = static_cast<std::uint32_t>(name + 1);
        isKnown = isKnown && mShape->isName(position, mTape.sized(name));
    }
    if (!isKnown) mShape = shapeOf(mTape, {mIndices, size});
    mAnswers = mShape->answers();
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
        double number = 0;
        if (!mShape->counts(position) || mTape.read(mIndices[position], number)) continue;
        DecodedValue({mDocument, mIndices[position]}, {&mPath, mShape->name(position)}).as<double>();
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

std::size_t KeyedContainer::search(Key key, std::size_t turn) const {
    const auto position = mShape->find(key, turn);
    mAnswers = mShape->answers();
    return mIndices[position];
}

/// The value of the member; absent when it is missing or null.
std::optional<Element> KeyedContainer::find(Key key) const {
    const auto index = indexOf(key);
    return isAbsent(index) ? std::nullopt : std::optional(Element{mDocument, index});
}

template <SimpleValue T>
std::optional<T> KeyedContainer::simple(Key key, std::size_t index) const {
    if (isAbsent(index)) return std::nullopt;
    const Element element{mDocument, index};
    auto value = Reading<T>::read(domElement(element));
    if (!value) refuse(key, element, Reading<T>::expectation);
    return value;
}

#define KAVIO_INSTANTIATE(T) template std::optional<T> KeyedContainer::simple(Key, std::size_t) const;
KAVIO_FOR_SIMPLE_VALUES(KAVIO_INSTANTIATE)

}  // namespace kavio
