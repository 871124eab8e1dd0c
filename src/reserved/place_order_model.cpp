#include "reserved/place_order_model.h"

#include "models/json/json_value.h"
#include "models/json/keyed_container.h"

namespace kavio {

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

OrderedJsonValue PlaceOrderModel::encode() const {
    auto object = OrderedJsonValue::object();
    const auto set = [&object](const char* key, const auto& value) {
        if (value) object[key] = *value;
    };
    set("amount", amount);
    set("tokenLocator", tokenLocator);
    set("prepaidCardId", prepaidCardId);
    set("payPalMetadataId", payPalMetadataId);
    set("longitude", longitude);
    set("latitude", latitude);
    set("accuracy", accuracy);
    set("address", address);
    set("city", city);
    set("country", country);
    set("zipcode", zipcode);
    set("streetNumber", streetNumber);
    set("isQR", isQR);
    return object;
}

}  // namespace kavio
