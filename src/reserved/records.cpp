#include "reserved/records.h"

#include "models/json/json_value.h"
#include "models/json/keyed_container.h"

#include <utility>

namespace kavio {
namespace {

std::optional<CurrencyModel> readCurrency(const std::string& name, const JsonValue& entry) {
    if (!entry.is_object()) return std::nullopt;
    const auto& members = entry.get_ref<const JsonObject&>();
    const auto decimalDigits = integerAt(members, "decimalDigits");
    const auto minimumAmount = integerAt(members, "minimumAmount");
    const auto maximumAmount = integerAt(members, "maximumAmount");
    if (!decimalDigits || !minimumAmount || !maximumAmount) return std::nullopt;
    return CurrencyModel{
        .currencyName = name,
        .decimalDigits = *decimalDigits,
        .minimumAmount = *minimumAmount,
        .maximumAmount = *maximumAmount,
        .balanceFallsJumps = integerAt(members, "balanceFallsJumps").value_or(100),
        .currencySign = textAt(members, "currencySign"),
    };
}

}  // namespace

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

MachineReviewModel MachineReviewModel::decode(const KeyedContainer& in) {
    return {
        .userName = in.optional("userName"),
        .createdDT = in.required("createdDT"),
        .updatedDT = in.required("updatedDT"),
        .accountReview = in.optional("accountReview"),
        .machineRating = in.required("machineRating"),
        .machineReview = in.required("machineReview"),
    };
}

PurchaseGameResponse PurchaseGameResponse::decode(const KeyedContainer& in) {
    return {
        .ok = in.required("ok"),
        .winAmount = in.required("winAmount"),
    };
}

CheckGeoIPResponse CheckGeoIPResponse::decode(const KeyedContainer& in) {
    const auto country = in.nested("country");
    return {.isoCode = country.required("iso_code")};
}

PrepaidCreateVirtualCardResponse PrepaidCreateVirtualCardResponse::decode(const KeyedContainer& in) {
    const auto token = in.nested("token");
    return {.token = token.optional("token")};
}

PrepaidCreatePhysicalCardResponse PrepaidCreatePhysicalCardResponse::decode(const KeyedContainer& in) {
    return {.id = in.optional("id")};
}

BasicResponse BasicResponse::decode(const KeyedContainer& in) {
    return {
        .ok = in.required("ok"),
        .result = in.optional("result"),
    };
}

Configuration Configuration::decode(const KeyedContainer& in) {
    Configuration configuration;
    const JsonObject currencies = in.required("currencies");
    for (const auto& [name, entry] : currencies) {
        if (auto currency = readCurrency(name, entry)) configuration.currencies.emplace(name, *std::move(currency));
    }
    return configuration;
}

KavioCardModel KavioCardModel::decode(const KeyedContainer& in) {
    return {
        .amount = in.required("amount"),
        .decimalDigits = in.required("decimalDigits"),
        .currency = in.required("currency"),
    };
}

JsonObject KavioCardModel::encode() const {
    return {{"amount", amount}, {"decimalDigits", decimalDigits}, {"currency", currency}};
}

VoucherModel VoucherModel::decode(const KeyedContainer& in) { return {.campaigns = in.required("vouchers")}; }

OrderModelResponse OrderModelResponse::decode(const KeyedContainer& in) {
    return {
        .orderModel = OrderModel::decodeOrder(in.nested("order")),
        .qr = in.optional("qr"),
    };
}

}  // namespace kavio
