#pragma once

#include <kavio/export.h>
#include <kavio/secret.h>

#include <string>

namespace kavio {

/// A credit card as the user enters it; initialise it by member name. Immutable. Its number and code are wiped from
/// memory with it.
struct KAVIO_API Card {
    const SecretText pan;     ///< the card number
    const std::string month;  ///< such as "12"
    const std::string year;   ///< such as "2030"
    const SecretText cvv;     ///< the security code
    const std::string email;  ///< of the person the card belongs to

    /// Holds the whole card number and the CVV: never log it.
    std::string debugDescription() const;
};

}  // namespace kavio
