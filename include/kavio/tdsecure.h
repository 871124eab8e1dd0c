#pragma once

#include <kavio/secret.h>

#include <cstdint>
#include <optional>
#include <string>

namespace kavio {

/// The card of a 3-D Secure enrolment. It deliberately has no debug text, and its number and code are wiped from memory
/// with it.
struct TDSPaymentCard {
    SecretText number;          ///< the card number
    std::int64_t month = 0;     ///< 1 to 12
    std::int64_t year = 0;      ///< such as 2030
    SecretNumber securityCode;  ///< three or four digits
};

/// The person the card belongs to; absent members are not sent.
struct TDSCardHolder {
    ///@{
    /// Passed on to the service as it is.
    std::string name;
    std::string email;
    std::optional<std::int64_t> streetNumber = std::nullopt;
    std::optional<std::string> streetName = std::nullopt;
    std::optional<std::string> city = std::nullopt;
    std::optional<std::string> territory = std::nullopt;
    std::optional<std::string> country = std::nullopt;
    std::optional<std::string> postal = std::nullopt;
    ///@}
};

}  // namespace kavio
