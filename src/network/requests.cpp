#include "network/requests.h"

#include "network/deployment.h"
#include "storage/kavio_user_defaults.h"

#include <kavio/platform/platform.h>

#include <algorithm>
#include <utility>

namespace kavio {
namespace {

using enum ParameterEncoding;
using enum Idempotency;

enum class Token { none, empty, stored };

/// What all requests of one kind have in common.
struct Kind {
    std::string_view name;
    std::string_view method;
    ParameterEncoding encoding;
    Idempotency idempotency;
    Token token = Token::stored;
};

namespace kinds {
constexpr Kind challenge{"challenge", "POST", json, ONCE, Token::none};  // each is a message to a person's phone
constexpr Kind verify{"verify", "POST", json, ONCE, Token::none};        // a code opens one session
constexpr Kind logOut{"logout", "PUT", path, ONCE};
constexpr Kind account{"account", "GET", path, REPEATABLE};
constexpr Kind machineByValue{"machines", "POST", json, REPEATABLE};  // changes nothing, though it is a POST
constexpr Kind machineProducts{"products", "GET", path, REPEATABLE};
constexpr Kind purchase{"purchase", "POST", json, ONCE};
constexpr Kind getOrder{"order", "GET", path, REPEATABLE};
constexpr Kind activites{"activities", "GET", path, REPEATABLE};
// Once, although its key lets the service recognise a repetition: each attempt may ask the card holder's bank.
constexpr Kind addCreditCard{"addCard", "POST", json, ONCE};
constexpr Kind deleteLocator{"removeCard", "DELETE", json, ONCE};
constexpr Kind postDeposit{"deposit", "POST", json, ONCE};
constexpr Kind postPrepaidDeposit{"prepaidDeposit", "POST", json, ONCE};
constexpr Kind prepaidCards{"getPrepaidRequest", "GET", path, REPEATABLE};
constexpr Kind tdsAddCard{"TDSAddCardRequestProto", "POST", json, ONCE};
constexpr Kind tdsGetCard{"TDSGetCardRequestProto", "POST", json, ONCE};
constexpr Kind tdsGetPage{"TDSGetPageRequestProto", "POST", path, ONCE, Token::none};
constexpr Kind serverTime{timeRequestName, "GET", path, REPEATABLE, Token::empty};
}  // namespace kinds

std::optional<SessionToken> sessionToken(Token token, const StoredState& stored) {
    if (token == Token::stored) return stored.session;
    return token == Token::empty ? std::optional(SessionToken{}) : std::nullopt;
}

APIRequest make(const Kind& kind, std::string endpoint, std::optional<Parameters> params = std::nullopt) {
    auto stored = storedState();
    auto token = sessionToken(kind.token, stored);
    return {.requestName = kind.name,
            .method = kind.method,
            .encoding = kind.encoding,
            .idempotency = kind.idempotency,
            .endpoint = std::move(endpoint),
            .params = std::move(params),
            .token = std::move(token),
            .stored = std::move(stored)};
}

// "2.3.1" of a host with build 45 is sent as "2.3145"; a version of any other form is sent as it is.
std::string sentAppVersion(std::string appVersion) {
    if (std::count(appVersion.begin(), appVersion.end(), '.') != 2) return appVersion;
    appVersion.erase(appVersion.rfind('.'), 1);
    return appVersion + Platform::current().mainBundle->informationText("CFBundleVersion").value_or("0");
}

std::string libraryInformation(std::string_view key) {
    return Platform::current().libraryBundle->informationText(key).value_or("");
}

Parameters depositParameters(const Deposit& deposit) {
    Parameters params{{"amount", deposit.amount}, {"currency", deposit.currency}, {"autoTopup", deposit.autoTopup}};
    params.add("paymentCardLocator", {{"locator", deposit.tokenLocator}});
    if (deposit.paypalMetaDataId) {
        params["payPalMetadataId"] = *deposit.paypalMetaDataId;
    } else {
        setIfPresent(params, "label", deposit.label);
    }
    return params;
}

}  // namespace

APIRequest challengeRequest(std::string countryCode, std::string phoneNumber, std::string challenge,
                            std::string retry) {
    return make(kinds::challenge, "/account/challenge/",
                Parameters{{"countryCode", std::move(countryCode)},
                           {"phoneNumber", std::move(phoneNumber)},
                           {"challenge", std::move(challenge)},
                           {"retry", std::move(retry)}});
}

APIRequest verifyRequest(std::string verifyCode, std::string countryIsoCode, std::string countryPhoneCode,
                         std::string phoneNumber, std::string challenge, std::string retry) {
    return make(kinds::verify, "/account/verify/",
                Parameters{{"verificationCode", std::move(verifyCode)},
                           {"challenge", std::move(challenge)},
                           {"retryTimeoutSeconds", std::move(retry)},
                           {"country", std::move(countryIsoCode)},
                           {"countryCode", std::move(countryPhoneCode)},
                           {"phoneNumber", std::move(phoneNumber)}});
}

APIRequest logOutRequest() { return make(kinds::logOut, "/account/logout"); }

APIRequest accountRequest(const std::optional<std::string>& appVersion) {
    if (!appVersion) return make(kinds::account, "/account");
    Parameters params{{"os", libraryInformation("DTPlatformName")},
                      {"osVersion", libraryInformation("DTPlatformVersion")},
                      {"appVersion", sentAppVersion(*appVersion)}};
    setIfPresent(params, "pushToken", KavioUserDefaults::shared()->defualt->string(keys::pushToken));
    return make(kinds::account, "/account", std::move(params));
}

APIRequest machineByValueRequest(const MachineQuery& query) {
    Parameters params;
    setIfPresent(params, "machineId", query.machineId);
    setIfPresent(params, "kavioMachineId", query.kavioMachineId);
    setIfPresent(params, "longitude", query.longitude);
    setIfPresent(params, "latitude", query.latitude);
    setIfPresent(params, "machineType", query.machineType);
    setIfPresent(params, "limit", query.limit);
    setIfPresent(params, "distance", query.distance);
    setIfPresent(params, "isByAccount", query.isByAccount);
    setIfPresent(params, "hadOrder", query.hadOrder);
    setIfPresent(params, "country", query.country);
    setIfPresent(params, "uni_qr_scan", query.qr_scan);
    setIfPresent(params, "uni_qr_number", query.qr_number);
    setIfPresent(params, "hwSerial", query.hwSerial);
    setIfPresent(params, "operatorId", query.operatorId);
    return make(kinds::machineByValue, "/machines/byValue", std::move(params));
}

APIRequest machineProductsRequest(std::uint64_t machineId) {
    return make(kinds::machineProducts, "machines/" + std::to_string(machineId) + "/products");
}

APIRequest purchaseRequest(const std::string& machineId, Parameters params) {
    return make(kinds::purchase, "/machines/" + machineId + "/orders", std::move(params));
}

APIRequest getOrderRequest(const std::string& orderId, bool statusOnly) {
    return make(kinds::getOrder, "/orders/" + orderId, Parameters{{"statusOnly", statusOnly}});
}

APIRequest activitesRequest(Parameters params) {
    return make(kinds::activites, "/orders/activities", std::move(params));
}

APIRequest addCreditCardRequest(std::string uuidKey, const std::map<std::string, SecretText>& paymentCard) {
    Parameters card;
    for (const auto& [key, value] : paymentCard) card.emplace(key, value.text());
    Parameters params{{"key", std::move(uuidKey)}};
    params.add("paymentCard", std::move(card));
    return make(kinds::addCreditCard, "/account/locators", std::move(params));
}

APIRequest deleteLocatorRequest(const std::string& tokenLocator) {
    return make(kinds::deleteLocator, "/account/locators/" + tokenLocator);
}

APIRequest postDepositRequest(const Deposit& deposit) {
    return make(kinds::postDeposit, "/deposits/", depositParameters(deposit));
}

APIRequest postPrepaidDepositRequest(const std::string& prepaidId, const Deposit& deposit) {
    return make(kinds::postPrepaidDeposit, "/prepaidCards/" + prepaidId + "/deposits/", depositParameters(deposit));
}

APIRequest prepaidCardsRequest() { return make(kinds::prepaidCards, "/prepaidCards"); }

APIRequest tdsAddCardRequest(const TDSAddCard& body) {
    return make(kinds::tdsAddCard, "/account/locators/credorax/addCard", encode(body));
}

APIRequest tdsGetCardRequest(const TDSGetCard& body) {
    return make(kinds::tdsGetCard, "/account/locators/credorax/getLocator", encode(body));
}

APIRequest tdsGetPageRequest(const TDSGetPage& body, std::string url) {
    auto request = make(kinds::tdsGetPage, "", encode(body));
    request.url = std::move(url);
    request.headers = {{"Content-Type", "application/x-www-form-urlencoded"},
                       {"Cache-Control", "no-cache"},
                       {"Host", std::string(deployment::issuerHost)}};
    return request;
}

APIRequest timeRequest() { return make(kinds::serverTime, "/time"); }

}  // namespace kavio
