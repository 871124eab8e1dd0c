#include "models/json/keyed_container.h"

#include "models/json/decoding_error.h"
#include "models/json/read_element.h"

#include <algorithm>
#include <bit>

namespace kavio {

KeyedContainer::KeyedContainer(const DecodedValue& value) : mDocument(value.element().document), mPath(value.path()) {
    simdjson::dom::object object;
    if (domElement(value.element()).get_object().get(object) != simdjson::SUCCESS) value.refuse("an object");

    const auto memberAt = [](const simdjson::dom::object::iterator& position) {
        const auto name = position.key();
        return Member{name.data(), static_cast<std::uint32_t>(name.size()),
                      static_cast<std::uint32_t>(fromDom(position.value()).index)};
    };

    const std::size_t size = object.size();
    const auto slots = std::bit_ceil(std::max<std::size_t>(4 * size, 4));  // a collision costs more than space
    if (slots > mSlots.size()) {
        mSorted = std::make_unique<std::vector<Member>>();
        for (auto position = object.begin(); position != object.end(); ++position)
            mSorted->push_back(memberAt(position));
        std::stable_sort(mSorted->begin(), mSorted->end(),
                         [](const Member& a, const Member& b) { return a.name() < b.name(); });
        return;
    }

    mHashShift = 32 - std::countr_zero(slots);
    std::fill_n(mSlots.begin(), slots, Slot{0});
    Slot count = 0;
    for (auto position = object.begin(); position != object.end(); ++position) {
        const auto member = memberAt(position);
        auto& slot = mSlots[slotOf(member.name(), nameHash(member.name()))];
        if (slot == 0) slot = ++count;
        mMembers[slot - 1U] = member;
    }
    mMemberCount = count;
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
    const auto require = [this](const Member& member) {
        DecodedValue({mDocument, member.index}, {&mPath, member.name()}).as<double>();
    };
    if (mSorted) {
        std::for_each(mSorted->begin(), mSorted->end(), require);
    } else {
        std::for_each_n(mMembers.begin(), mMemberCount, require);
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
    const auto* member = mSorted ? findSorted(key) : findInTable(key);
    if (!member) return std::nullopt;
    const Element element{mDocument, member->index};
    return domElement(element).is_null() ? std::nullopt : std::optional(element);
}

inline const KeyedContainer::Member* KeyedContainer::findInTable(Key key) const {
    const auto slot = mSlots[slotOf(key.name(), key.hash())];
    return slot == 0 ? nullptr : &mMembers[slot - 1U];
}

const KeyedContainer::Member* KeyedContainer::findSorted(Key key) const {
    const auto isBefore = [](std::string_view name, const Member& member) { return name < member.name(); };
    const auto after = std::upper_bound(mSorted->begin(), mSorted->end(), key.name(), isBefore);
    return after != mSorted->begin() && (after - 1)->name() == key.name() ? &*(after - 1) : nullptr;
}

/// The slot of the member of that name, or the free slot where it belongs.
inline std::size_t KeyedContainer::slotOf(std::string_view name, std::uint32_t hash) const {
    const auto mask = (std::size_t{1} << (32 - mHashShift)) - 1;
    auto slot = static_cast<std::size_t>(hash >> mHashShift);
    while (mSlots[slot] != 0 && !isSameName(mMembers[mSlots[slot] - 1U].name(), name)) slot = (slot + 1) & mask;
    return slot;
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
