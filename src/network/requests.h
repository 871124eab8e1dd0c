#pragma once

#include "models/td_secure_messages.h"
#include "network/api_request.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

/// The requests that the library sends. Those of a signed-in user take the session token that is stored when they are
/// made, which is empty if there is none.
namespace kavio {

APIRequest challengeRequest(std::string countryCode, std::string phoneNumber, std::string challenge, std::string retry);
APIRequest verifyRequest(std::string verifyCode, std::string countryIsoCode, std::string countryPhoneCode,
                         std::string phoneNumber, std::string challenge, std::string retry);
APIRequest logOutRequest();
/// With a version, it also tells the service about the device and the host application.
APIRequest accountRequest(const std::optional<std::string>& appVersion);

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
APIRequest machineByValueRequest(const MachineQuery& query);
APIRequest machineProductsRequest(std::uint64_t machineId);

APIRequest purchaseRequest(const std::string& machineId, Parameters params);
APIRequest getOrderRequest(const std::string& orderId, bool statusOnly);
APIRequest activitesRequest(Parameters params);

APIRequest addCreditCardRequest(std::string uuidKey, const std::map<std::string, SecretText>& paymentCard);
APIRequest deleteLocatorRequest(const std::string& tokenLocator);

/// What both deposits send.
struct Deposit {
    std::string tokenLocator;
    std::optional<std::string> paypalMetaDataId;
    std::string currency;
    std::int64_t amount;
    std::optional<std::string> label;
    bool autoTopup;
};
APIRequest postDepositRequest(const Deposit& deposit);
APIRequest postPrepaidDepositRequest(const std::string& prepaidId, const Deposit& deposit);
APIRequest prepaidCardsRequest();

APIRequest tdsAddCardRequest(const TDSAddCard& body);
APIRequest tdsGetCardRequest(const TDSGetCard& body);
/// Goes to the issuer, not to the service: it carries neither the API key nor the session token.
APIRequest tdsGetPageRequest(const TDSGetPage& body, std::string url);

inline constexpr std::string_view timeRequestName = "getServerTimeRequest";
APIRequest timeRequest();

}  // namespace kavio
