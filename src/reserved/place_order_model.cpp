#include "reserved/place_order_model.h"

#include "models/json/json_value.h"
#include "models/json/keyed_container.h"

namespace kavio {

PlaceOrderModel PlaceOrderModel::decode(const KeyedContainer& in) {
    return {
        .amount = in.optional("amount"),
        .tokenLocator = in.optional("tokenLocator"),
        .prepaidCardId = in.optional("prepaidCardId"),
        .payPalMetadataId = in.optional("payPalMetadataId"),
        .longitude = in.optional("longitude"),
        .latitude = in.optional("latitude"),
        .accuracy = in.optional("accuracy"),
        .address = in.optional("address"),
        .city = in.optional("city"),
        .country = in.optional("country"),
        .zipcode = in.optional("zipcode"),
        .streetNumber = in.optional("streetNumber"),
        .isQR = in.optional("isQR"),
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
