#pragma once

#include <memory>
#include <utility>

namespace kavio {

/// The object that `make` returns, made in place: an object with const members cannot be moved.
template <class Make>
auto sharedObject(Make make) {
    struct Place {
        decltype(make()) object;
        explicit Place(Make& maker) : object(maker()) {}
    };
    auto place = std::make_shared<Place>(make);
    const auto* object = &place->object;
    return std::shared_ptr<const decltype(make())>(std::move(place), object);
}

}  // namespace kavio
