#pragma once

#include <kavio/export.h>

#include <string>

namespace kavio {

/// A credit card as the user enters it. Immutable.
class KAVIO_API Card {
public:
    Card(std::string pan, std::string month, std::string year, std::string cvv, std::string email);

    const std::string pan;
    const std::string month;  ///< such as "12"
    const std::string year;   ///< such as "2030"
    const std::string cvv;
    const std::string email;

    /// Holds the whole card number and the CVV: never log it.
    std::string debugDescription() const;
};

}  // namespace kavio
