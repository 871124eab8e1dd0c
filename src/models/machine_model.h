#pragma once

#include "models/campaign_model.h"

#include <kavio/date.h>
#include <kavio/machine.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kavio {

/// One machine of the machines reply.
struct MachineModel {
    std::optional<std::uint64_t> kavioID;
    std::optional<std::string> operatorName;
    std::string name;  // arrives as an integer
    std::optional<std::string> machineName;
    std::int64_t machineId = 0;
    std::optional<std::string> machineConnectivityStatus;
    std::int32_t machineStatusId = 0;
    std::optional<std::string> country;
    std::optional<std::string> city;
    std::optional<std::string> zipCode;
    double longitude = 0;
    double latitude = 0;
    std::string currency;
    std::int64_t machineType = 0;
    std::optional<std::int64_t> machineModel;
    bool isRevalueOnly = false;
    std::optional<bool> isFavorite;
    std::optional<std::string> customLabel;
    std::int64_t decimalPlace = 2;
    std::vector<double> fullTreeOperatorsField;
    std::optional<double> distance;
    std::vector<CampainModel> campaigns;
    bool isWalletAllowed = true;
    std::optional<std::string> location;
    Date createdDate;
    std::string createdDateStr;
    std::optional<std::int32_t> reviewsCount;
    std::optional<float> reviewsAvg;
    std::optional<std::int32_t> reviewsCount1;
    std::optional<std::int32_t> reviewsCount2;
    std::optional<std::int32_t> reviewsCount3;
    std::optional<std::int32_t> reviewsCount4;
    std::optional<std::int32_t> reviewsCount5;
    std::optional<bool> isPulse;
    std::optional<std::int64_t> uniQR;
    std::optional<std::string> smartStickerIdUrl;
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
    std::optional<std::string> machineSerial;
    std::optional<std::string> supportDcsImageUpdatedDt;
    std::optional<std::string> defaultCredit;
    std::optional<double> extraCharge;
    std::optional<std::int32_t> extraChargeType;
    static MachineModel decode(const KeyedContainer& in);
};

std::shared_ptr<const Machine> publicObject(MachineModel model);

}  // namespace kavio
