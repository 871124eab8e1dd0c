#include "models/td_secure_replies.h"

#include "models/json/decoding_error.h"

namespace kavio {
namespace {

// The raw values go from 0 to that of `last`, without gaps.
template <class Enumeration>
Enumeration requiredCase(const KeyedContainer& in, Key key, Enumeration last) {
    const std::int64_t raw = in.required(key);
    if (raw < 0 || raw > static_cast<std::int64_t>(last)) {
        throw DecodingError(std::string(key.name()) + ": expected one of the known values, found another");
    }
    return static_cast<Enumeration>(raw);
}

TDSFlowType flowType(const KeyedContainer& in) { return requiredCase(in, "type", TDSFlowType::ERROR); }

TDSGetCardBaseResponse::ResultType resultType(const KeyedContainer& in) {
    return requiredCase(in, "result", TDSGetCardBaseResponse::ResultType::NOT_READY);
}

// The first alternative, in order, that decodes; the last one, which has no members, if none does.
template <class Reply, std::size_t I = 0>
Reply decodeFirst(const DecodedValue& value) {
    if constexpr (I + 1 == std::variant_size_v<Reply>) {
        return std::monostate();
    } else {
        try {
            return value.as<std::variant_alternative_t<I, Reply>>();
        } catch (const DecodingError&) {
            return decodeFirst<Reply, I + 1>(value);
        }
    }
}

}  // namespace

TDSAddCardFrictionlessResponse TDSAddCardFrictionlessResponse::decode(const KeyedContainer& in) {
    return {{flowType(in)}, in.required("locator")};
}

TDSAddCardFingerprintResponse TDSAddCardFingerprintResponse::decode(const KeyedContainer& in) {
    return {{flowType(in)}, in.required("page"), in.required("id")};
}

TDSAddCardChallengeResponse TDSAddCardChallengeResponse::decode(const KeyedContainer& in) {
    return {{flowType(in)}, in.required("url"), in.required("id")};
}

TDSAddCardErrorResponse TDSAddCardErrorResponse::decode(const KeyedContainer& in) {
    return {{flowType(in)}, in.required("message")};
}

TDSAddCardResponseFactory TDSAddCardResponseFactory::decode(const DecodedValue& value) {
    return {decodeFirst<decltype(reply)>(value)};
}

TDSGetCardLocatorResponse TDSGetCardLocatorResponse::decode(const KeyedContainer& in) {
    return {{resultType(in)}, in.required("locator")};
}

TDSGetCardChallengeResponse TDSGetCardChallengeResponse::decode(const KeyedContainer& in) {
    return {{resultType(in)}, in.required("url")};
}

TDSGetCardErrorResponse TDSGetCardErrorResponse::decode(const KeyedContainer& in) {
    return {{resultType(in)}, in.required("message")};
}

TDSGetCardResponseFactory TDSGetCardResponseFactory::decode(const DecodedValue& value) {
    return {decodeFirst<decltype(reply)>(value)};
}

}  // namespace kavio
