#pragma once

#include <kavio/campaign.h>
#include <kavio/export.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kavio {

/// An unattended vending point of an operator. Immutable.
struct KAVIO_API Machine {
    /// What a machine offers, by the service's codes.
    enum class MachineType {
        HOT_DRINKS = 0,
        COLD_DRINKS = 1,
        SNACKS = 2,
        ICE_CREAM = 3,
        MILK_PRODUCTS = 4,
        SANDWICHES = 5,
        FOOD = 6,
        AMUSEMENT = 7,
        ALCOHOL = 8,
        CIGARETTES = 9,
        COMBO = 10,
        AIR = 11,
        ELECTRICITY = 12,
        OTHER = 13,
        RECYCLING = 14,
        WATER_FILLING_STATION = 15,
        CAR_WASH_MACHINE = 16,
        LAUNDRY_MACHINE = 17,
        CELLULAR_ACCESSORIES = 18,
        PHARMACY = 19,
        TV_AND_INTERNET_SERVICES = 20,
        PPE = 21,
        MASSAGE_CHAIRS = 22,
        ICE = 23,
        PHOTO_BOOTH = 24,
        PICTURES = 25,
        PHOTOCOPIES = 26,
        FLOWERS = 27,
        CAR_VACUUM_CLEANER = 28,
        WEIGHT = 29,
        LOCKERS = 30,
        ACCESS_CONTROL = 31,
        GOLF_BALL_DISPENSER = 32,
        DOG_WASH = 33,
        FRESH_JUICE = 34,
        GAMING = 37,
        MICRO_MARKETS = 43,
    };
    /// Absent for a code that names no type.
    static std::optional<MachineType> machineType(std::int64_t rawValue);

    /// Identifies the machine to `Kavio::getMachineProducts`.
    const std::int64_t id;
    /// Identifies the machine to `Kavio::placeOrder`; 0 when it has none.
    const std::int64_t kavioId;
    const std::optional<std::string> operatorName;  ///< absent when the service sent none
    const bool isWalletAllowed;                     ///< whether the wallet's balance can pay there
    ///@{
    /// Degrees.
    const double latitude;
    const double longitude;
    ///@}
    /// Also `OTHER` for a type that this version does not know.
    const MachineType type;
    const Campaigns campaigns;  ///< empty when it takes part in none
    ///@{
    /// As the service words it; absent when it sent none.
    const std::optional<std::string> name;
    const std::optional<std::string> country;
    const std::optional<std::string> city;
    ///@}
    const std::optional<std::string> hwSerial;  ///< the serial number of its payment device
    /// Whether an order may name products.
    const bool supportRemoteVend;
    /// As the service sends it; 0 when it sends nothing.
    const std::int64_t multiVendCount;
    /// Whether the machine is in service.
    const bool machineStatus;

    /// One line per member, for logs and tests.
    std::string debugDescription() const;
};

/// The enumerator's own name, such as "HOT_DRINKS".
KAVIO_API std::string_view name(Machine::MachineType type);

}  // namespace kavio
