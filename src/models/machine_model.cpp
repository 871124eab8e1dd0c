#include "models/machine_model.h"

#include "models/date_text.h"
#include "models/json/keyed_container.h"
#include "models/public_objects.h"

#include <algorithm>
#include <limits>

namespace kavio {

MachineModel MachineModel::decode(const KeyedContainer& in) {
    MachineModel model;
    model.kavioID = in.optional<std::uint64_t>("kavioID");
    model.operatorName = in.optional<std::string>("operatorName");
    model.name = std::to_string(in.required<std::int64_t>("name"));
    model.machineId = in.required<std::int64_t>("machineId");
    model.machineName = in.optional<std::string>("machineName");
    model.machineConnectivityStatus = in.optional<std::string>("machineConnectivityStatus");
    model.machineStatusId = in.optional<std::int32_t>("machineStatusId", 0);
    model.zipCode = in.optional<std::string>("zipCode", "");
    model.city = in.optional<std::string>("city", "");
    model.country = in.optional<std::string>("country", "");
    model.isWalletAllowed = in.optional<bool>("isWalletAllowed", true);
    model.distance = in.optional<double>("distance");
    model.machineType = in.required<std::int64_t>("machineType");
    model.machineModel = in.optional<std::int64_t>("machineModel");
    model.currency = in.optional<std::string>("currency", "");
    model.location = in.optional<std::string>("location");
    model.isRevalueOnly = in.required<bool>("isRevalueOnly");
    model.campaigns = in.optional<std::vector<CampainModel>>("campaigns", {});
    model.customLabel = in.optional<std::string>("customLabel");
    if (!model.customLabel) model.customLabel = in.optional<std::string>("customLabe");
    model.isFavorite = in.optional<bool>("isFavorite");
    model.latitude = in.optional<double>("latitude", 0);
    model.longitude = in.optional<double>("longitude", 0);
    model.decimalPlace = in.optional<std::int64_t>("decimalPlace", 2);
    model.fullTreeOperatorsField = in.optional<std::vector<double>>("fullTreeOperatorsField", {});
    model.createdDateStr = in.optional<std::string>("lastOrderDT", "");
    model.createdDate = DateText::parse(model.createdDateStr).value_or(Date());
    model.reviewsCount = in.required<std::int32_t>("reviewsCount");
    model.reviewsAvg = in.optional<float>("reviewsAvg", 0);
    model.reviewsCount1 = in.required<std::int32_t>("reviewsCount1");
    model.reviewsCount2 = in.required<std::int32_t>("reviewsCount2");
    model.reviewsCount3 = in.required<std::int32_t>("reviewsCount3");
    model.reviewsCount4 = in.required<std::int32_t>("reviewsCount4");
    model.reviewsCount5 = in.required<std::int32_t>("reviewsCount5");
    model.isPulse = in.required<bool>("isPulse");
    model.uniQR = in.optional<std::int64_t>("uniQR");
    model.evNozzle = in.optional<bool>("evNozzle");
    model.evNozzleLeft = in.optional<bool>("evNozzleLeft");
    model.evNozzleRight = in.optional<bool>("evNozzleRight");
    model.supportRevalue = in.optional<bool>("supportRevalue", false);
    model.supportKavioAutoPP = in.optional<bool>("supportKavioAutoPP", false);
    model.actorId = in.optional<std::int64_t>("actorID", -1);
    model.distributorId = in.optional<std::int64_t>("distributorID", -1);
    model.supportDcsImage = in.optional<bool>("supportDcsImage", false);
    model.supportRemoteVend = in.optional<bool>("supportRemoteVend", false);
    model.multiVendCount = in.optional<std::int64_t>("multiVendCount", 0);
    model.machineSerial = in.optional<std::string>("machineSerial");
    model.supportDcsImageUpdatedDt = in.optional<std::string>("supportDcsImageUpdatedDt", "");
    if (const auto coordinate = in.nestedIfPresent("coordinate")) {
        model.latitude = coordinate->optional<double>("latitude", 0);
        model.longitude = coordinate->optional<double>("longitude", 0);
    }
    model.smartStickerIdUrl = in.optional<std::string>("smartStickerIdUrl", "");
    model.defaultCredit = in.optional<std::string>("defaultCredit", "");
    model.extraCharge = in.optional<double>("extraCharge", 0);
    model.extraChargeType = in.optional<std::int32_t>("extraChargeType", 0);
    return model;
}

std::shared_ptr<const Machine> publicObject(MachineModel model) {
    constexpr std::uint64_t largestKavioId = std::numeric_limits<std::int64_t>::max();
    const auto kavioId = static_cast<std::int64_t>(std::min(model.kavioID.value_or(0), largestKavioId));
    const auto type = Machine::machineType(model.machineType).value_or(Machine::MachineType::OTHER);
    return std::make_shared<Machine>(model.machineId, kavioId, std::move(model.operatorName), model.isWalletAllowed,
                                     model.latitude, model.longitude, type, publicObjects(std::move(model.campaigns)),
                                     std::move(model.machineName), std::move(model.country), std::move(model.city),
                                     std::move(model.machineSerial), model.supportRemoteVend, model.multiVendCount,
                                     model.machineStatusId == 1);
}

}  // namespace kavio
