#pragma once

#include "models/json/keyed_container.h"
#include "models/td_secure_messages.h"

#include <cstdint>
#include <string>
#include <variant>

/// What the service answers in an enrolment. A reply's kind is told by its members, not by its "type" or "result",
/// which only has to be present and in range. A reply of an unknown kind is `std::monostate`.
namespace kavio {

struct TDSAddCardBaseResponse {
    TDSFlowType type = TDSFlowType::UNKNOWN;
};

struct TDSAddCardFrictionlessResponse : TDSAddCardBaseResponse {
    std::string locator;
    static TDSAddCardFrictionlessResponse decode(const KeyedContainer& in);
};

struct TDSAddCardFingerprintResponse : TDSAddCardBaseResponse {
    /// Address of the issuer's fingerprint page.
    std::string page;
    std::string id;
    static TDSAddCardFingerprintResponse decode(const KeyedContainer& in);
};

struct TDSAddCardChallengeResponse : TDSAddCardBaseResponse {
    std::string url;
    std::string id;
    static TDSAddCardChallengeResponse decode(const KeyedContainer& in);
};

struct TDSAddCardErrorResponse : TDSAddCardBaseResponse {
    std::string message;
    static TDSAddCardErrorResponse decode(const KeyedContainer& in);
};

struct TDSAddCardResponseFactory {
    std::variant<TDSAddCardFrictionlessResponse, TDSAddCardFingerprintResponse, TDSAddCardChallengeResponse,
                 TDSAddCardErrorResponse, std::monostate>
        reply;
    /// Never fails.
    static TDSAddCardResponseFactory decode(const DecodedValue& value);
};

struct TDSGetCardBaseResponse {
    enum class ResultType : std::uint8_t { UNKNOWN = 0, LOCATOR, CHALLENGE_REQUIRED, ERROR, NOT_READY };
    ResultType result = ResultType::UNKNOWN;
};

struct TDSGetCardLocatorResponse : TDSGetCardBaseResponse {
    std::string locator;
    static TDSGetCardLocatorResponse decode(const KeyedContainer& in);
};

struct TDSGetCardChallengeResponse : TDSGetCardBaseResponse {
    std::string url;
    static TDSGetCardChallengeResponse decode(const KeyedContainer& in);
};

struct TDSGetCardErrorResponse : TDSGetCardBaseResponse {
    std::string message;
    static TDSGetCardErrorResponse decode(const KeyedContainer& in);
};

struct TDSGetCardResponseFactory {
    std::variant<TDSGetCardLocatorResponse, TDSGetCardChallengeResponse, TDSGetCardErrorResponse, std::monostate> reply;
    /// Never fails.
    static TDSGetCardResponseFactory decode(const DecodedValue& value);
};

}  // namespace kavio
