#include "models/request_models.h"

#include "models/json/json_value.h"
#include "models/json/keyed_container.h"

namespace kavio {

MachineByValueModel MachineByValueModel::decode(const KeyedContainer& in) {
    return {
        .machineId = in.optional<std::uint64_t>("kavioMachineId"),
        .qrScan = in.optional<std::string>("uni_qr_scan"),
        .qrNumber = in.optional<std::string>("uni_qr_number"),
    };
}

JsonObject MachineByValueModel::encode() const {
    JsonObject object;
    setIfPresent(object, "kavioMachineId", machineId);
    setIfPresent(object, "uni_qr_scan", qrScan);
    setIfPresent(object, "uni_qr_number", qrNumber);
    return object;
}

PlaceOrderModel PlaceOrderModel::decode(const KeyedContainer& in) {
    return {
        .amount = in.optional<std::int64_t>("amount"),
        .tokenLocator = in.optional<std::string>("tokenLocator"),
        .prepaidCardId = in.optional<std::int64_t>("prepaidCardId"),
        .payPalMetadataId = in.optional<std::string>("payPalMetadataId"),
        .longitude = in.optional<double>("longitude"),
        .latitude = in.optional<double>("latitude"),
        .accuracy = in.optional<double>("accuracy"),
        .address = in.optional<std::string>("address"),
        .city = in.optional<std::string>("city"),
        .country = in.optional<std::string>("country"),
        .zipcode = in.optional<std::string>("zipcode"),
        .streetNumber = in.optional<std::string>("streetNumber"),
        .isQR = in.optional<bool>("isQR"),
    };
}

JsonObject PlaceOrderModel::encode() const {
    JsonObject object;
    setIfPresent(object, "amount", amount);
    setIfPresent(object, "tokenLocator", tokenLocator);
    setIfPresent(object, "prepaidCardId", prepaidCardId);
    setIfPresent(object, "payPalMetadataId", payPalMetadataId);
    setIfPresent(object, "longitude", longitude);
    setIfPresent(object, "latitude", latitude);
    setIfPresent(object, "accuracy", accuracy);
    setIfPresent(object, "address", address);
    setIfPresent(object, "city", city);
    setIfPresent(object, "country", country);
    setIfPresent(object, "zipcode", zipcode);
    setIfPresent(object, "streetNumber", streetNumber);
    setIfPresent(object, "isQR", isQR);
    return object;
}

}  // namespace kavio
