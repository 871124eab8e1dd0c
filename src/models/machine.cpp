#include "models/debug_text.h"
#include "models/enum_table.h"

#include <kavio/machine.h>

#include <utility>

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

Machine::Machine(std::int64_t id_, std::int64_t kavioId_, std::optional<std::string> operatorName_,
                 bool isWalletAllowed_, double latitude_, double longitude_, MachineType type_, Campaigns campaigns_,
                 std::optional<std::string> name_, std::optional<std::string> country_,
                 std::optional<std::string> city_, std::optional<std::string> hwSerial_, bool supportRemoteVend_,
                 std::int64_t multiVendCount_, bool machineStatus_)
    : id(id_),
      kavioId(kavioId_),
      operatorName(std::move(operatorName_)),
      isWalletAllowed(isWalletAllowed_),
      latitude(latitude_),
      longitude(longitude_),
      type(type_),
      campaigns(std::move(campaigns_)),
      name(std::move(name_)),
      country(std::move(country_)),
      city(std::move(city_)),
      hwSerial(std::move(hwSerial_)),
      supportRemoteVend(supportRemoteVend_),
      multiVendCount(multiVendCount_),
      machineStatus(machineStatus_) {}

std::string Machine::debugDescription() const {
    return DebugText()
        .line("{ref ID: ", id)
        .line("kavio ID: ", kavioId)
        .line("operator name: ", operatorName)
        .line("online: ", isWalletAllowed)
        .line("latitude: ", latitude)
        .line("longitude: ", longitude)
        .line("type: ", type, ", ")
        .line("campaigns: ", campaigns, ", ")
        .line("name: ", name, ", ")
        .line("country: ", country, ", ")
        .line("city: ", city, ", ")
        .line("hwSerial: ", hwSerial, ", ")
        .line("supportRemoteVend: ", supportRemoteVend, ", ")
        .line("machineStatus: ", machineStatus, ", ")
        .line("multiVendCount: ", multiVendCount, "}");
}

}  // namespace kavio
