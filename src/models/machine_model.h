#pragma once

#include "models/campaign_model.h"
#include "models/public_objects.h"

#include <kavio/date.h>
#include <kavio/machine.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kavio {

/// One machine of the machines reply, its members in the order in which they are read. For making its public object:
/// the texts are the document's own, and are gone with it.
struct MachineModel {  // NOLINT(clang-analyzer-optin.performance.Padding)
    std::optional<std::uint64_t> kavioID;
    std::optional<std::string_view> operatorName;
    std::string name;  // arrives as an integer
    std::int64_t machineId = 0;
    std::optional<std::string_view> machineName;
    std::optional<std::string_view> machineConnectivityStatus;
    std::int32_t machineStatusId = 0;
    std::optional<std::string_view> zipCode;
    std::optional<std::string_view> city;
    std::optional<std::string_view> country;
    bool isWalletAllowed = true;
    std::optional<double> distance;
    std::int64_t machineType = 0;
    std::optional<std::int64_t> machineModel;
    std::string_view currency;
    std::optional<std::string_view> location;
    bool isRevalueOnly = false;
    PublicList<CampainModel> campaigns;
    std::optional<std::string_view> customLabel;
    std::optional<bool> isFavorite;
    double latitude = 0;
    double longitude = 0;
    std::int64_t decimalPlace = 2;
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
    bool supportRevalue = false;
    bool supportKavioAutoPP = false;
    std::int64_t actorId = -1;
    std::int64_t distributorId = -1;
    bool supportDcsImage = false;
    bool supportRemoteVend = false;
    std::int64_t multiVendCount = 0;
    std::optional<std::string_view> machineSerial;
    std::optional<std::string_view> supportDcsImageUpdatedDt;
    std::optional<std::string_view> smartStickerIdUrl;
    std::optional<std::string_view> defaultCredit;
    std::optional<double> extraCharge;
    std::optional<std::int32_t> extraChargeType;
    Date createdDate;
    static constexpr bool borrowsTexts = true;
    static MachineModel decode(const KeyedContainer& in);
};

std::shared_ptr<const Machine> publicObject(MachineModel&& model);

}  // namespace kavio
