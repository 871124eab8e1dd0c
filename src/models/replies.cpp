#include "models/replies.h"

#include "models/date_text.h"
#include "models/json/keyed_container.h"

namespace kavio {

OrderMachineReviewModel OrderMachineReviewModel::decode(const KeyedContainer& in) {
    return {
        .reviewsCount = in.required("reviewsCount"),
        .reviewsAvg = in.required("reviewsAvg"),
        .accountReview = in.optional("accountReview"),
    };
}

ErrorKeys ErrorKeys::decode(const KeyedContainer& in) { return {.message = in.required("message")}; }

ErrorModel ErrorModel::decode(const KeyedContainer& in) {
    return {
        .message = in.optional("message"),
        .code = in.optional("code"),
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
