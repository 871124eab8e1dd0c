#pragma once

#include "models/account_model.h"
#include "models/machine_model.h"
#include "models/order_activity_model.h"
#include "models/order_model.h"
#include "models/payment_model.h"
#include "models/product_model.h"
#include "models/public_objects.h"
#include "network/api_result.h"
#include "network/requests.h"
#include "tdsecure/replies.h"
#include "tdsecure/requests.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

/// One service an area of the API. A service turns an operation into a request, with the session token as it is stored
/// at that moment, and sends it; it keeps nothing. Operations may be called from any thread; completions run on the
/// main thread, once.
namespace kavio {

class LoginService {
public:
    void challenge(std::string countryCode, std::string phoneNumber, std::string challenge, std::string retry,
                   Completion<Challenge> completion) const;
    void verify(std::string verifyCode, std::string countryIsoCode, std::string countryPhoneCode,
                std::string phoneNumber, std::string challenge, std::string retry, Completion<Token> completion) const;
};

class AccountService {
public:
    void account(std::optional<std::string> appVersion, Completion<AccountModel> completion) const;
    void logout(Completion<LogOutResponse> completion) const;
};

class MachineService {
public:
    void machines(MachineQuery query, Completion<PublicList<MachineModel>> completion) const;
    void products(std::uint64_t machineId, Completion<PublicList<MachineProduct>> completion) const;
};

class PurchaseService {
public:
    /// Sent in the background: waits for connectivity, and is sent at most once.
    void purchase(JsonObject params, std::string machineId, Completion<OrderModel> completion) const;
    void order(std::string orderId, bool statusOnly, Completion<OrderModel> completion) const;
};

class PaymentMethodService {
public:
    void addCard(std::map<std::string, std::string> paymentCard, std::string uuidKey,
                 Completion<AddCreditCardResponse> completion) const;
    void removeCard(std::string tokenLocator, Completion<DeleteCreditResponse> completion) const;
    void deposit(Deposit deposit, Completion<DepositModel> completion) const;
    void addCardTDSecure(TDSAddCard body, Completion<TDSAddCardResponseFactory> completion) const;
    void getCardTDSecure(TDSGetCard body, Completion<TDSGetCardResponseFactory> completion) const;
    /// The text of the issuer's page at `url`.
    void pageTDSecure(TDSGetPage body, std::string url, Completion<std::string> completion) const;
};

class PrepaidService {
public:
    void prepaidCards(Completion<PrepaidsList> completion) const;
    void deposit(std::string prepaidId, Deposit deposit, Completion<DepositModel> completion) const;
};

class ActivitiesService {
public:
    void activities(JsonObject params, Completion<PublicList<OrderActivityModel>> completion) const;
};

/// The area exists in the API; the library uses nothing of it.
class GoodiesService {};

}  // namespace kavio
