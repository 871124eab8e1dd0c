#pragma once

#include "models/json/element.h"

#include <simdjson.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

namespace kavio {

// Shared by the files of this folder that look into a parsed document.

static_assert(sizeof(Element) == sizeof(simdjson::dom::element));

inline simdjson::dom::element domElement(Element element) { return std::bit_cast<simdjson::dom::element>(element); }
inline Element fromDom(simdjson::dom::element element) { return std::bit_cast<Element>(element); }

inline Tape tapeOf(Element element) {
    const auto& document = *static_cast<const simdjson::dom::document*>(element.document);
    return {document.tape.get(), reinterpret_cast<const char*>(document.string_buf.get())};
}

/// A double that is integral and in range, except from 2^53 on, where it may stand for another integer that
/// was rounded.
template <class Integer>
std::optional<Integer> integerOf(double value) {
    // A double holds both of these bounds exactly, but perhaps not the type's maximum itself.
    const auto lowest = static_cast<double>(std::numeric_limits<Integer>::min());
    const auto beyond = std::ldexp(1.0, std::numeric_limits<Integer>::digits);
    const bool isExact = std::abs(value) < 0x1p53 && value == std::trunc(value);
    const bool fits = isExact && value >= lowest && value < beyond;
    return fits ? std::optional(static_cast<Integer>(value)) : std::nullopt;
}

template <class Integer>
std::optional<Integer> inRange(auto value) {
    return std::in_range<Integer>(value) ? std::optional(static_cast<Integer>(value)) : std::nullopt;
}

/// Separate, so that the ordinary path is short enough to be inlined.
template <class Integer>
std::optional<Integer> unusualInteger(simdjson::dom::element element) {
    if (std::uint64_t value = 0; element.get_uint64().get(value) == simdjson::SUCCESS) return inRange<Integer>(value);
    if (double value = 0; element.get_double().get(value) == simdjson::SUCCESS) return integerOf<Integer>(value);
    return std::nullopt;
}

/// The value of a number that is integral and in range, however it is spelled.
template <class Integer>
std::optional<Integer> integerOf(simdjson::dom::element element) {
    if (element.type() == simdjson::dom::element_type::INT64)
        return inRange<Integer>(element.get_int64().value_unsafe());
    return unusualInteger<Integer>(element);
}

}  // namespace kavio
