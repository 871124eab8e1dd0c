#pragma once

#include "models/campaign_model.h"

#include <kavio/date.h>
#include <kavio/machine.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kavio {

/// One machine of the machines reply, with its members in the order in which they are read. Only for making its public
/// object: the texts belong to the document and do not outlive it.
struct MachineModel {  // NOLINT(clang-analyzer-optin.performance.Padding)
    std::optional<std::uint64_t> kavioID;
    std::optional<std::string_view> operatorName;
    std::string name;  // arrives as an integer
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
    std::vector<double> fullTreeOperatorsField;
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
    Date createdDate;
    static MachineModel decode(const BorrowingContainer& in);
};

/// Made from a `MachineModel`.
template <>
struct Decoder<Machine> {
    static Machine decode(const DecodedValue& value);
};

}  // namespace kavio
