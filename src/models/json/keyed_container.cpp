#include "models/json/keyed_container.h"

#include "models/json/decoding_error.h"
#include "models/json/simdjson_element.h"

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
    if (size > maximumTableMembers) {
        mSorted = std::make_unique<std::vector<Member>>();
        for (auto position = object.begin(); position != object.end(); ++position)
            mSorted->push_back(memberAt(position));
        std::stable_sort(mSorted->begin(), mSorted->end(),
                         [](const Member& a, const Member& b) { return nameOf(a) < nameOf(b); });
        return;
    }

    const auto slots = std::bit_ceil(2 * size + 2);  // at least half of them stay free
    mHashShift = 64 - std::countr_zero(slots);
    std::fill_n(mSlots.begin(), slots, Slot{0});
    Slot count = 0;
    for (auto position = object.begin(); position != object.end(); ++position) {
        const auto member = memberAt(position);
        auto& slot = mSlots[slotOf(nameOf(member), keyHash(nameOf(member)))];
        if (slot == 0) slot = ++count;
        mMembers[slot - 1U] = member;
    }
}

std::optional<KeyedContainer> KeyedContainer::nestedIfPresent(Key key) const& {
    const auto found = valueIfPresent(key);
    if (!found) return std::nullopt;
    return std::optional<KeyedContainer>(*found);
}

std::optional<KeyedContainer> KeyedContainer::nestedIfObject(Key key) const& {
    const auto found = valueIfPresent(key);
    if (!found || found->kind() != DecodedValue::Kind::object) return std::nullopt;
    return std::optional<KeyedContainer>(*found);
}

std::optional<std::string> KeyedContainer::textIfText(Key key) const {
    const auto found = valueIfPresent(key);
    if (!found || found->kind() != DecodedValue::Kind::text) return std::nullopt;
    return found->as<std::string>();
}

DecodedValue KeyedContainer::value(Key key) const {
    const auto* member = find(key);
    if (!member) throw DecodingError(Path{&mPath, key.name}.text() + ": missing");
    return {{mDocument, member->index}, {&mPath, key.name}};
}

std::optional<DecodedValue> KeyedContainer::valueIfPresent(Key key) const {
    const auto* member = find(key);
    if (!member) return std::nullopt;
    const Element element{mDocument, member->index};
    if (domElement(element).is_null()) return std::nullopt;
    return DecodedValue(element, {&mPath, key.name});
}

const KeyedContainer::Member* KeyedContainer::find(Key key) const {
    if (mSorted) {
        const auto after =
            std::upper_bound(mSorted->begin(), mSorted->end(), key.name,
                             [](std::string_view name, const Member& member) { return name < nameOf(member); });
        return after != mSorted->begin() && nameOf(*(after - 1)) == key.name ? &*(after - 1) : nullptr;
    }
    const auto slot = mSlots[slotOf(key.name, key.hash)];
    return slot == 0 ? nullptr : &mMembers[slot - 1U];
}

/// The slot of the member of that name, or the free one where it belongs.
std::size_t KeyedContainer::slotOf(std::string_view name, std::uint64_t hash) const {
    const auto mask = (std::size_t{1} << (64 - mHashShift)) - 1;
    auto slot = static_cast<std::size_t>(hash >> mHashShift);
    while (mSlots[slot] != 0 && nameOf(mMembers[mSlots[slot] - 1U]) != name) slot = (slot + 1) & mask;
    return slot;
}

}  // namespace kavio
