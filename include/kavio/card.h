#pragma once

#include <kavio/export.h>

#include <string>

namespace kavio {

/// A credit card as the user enters it, made by name. Immutable.
struct KAVIO_API Card {
    const std::string pan;
    const std::string month;  ///< such as "12"
    const std::string year;   ///< such as "2030"
    const std::string cvv;
    const std::string email;

    /// Holds the whole card number and the CVV: never log it.
    std::string debugDescription() const;
};

}  // namespace kavio
