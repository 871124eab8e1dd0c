#pragma once

#include "network/api_request.h"
#include "network/reserved_requests.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

/// The requests that the library sends.
namespace kavio {

/// Asks for a one-time code. Once: each one is a message to a person's phone.
struct ChallengeRequest {
    static constexpr auto form = form::post;
    std::string countryCode;
    std::string phoneNumber;
    std::string challenge;
    std::string retry;

    std::string endpoint() const { return "/account/challenge/"; }
    std::optional<JsonObject> params() const;
};

/// Answers a one-time code. Once: a code opens one session.
struct VerifyRequest {
    static constexpr auto form = form::post;
    std::string verifyCode;
    std::string countryIsoCode;
    std::string countryPhoneCode;
    std::string phoneNumber;
    std::string challenge;
    std::string retry;

    std::string endpoint() const { return "/account/verify/"; }
    std::optional<JsonObject> params() const;
};

struct LogOutRequest {
    static constexpr auto form = form::put;
    std::string endpoint() const { return "/account/logout"; }
};

struct AccountRequest {
    static constexpr auto form = form::get;
    std::optional<std::string> pushToken;
    std::optional<std::string> appVersion;
    std::string version;
    std::string os;

    std::string endpoint() const { return "/account"; }
    std::optional<JsonObject> params() const;
};

/// The filter values of a machine look-up; the absent ones are not sent.
struct MachineQuery {
    std::optional<std::int64_t> machineId = std::nullopt;
    std::optional<std::int64_t> kavioMachineId = std::nullopt;
    std::optional<double> longitude = std::nullopt;
    std::optional<double> latitude = std::nullopt;
    std::optional<std::int64_t> machineType = std::nullopt;
    std::optional<std::int64_t> limit = std::nullopt;
    std::optional<std::int64_t> distance = std::nullopt;
    std::optional<bool> isByAccount = std::nullopt;
    std::optional<bool> hadOrder = std::nullopt;
    std::optional<std::string> country = std::nullopt;
    std::optional<std::string> qr_scan = std::nullopt;
    std::optional<std::string> qr_number = std::nullopt;
    std::optional<std::string> hwSerial = std::nullopt;
    std::optional<std::int64_t> operatorId = std::nullopt;
};

/// A query, though it is a POST: sending it twice does no harm.
struct MachineByValueRequest {
    static constexpr auto form = form::query;
    MachineQuery query;

    std::string endpoint() const { return "/machines/byValue"; }
    std::optional<JsonObject> params() const;
};

struct MachineProductsRequest {
    static constexpr auto form = form::get;
    std::uint64_t machineId;

    std::string endpoint() const { return "machines/" + std::to_string(machineId) + "/products"; }
};

/// Once, like every request that moves money.
struct PurchaseRequest {
    static constexpr auto form = form::post;
    std::string machineId;
    JsonObject parameters;

    std::string endpoint() const { return "/machines/" + machineId + "/orders"; }
    std::optional<JsonObject> params() const { return parameters; }
};

struct GetOrderRequest {
    static constexpr auto form = form::get;
    std::string orderId;
    bool statusOnly;

    std::string endpoint() const { return "/orders/" + orderId; }
    std::optional<JsonObject> params() const;
};

struct ActivitesRequest {
    static constexpr auto form = form::get;
    JsonObject parameters;

    std::string endpoint() const { return "/orders/activities"; }
    std::optional<JsonObject> params() const { return parameters; }
};

/// Once, although `uuidKey` lets the service tell a repetition: a card holder's bank may be asked for each.
struct AddCreditCardRequest {
    static constexpr auto form = form::post;
    std::string uuidKey;
    std::map<std::string, std::string> paymentCard;

    std::string endpoint() const { return "/account/locators"; }
    std::optional<JsonObject> params() const;
};

struct DeleteLocatorRequest {
    static constexpr auto form = form::remove;
    std::string tokenLocator;

    std::string endpoint() const { return "/account/locators/" + tokenLocator; }
};

/// What both deposits send.
struct Deposit {
    std::string tokenLocator;
    std::optional<std::string> paypalMetaDataId;
    std::string currency;
    std::int64_t amount;
    std::optional<std::string> label;
    bool autoTopup;

    JsonObject params() const;
};

struct PostDepositRequest {
    static constexpr auto form = form::post;
    Deposit deposit;

    std::string endpoint() const { return "/deposits/"; }
    std::optional<JsonObject> params() const { return deposit.params(); }
};

struct PostPrepaidDepositRequest {
    static constexpr auto form = form::post;
    std::string prepaidId;
    Deposit deposit;

    std::string endpoint() const { return "/prepaidCards/" + prepaidId + "/deposits/"; }
    std::optional<JsonObject> params() const { return deposit.params(); }
};

struct GeneralGetRequest {
    static constexpr auto form = form::get;
    std::string _endpoint;

    std::string endpoint() const { return _endpoint; }
};

/// Names that the creators of requests choose and that something depends on.
inline constexpr const char* timeRequestName = "getServerTimeRequest";
inline constexpr const char* timeEndpoint = "/time";

}  // namespace kavio
