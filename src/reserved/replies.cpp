#include "reserved/replies.h"

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

}  // namespace kavio
