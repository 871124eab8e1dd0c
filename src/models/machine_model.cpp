#include "models/machine_model.h"

#include "models/campaign_model.h"
#include "models/unkept_list.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace kavio {
namespace {

/// A machine of the reply, with its members in the order in which they are read. Only for making its public
/// object: the texts belong to the document and do not outlive it.
struct MachineModel {  // NOLINT(clang-analyzer-optin.performance.Padding)
    std::optional<std::uint64_t> kavioID;
    std::optional<std::string_view> operatorName;
    std::int64_t name;
    std::int64_t machineId;
    std::optional<std::string_view> machineName;
    std::optional<std::string_view> machineConnectivityStatus;
    std::int32_t machineStatusId;
    std::optional<std::string_view> zipCode;
    std::optional<std::string_view> city;
    std::optional<std::string_view> country;
    bool isWalletAllowed;
    std::optional<double> distance;
    std::int64_t machineType;
    std::optional<std::int64_t> machineModel;
    std::string_view currency;
    std::optional<std::string_view> location;
    bool isRevalueOnly;
    Campaigns campaigns;
    std::optional<std::string_view> customLabel;
    std::optional<bool> isFavorite;
    double latitude;
    double longitude;
    std::int64_t decimalPlace;
    UnkeptList<double> fullTreeOperatorsField;
    std::string_view createdDateStr;  // "lastOrderDT"
    std::optional<std::int32_t> reviewsCount;
    std::optional<float> reviewsAvg;
    std::optional<std::int32_t> reviewsCount1;
    std::optional<std::int32_t> reviewsCount2;
    std::optional<std::int32_t> reviewsCount3;
    std::optional<std::int32_t> reviewsCount4;
    std::optional<std::int32_t> reviewsCount5;
    std::optional<bool> isPulse;
    std::optional<std::int64_t> uniQR;
    std::optional<bool> evNozzle;
    std::optional<bool> evNozzleLeft;
    std::optional<bool> evNozzleRight;
    bool supportRevalue;
    bool supportKavioAutoPP;
    std::int64_t actorId;
    std::int64_t distributorId;
    bool supportDcsImage;
    bool supportRemoteVend;
    std::int64_t multiVendCount;
    std::optional<std::string_view> machineSerial;
    std::optional<std::string_view> supportDcsImageUpdatedDt;
    std::optional<std::string_view> smartStickerIdUrl;
    std::optional<std::string_view> defaultCredit;
    std::optional<double> extraCharge;
    std::optional<std::int32_t> extraChargeType;
    static MachineModel decode(const BorrowingContainer& in);
};

// Some machines still send the misspelled name of earlier days.
std::optional<std::string_view> readCustomLabel(const BorrowingContainer& in) {
    std::optional<std::string_view> label = in.optional("customLabel");
    if (!label) label = in.optional("customLabe");
    return label;
}

MachineModel MachineModel::decode(const BorrowingContainer& in) {
    MachineModel model{
        .kavioID = in.optional("kavioID"),
        .operatorName = in.optional("operatorName"),
        .name = in.required("name"),
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
    };
    if (const auto coordinate = in.nestedIfPresent("coordinate")) {
        coordinate->requireNumbers();
        model.latitude = coordinate->optional<double>("latitude", 0.0);
        model.longitude = coordinate->optional<double>("longitude", 0.0);
    }
    return model;
}

}  // namespace

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
