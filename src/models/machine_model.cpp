#include "models/machine_model.h"

#include "models/date_text.h"
#include "models/json/keyed_container.h"

#include <algorithm>
#include <limits>

namespace kavio {
namespace {

// Some machines still send the name that was once misspelled.
std::optional<std::string_view> readCustomLabel(const KeyedContainer& in) {
    auto label = in.optional<std::string_view>("customLabel");
    return label ? label : in.optional<std::string_view>("customLabe");
}

}  // namespace

MachineModel MachineModel::decode(const KeyedContainer& in) {
    MachineModel model{
        .kavioID = in.optional<std::uint64_t>("kavioID"),
        .operatorName = in.optional<std::string_view>("operatorName"),
        .name = std::to_string(in.required<std::int64_t>("name")),
        .machineId = in.required<std::int64_t>("machineId"),
        .machineName = in.optional<std::string_view>("machineName"),
        .machineConnectivityStatus = in.optional<std::string_view>("machineConnectivityStatus"),
        .machineStatusId = in.optional<std::int32_t>("machineStatusId", 0),
        .zipCode = in.optional<std::string_view>("zipCode", ""),
        .city = in.optional<std::string_view>("city", ""),
        .country = in.optional<std::string_view>("country", ""),
        .isWalletAllowed = in.optional<bool>("isWalletAllowed", true),
        .distance = in.optional<double>("distance"),
        .machineType = in.required<std::int64_t>("machineType"),
        .machineModel = in.optional<std::int64_t>("machineModel"),
        .currency = in.optional<std::string_view>("currency", ""),
        .location = in.optional<std::string_view>("location"),
        .isRevalueOnly = in.required<bool>("isRevalueOnly"),
        .campaigns = in.optional<PublicList<CampainModel>>("campaigns", {}),
        .customLabel = readCustomLabel(in),
        .isFavorite = in.optional<bool>("isFavorite"),
        .latitude = in.optional<double>("latitude", 0),
        .longitude = in.optional<double>("longitude", 0),
        .decimalPlace = in.optional<std::int64_t>("decimalPlace", 2),
        .fullTreeOperatorsField = in.optional<std::vector<double>>("fullTreeOperatorsField", {}),
        .createdDateStr = in.optional<std::string_view>("lastOrderDT", ""),
        .reviewsCount = in.required<std::int32_t>("reviewsCount"),
        .reviewsAvg = in.optional<float>("reviewsAvg", 0),
        .reviewsCount1 = in.required<std::int32_t>("reviewsCount1"),
        .reviewsCount2 = in.required<std::int32_t>("reviewsCount2"),
        .reviewsCount3 = in.required<std::int32_t>("reviewsCount3"),
        .reviewsCount4 = in.required<std::int32_t>("reviewsCount4"),
        .reviewsCount5 = in.required<std::int32_t>("reviewsCount5"),
        .isPulse = in.required<bool>("isPulse"),
        .uniQR = in.optional<std::int64_t>("uniQR"),
        .evNozzle = in.optional<bool>("evNozzle"),
        .evNozzleLeft = in.optional<bool>("evNozzleLeft"),
        .evNozzleRight = in.optional<bool>("evNozzleRight"),
        .supportRevalue = in.optional<bool>("supportRevalue", false),
        .supportKavioAutoPP = in.optional<bool>("supportKavioAutoPP", false),
        .actorId = in.optional<std::int64_t>("actorID", -1),
        .distributorId = in.optional<std::int64_t>("distributorID", -1),
        .supportDcsImage = in.optional<bool>("supportDcsImage", false),
        .supportRemoteVend = in.optional<bool>("supportRemoteVend", false),
        .multiVendCount = in.optional<std::int64_t>("multiVendCount", 0),
        .machineSerial = in.optional<std::string_view>("machineSerial"),
        .supportDcsImageUpdatedDt = in.optional<std::string_view>("supportDcsImageUpdatedDt", ""),
        .smartStickerIdUrl = in.optional<std::string_view>("smartStickerIdUrl", ""),
        .defaultCredit = in.optional<std::string_view>("defaultCredit", ""),
        .extraCharge = in.optional<double>("extraCharge", 0),
        .extraChargeType = in.optional<std::int32_t>("extraChargeType", 0),
        .createdDate = {},
    };
    model.createdDate = DateText::parse(model.createdDateStr).value_or(Date());
    if (const auto coordinate = in.nestedIfPresent("coordinate")) {
        coordinate->requireNumbers();
        model.latitude = coordinate->optional<double>("latitude", 0);
        model.longitude = coordinate->optional<double>("longitude", 0);
    }
    return model;
}

std::shared_ptr<const Machine> publicObject(MachineModel&& model) {
    constexpr std::uint64_t largestKavioId = std::numeric_limits<std::int64_t>::max();
    const auto kavioId = static_cast<std::int64_t>(std::min(model.kavioID.value_or(0), largestKavioId));
    const auto type = Machine::machineType(model.machineType).value_or(Machine::MachineType::OTHER);
    using Text = std::optional<std::string>;
    return std::make_shared<Machine>(
        model.machineId, kavioId, Text(model.operatorName), model.isWalletAllowed, model.latitude, model.longitude,
        type, std::move(model.campaigns.objects), Text(model.machineName), Text(model.country), Text(model.city),
        Text(model.machineSerial), model.supportRemoteVend, model.multiVendCount, model.machineStatusId == 1);
}

}  // namespace kavio
