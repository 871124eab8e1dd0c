#include "models/json/object_shape.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace kavio {

ObjectShape::ObjectShape(std::span<const std::string_view> names) : mSorted(names.size()) {
    mMembers.reserve(names.size());
    for (const auto name : names) {
        mMembers.push_back({static_cast<std::uint32_t>(mNames.size()), static_cast<std::uint32_t>(name.size())});
        mNames += name;
    }
    std::iota(mSorted.begin(), mSorted.end(), 0U);
    std::ranges::stable_sort(mSorted, {}, [this](std::size_t position) { return name(position); });
}

std::size_t ObjectShape::find(std::string_view name) const {
    const auto after =
        std::ranges::upper_bound(mSorted, name, {}, [this](std::size_t position) { return this->name(position); });
    if (after == mSorted.begin() || this->name(*(after - 1)) != name) return absent;
    return *(after - 1);
}

std::size_t ObjectShape::remember(Key key, std::size_t turn) {
    constexpr std::size_t mostTurns = 256;  // more than any record has keys
    const auto position = find(key.name());
    if (turn >= mostTurns) return position;
    if (turn >= mAnswers.size()) mAnswers.resize(turn + 1);
    mAnswers[turn] = {key.name().data(), position};
    return position;
}

KnownShape& knownShape(std::size_t size, std::string_view firstName) {
    thread_local std::array<KnownShape, 64> places;
    const auto home = size + (firstName.empty() ? 0 : firstName.size() * 5 + static_cast<unsigned char>(firstName[0]));
    KnownShape* free = nullptr;
    for (std::size_t i = 0; i < 4; ++i) {
        auto& place = places[(home + i) % places.size()];
        if (place.isTaken) continue;
        if (!place.shape) {
            free = free ? free : &place;
        } else if (place.shape->size() == size && size > 0 && place.shape->name(0) == firstName) {
            return place;
        }
    }
    return free ? *free : places[home % places.size()];
}

}  // namespace kavio
