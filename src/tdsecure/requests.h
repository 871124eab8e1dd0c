#pragma once

#include "network/api_request.h"
#include "network/deployment.h"
#include "tdsecure/messages.h"

#include <optional>
#include <string>

/// The requests of an enrolment.
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

/// Goes to the issuer, not to the service: it carries neither the API key nor the session token.
struct TDSGetPageRequestProto {
    static constexpr RequestForm form{"POST", ParameterEncoding::path, Idempotency::ONCE};
    TDSGetPage mBody;
    std::string mUrl;

    std::string endpoint() const { return ""; }
    std::optional<JsonObject> params() const { return encode(mBody); }
    std::optional<std::string> url() const { return mUrl; }
    std::optional<HeaderFields> headers() const {
        return HeaderFields{{"Content-Type", "application/x-www-form-urlencoded"},
                            {"Cache-Control", "no-cache"},
                            {"Host", std::string(deployment::issuerHost)}};
    }
};

}  // namespace kavio
