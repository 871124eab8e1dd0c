#pragma once

#include "models/account_model.h"
#include "models/campaign_model.h"
#include "models/json/json_types.h"
#include "models/order_model.h"
#include "models/payment_model.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace kavio {

class KeyedContainer;

/// The parameters of a purchase, and where it was made.
struct PlaceOrderModel {
    std::optional<std::int64_t> amount;
    std::optional<std::string> tokenLocator;
    std::optional<std::int64_t> prepaidCardId;
    std::optional<std::string> payPalMetadataId;
    std::optional<double> longitude;
    std::optional<double> latitude;
    std::optional<double> accuracy;
    std::optional<std::string> address;
    std::optional<std::string> city;
    std::optional<std::string> country;
    std::optional<std::string> zipcode;
    std::optional<std::string> streetNumber;
    std::optional<bool> isQR;
    static PlaceOrderModel decode(const KeyedContainer& in);
    /// The keys are in the order of the members; absent ones are left out.
    OrderedJsonValue encode() const;
};

/// One user's review of a machine.
struct MachineReviewModel {
    std::optional<std::string> userName;
    std::string createdDT;
    std::string updatedDT;
    std::optional<bool> accountReview;
    std::uint32_t machineRating = 0;
    std::string machineReview;
    static MachineReviewModel decode(const KeyedContainer& in);
};

struct PurchaseGameResponse {
    bool ok = false;
    std::int64_t winAmount = 0;
    static PurchaseGameResponse decode(const KeyedContainer& in);
};

struct CheckGeoIPResponse {
    std::string isoCode;
    static CheckGeoIPResponse decode(const KeyedContainer& in);
};

struct PrepaidCreateVirtualCardResponse {
    std::optional<std::string> token;
    static PrepaidCreateVirtualCardResponse decode(const KeyedContainer& in);
};

struct PrepaidCreatePhysicalCardResponse {
    std::optional<std::int64_t> id;
    static PrepaidCreatePhysicalCardResponse decode(const KeyedContainer& in);
};

/// Reply that only acknowledges.
struct BasicResponse {
    bool ok = false;
    std::optional<std::string> result;
    static BasicResponse decode(const KeyedContainer& in);
};

// Calls to the service that no operation of the library makes. Their inputs are settled but their paths and parameters
// are not, so they are records and not requests yet.

struct AddPayPalLocatorRequest {
    std::string requestName;
    std::string token;
    std::string key;
    std::string paypalAuthorizationResponse;
};

struct PurchaseGameRequest {
    std::string requestName;
    std::string token;
    std::int64_t orderId;
    std::int64_t winPercent;
};

struct FeedbackRequest {
    std::string requestName;
    std::optional<std::int64_t> alertType;
    std::optional<std::string> token;
    std::optional<std::string> name;
    std::optional<std::string> email;
    std::optional<std::string> subject;
    std::optional<std::string> subType;
    std::optional<std::string> description;
    std::optional<std::int64_t> kavioId;
    std::optional<std::string> orderId;
    std::optional<std::int64_t> locatorId;
    std::optional<std::int64_t> prepaidCardId;
    std::optional<std::map<std::string, std::string>> dataFields;
};

struct PrepaidChangeStatusRequest {
    std::string requestName;
    std::string token;
    std::int64_t prepaidId;
    CardStatus prepaidStatus;
};

struct PurchaseCancelRequest {
    std::string requestName;
    std::string token;
    std::string orderId;
};

struct VoucherByCampaignIdRequest {
    std::string requestName;
    std::string token;
    std::string campaignId;
};

struct MachinesReviewGetRequest {
    std::string requestName;
    std::string token;
    std::int64_t machineId;
    std::string maxUpdatedDT;
    std::int64_t limit;
    bool isByAccount;
};

struct MachinesReviewPostRequest {
    std::string requestName;
    std::string token;
    std::int64_t machineId;
    std::int64_t machineRating;
    std::string machineReview;
};

struct MachinesReviewDeleteRequest {
    std::string requestName;
    std::string token;
    std::int64_t machineId;
};

struct PutAccountReuqest {
    std::string requestName;
    std::string token;
    std::optional<std::string> firstName;
    std::optional<std::string> lastName;
    std::optional<std::string> email;
    std::optional<bool> marketingConfirmation;
    std::optional<std::int64_t> gamificationTotalGamePlayed;
    std::optional<std::int64_t> gamificationHighScore;
    std::optional<std::int64_t> gamificationTotalAmountOfCashback;
    std::optional<AppData> appData;
};

struct PutMachineByAccount {
    std::string requestName;
    std::int64_t machineId;
    std::string customLabel;
    bool isFavorite;
    std::string token;
};

struct DeleteMachineRequest {
    std::string requestName;
    std::string mToken;
    std::string mMachine;
};

struct CheckGeoIPRequest {
    std::string requestName;
};

struct SendMachineCodeRequest {
    std::string requestName;
    std::string machineCode;
    std::string lat;
    std::string lng;
    std::string token;
};

struct PrepaidCreateVirtualCardRequest {
    std::string requestName;
    std::string token;
    std::string machineCode;
    std::string firstName;
    std::string lastName;
    std::string email;
};

struct PrepaidCreatePhsyicalCardRequest {
    std::string requestName;
    std::string token;
    std::string machineCode;
};

struct PrepaidReplacePhysicalCardRequest {
    std::string requestName;
    std::string token;
    std::string machineCode;
    std::string cardID;
};

struct CurrencyModel {
    std::string currencyName;
    std::int64_t decimalDigits;
    std::int64_t minimumAmount;
    std::int64_t maximumAmount;
    std::int64_t balanceFallsJumps;
    std::optional<std::string> currencySign;
};

/// What the service allows, by currency code. An entry that is not a currency is left out.
struct Configuration {
    std::map<std::string, CurrencyModel> currencies;
    static Configuration decode(const KeyedContainer& in);
};

/// The wallet's balance.
struct KavioCardModel {
    std::int64_t amount;
    std::int64_t decimalDigits;
    std::string currency;
    static KavioCardModel decode(const KeyedContainer& in);
    JsonObject encode() const;
};

/// Reply that lists campaigns.
struct VoucherModel {
    Campaigns campaigns;
    static VoucherModel decode(const KeyedContainer& in);
};

/// An order together with the text of a QR code.
struct OrderModelResponse {
    OrderModel orderModel;
    std::optional<std::string> qr;
    static OrderModelResponse decode(const KeyedContainer& in);
};

}  // namespace kavio
