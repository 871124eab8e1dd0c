#pragma once

#include "models/json/json_types.h"

#include <cstdint>
#include <optional>
#include <string>

namespace kavio {

class KeyedContainer;

/// The parameters of a purchase, and where it was made.
struct PlaceOrderModel {
    std::optional<std::int64_t> amount;
    std::optional<std::string> tokenLocator;
    std::optional<std::int64_t> prepaidCardId;
    std::optional<std::string> payPalMetadataId;
    std::optional<double> longitude;
    std::optional<double> latitude;
    std::optional<double> accuracy;
    std::optional<std::string> address;
    std::optional<std::string> city;
    std::optional<std::string> country;
    std::optional<std::string> zipcode;
    std::optional<std::string> streetNumber;
    std::optional<bool> isQR;
    static PlaceOrderModel decode(const KeyedContainer& in);
    /// The keys are in the order of the members; absent ones are left out.
    OrderedJsonValue encode() const;
};

}  // namespace kavio
