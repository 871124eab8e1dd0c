#pragma once

#include "world.h"

#include <span>
#include <string_view>

namespace kavio::sandbox {

/// A card that is declined where it is added without 3-D Secure.
inline constexpr std::string_view declinedNumber = "4000000000000002";

/// A card whose number chooses what happens to it, besides those of the gallery.
struct TestCard {
    std::string_view number;
    Course course;
    std::string_view effect;
};
std::span<const TestCard> testCards();

/// The course of a card in 3-D Secure; any card that is not a test card is stored immediately.
Course courseOf(std::string_view cardNumber);

}  // namespace kavio::sandbox
