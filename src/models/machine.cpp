#include "models/enum_table.h"

#include <kavio/machine.h>

namespace kavio {
namespace {

constexpr auto machineTypes =
    KAVIO_ENUMERATORS(Machine::MachineType, HOT_DRINKS, COLD_DRINKS, SNACKS, ICE_CREAM, MILK_PRODUCTS, SANDWICHES, FOOD,
                      AMUSEMENT, ALCOHOL, CIGARETTES, COMBO, AIR, ELECTRICITY, OTHER, RECYCLING, WATER_FILLING_STATION,
                      CAR_WASH_MACHINE, LAUNDRY_MACHINE, CELLULAR_ACCESSORIES, PHARMACY, TV_AND_INTERNET_SERVICES, PPE,
                      MASSAGE_CHAIRS, ICE, PHOTO_BOOTH, PICTURES, PHOTOCOPIES, FLOWERS, CAR_VACUUM_CLEANER, WEIGHT,
                      LOCKERS, ACCESS_CONTROL, GOLF_BALL_DISPENSER, DOG_WASH, FRESH_JUICE, GAMING, MICRO_MARKETS);

}  // namespace

std::string_view name(Machine::MachineType type) { return textOf(machineTypes, type); }

std::optional<Machine::MachineType> Machine::machineType(std::int64_t rawValue) {
    return withCode(machineTypes, rawValue);
}

}  // namespace kavio
