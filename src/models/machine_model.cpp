#include "models/machine_model.h"

#include "models/date_text.h"

#include <algorithm>
#include <limits>

namespace kavio {
namespace {

// Some machines still send the misspelled name of earlier days.
std::optional<std::string_view> readCustomLabel(const BorrowingContainer& in) {
    std::optional<std::string_view> label = in.optional("customLabel");
    if (!label) label = in.optional("customLabe");
    return label;
}

}  // namespace

MachineModel MachineModel::decode(const BorrowingContainer& in) {
    MachineModel model{
        .kavioID = in.optional("kavioID"),
        .operatorName = in.optional("operatorName"),
        .name = std::to_string(std::int64_t{in.required("name")}),
        .machineId = in.required("machineId"),
        .machineName = in.optional("machineName"),
        .machineConnectivityStatus = in.optional("machineConnectivityStatus"),
        .machineStatusId = in.optional("machineStatusId", 0),
        .zipCode = in.optional("zipCode", ""),
        .city = in.optional("city", ""),
        .country = in.optional("country", ""),
        .isWalletAllowed = in.optional("isWalletAllowed", true),
        .distance = in.optional("distance"),
        .machineType = in.required("machineType"),
        .machineModel = in.optional("machineModel"),
        .currency = in.optional("currency", ""),
        .location = in.optional("location"),
        .isRevalueOnly = in.required("isRevalueOnly"),
        .campaigns = in.orEmpty("campaigns"),
        .customLabel = readCustomLabel(in),
        .isFavorite = in.optional("isFavorite"),
        .latitude = in.optional("latitude", 0.0),
        .longitude = in.optional("longitude", 0.0),
        .decimalPlace = in.optional("decimalPlace", 2),
        .fullTreeOperatorsField = in.orEmpty("fullTreeOperatorsField"),
        .createdDateStr = in.optional("lastOrderDT", ""),
        .reviewsCount = in.required("reviewsCount"),
        .reviewsAvg = in.optional("reviewsAvg", 0.0F),
        .reviewsCount1 = in.required("reviewsCount1"),
        .reviewsCount2 = in.required("reviewsCount2"),
        .reviewsCount3 = in.required("reviewsCount3"),
        .reviewsCount4 = in.required("reviewsCount4"),
        .reviewsCount5 = in.required("reviewsCount5"),
        .isPulse = in.required("isPulse"),
        .uniQR = in.optional("uniQR"),
        .evNozzle = in.optional("evNozzle"),
        .evNozzleLeft = in.optional("evNozzleLeft"),
        .evNozzleRight = in.optional("evNozzleRight"),
        .supportRevalue = in.optional("supportRevalue", false),
        .supportKavioAutoPP = in.optional("supportKavioAutoPP", false),
        .actorId = in.optional("actorID", -1),
        .distributorId = in.optional("distributorID", -1),
        .supportDcsImage = in.optional("supportDcsImage", false),
        .supportRemoteVend = in.optional("supportRemoteVend", false),
        .multiVendCount = in.optional("multiVendCount", 0),
        .machineSerial = in.optional("machineSerial"),
        .supportDcsImageUpdatedDt = in.optional("supportDcsImageUpdatedDt", ""),
        .smartStickerIdUrl = in.optional("smartStickerIdUrl", ""),
        .defaultCredit = in.optional("defaultCredit", ""),
        .extraCharge = in.optional("extraCharge", 0.0),
        .extraChargeType = in.optional("extraChargeType", 0),
        .createdDate = {},
    };
    model.createdDate = DateText::parse(model.createdDateStr).value_or(Date());
    if (const auto coordinate = in.nestedIfPresent("coordinate")) {
        coordinate->requireNumbers();
        model.latitude = coordinate->optional<double>("latitude", 0.0);
        model.longitude = coordinate->optional<double>("longitude", 0.0);
    }
    return model;
}

Machine Decoder<Machine>::decode(const DecodedValue& value) {
    constexpr std::uint64_t largestKavioId = std::numeric_limits<std::int64_t>::max();
    auto model = value.borrowed<MachineModel>();
    using Text = std::optional<std::string>;
    return {
        .id = model.machineId,
        .kavioId = static_cast<std::int64_t>(std::min(model.kavioID.value_or(0), largestKavioId)),
        .operatorName = Text(model.operatorName),
        .isWalletAllowed = model.isWalletAllowed,
        .latitude = model.latitude,
        .longitude = model.longitude,
        .type = Machine::machineType(model.machineType).value_or(Machine::MachineType::OTHER),
        .campaigns = std::move(model.campaigns),
        .name = Text(model.machineName),
        .country = Text(model.country),
        .city = Text(model.city),
        .hwSerial = Text(model.machineSerial),
        .supportRemoteVend = model.supportRemoteVend,
        .multiVendCount = model.multiVendCount,
        .machineStatus = model.machineStatusId == 1,
    };
}

}  // namespace kavio
