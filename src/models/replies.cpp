#include "models/replies.h"

#include "models/date_text.h"
#include "models/json/keyed_container.h"

namespace kavio {

MachineReviewModel MachineReviewModel::decode(const KeyedContainer& in) {
    return {
        .userName = in.optional<std::string>("userName"),
        .createdDT = in.required<std::string>("createdDT"),
        .updatedDT = in.required<std::string>("updatedDT"),
        .accountReview = in.optional<bool>("accountReview"),
        .machineRating = in.required<std::uint32_t>("machineRating"),
        .machineReview = in.required<std::string>("machineReview"),
    };
}

OrderMachineReviewModel OrderMachineReviewModel::decode(const KeyedContainer& in) {
    return {
        .reviewsCount = in.required<std::uint32_t>("reviewsCount"),
        .reviewsAvg = in.required<float>("reviewsAvg"),
        .accountReview = in.optional<bool>("accountReview"),
    };
}

PurchaseGameResponse PurchaseGameResponse::decode(const KeyedContainer& in) {
    return {
        .ok = in.required<bool>("ok"),
        .winAmount = in.required<std::int64_t>("winAmount"),
    };
}

CheckGeoIPResponse CheckGeoIPResponse::decode(const KeyedContainer& in) {
    const auto country = in.nested("country");
    return {.isoCode = country.required<std::string>("iso_code")};
}

PrepaidCreateVirtualCardResponse PrepaidCreateVirtualCardResponse::decode(const KeyedContainer& in) {
    const auto token = in.nested("token");
    return {.token = token.optional<std::string>("token")};
}

PrepaidCreatePhysicalCardResponse PrepaidCreatePhysicalCardResponse::decode(const KeyedContainer& in) {
    return {.id = in.optional<std::int64_t>("id")};
}

BasicResponse BasicResponse::decode(const KeyedContainer& in) {
    return {
        .ok = in.required<bool>("ok"),
        .result = in.optional<std::string>("result"),
    };
}

ErrorKeys ErrorKeys::decode(const KeyedContainer& in) { return {.message = in.required<std::string>("message")}; }

ErrorModel ErrorModel::decode(const KeyedContainer& in) {
    return {
        .message = in.optional<std::string>("message"),
        .code = in.optional<std::string>("code"),
    };
}

ServerTimeResponse ServerTimeResponse::decode(const KeyedContainer& in) {
    const auto date = [&in](Key key) {
        return DateText::parseWithOffset(in.textIfText(key).value_or("")).value_or(DateText::now());
    };
    return {
        .expireTime = date("expireTime"),
        .serverTime = date("serverTime"),
    };
}

}  // namespace kavio
