#include "reserved/replies.h"

#include "models/json/keyed_container.h"

namespace kavio {

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

}  // namespace kavio
