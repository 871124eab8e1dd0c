#pragma once

#include "network/api_request.h"
#include "tdsecure/messages.h"

#include <optional>
#include <string>

/// The requests of an enrolment. Each is sent once: every one of them moves the issuer's check on.
namespace kavio {

struct TDSAddCardRequestProto {
    static constexpr auto form = form::post;
    TDSAddCard mBody;

    std::string endpoint() const { return "/account/locators/credorax/addCard"; }
    std::optional<JsonObject> params() const { return encode(mBody); }
};

struct TDSGetCardRequestProto {
    static constexpr auto form = form::post;
    TDSGetCard mBody;

    std::string endpoint() const { return "/account/locators/credorax/getLocator"; }
    std::optional<JsonObject> params() const { return encode(mBody); }
};

/// Goes to the card issuer, who is told nothing of the service's: neither API key nor session token.
struct TDSGetPageRequestProto {
    static constexpr RequestForm form{"POST", ParameterEncoding::path, Idempotency::ONCE};
    TDSGetPage mBody;
    std::string mUrl;

    std::string endpoint() const { return ""; }
    std::optional<std::string> url() const { return mUrl; }
    std::optional<JsonObject> params() const { return encode(mBody); }
    HeaderFields headers() const;
};

}  // namespace kavio
