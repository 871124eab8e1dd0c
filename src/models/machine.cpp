#include "models/enum_table.h"

#include <kavio/machine.h>

namespace kavio {
namespace {

using MachineType = Machine::MachineType;

constexpr EnumRow<MachineType> machineTypes[] = {
    {MachineType::HOT_DRINKS, "HOT_DRINKS"},
    {MachineType::COLD_DRINKS, "COLD_DRINKS"},
    {MachineType::SNACKS, "SNACKS"},
    {MachineType::ICE_CREAM, "ICE_CREAM"},
    {MachineType::MILK_PRODUCTS, "MILK_PRODUCTS"},
    {MachineType::SANDWICHES, "SANDWICHES"},
    {MachineType::FOOD, "FOOD"},
    {MachineType::AMUSEMENT, "AMUSEMENT"},
    {MachineType::ALCOHOL, "ALCOHOL"},
    {MachineType::CIGARETTES, "CIGARETTES"},
    {MachineType::COMBO, "COMBO"},
    {MachineType::AIR, "AIR"},
    {MachineType::ELECTRICITY, "ELECTRICITY"},
    {MachineType::OTHER, "OTHER"},
    {MachineType::RECYCLING, "RECYCLING"},
    {MachineType::WATER_FILLING_STATION, "WATER_FILLING_STATION"},
    {MachineType::CAR_WASH_MACHINE, "CAR_WASH_MACHINE"},
    {MachineType::LAUNDRY_MACHINE, "LAUNDRY_MACHINE"},
    {MachineType::CELLULAR_ACCESSORIES, "CELLULAR_ACCESSORIES"},
    {MachineType::PHARMACY, "PHARMACY"},
    {MachineType::TV_AND_INTERNET_SERVICES, "TV_AND_INTERNET_SERVICES"},
    {MachineType::PPE, "PPE"},
    {MachineType::MASSAGE_CHAIRS, "MASSAGE_CHAIRS"},
    {MachineType::ICE, "ICE"},
    {MachineType::PHOTO_BOOTH, "PHOTO_BOOTH"},
    {MachineType::PICTURES, "PICTURES"},
    {MachineType::PHOTOCOPIES, "PHOTOCOPIES"},
    {MachineType::FLOWERS, "FLOWERS"},
    {MachineType::CAR_VACUUM_CLEANER, "CAR_VACUUM_CLEANER"},
    {MachineType::WEIGHT, "WEIGHT"},
    {MachineType::LOCKERS, "LOCKERS"},
    {MachineType::ACCESS_CONTROL, "ACCESS_CONTROL"},
    {MachineType::GOLF_BALL_DISPENSER, "GOLF_BALL_DISPENSER"},
    {MachineType::DOG_WASH, "DOG_WASH"},
    {MachineType::FRESH_JUICE, "FRESH_JUICE"},
    {MachineType::GAMING, "GAMING"},
    {MachineType::MICRO_MARKETS, "MICRO_MARKETS"},
};

}  // namespace

std::string_view name(Machine::MachineType type) { return textOf(machineTypes, type); }

std::optional<Machine::MachineType> Machine::machineType(std::int64_t rawValue) {
    return withCode(machineTypes, rawValue);
}

}  // namespace kavio
