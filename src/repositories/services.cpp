#include "repositories/services.h"

#include "network/send_with_fresh_time.h"
#include "storage/kavio_user_defaults.h"

#include <kavio/platform/platform.h>

#include <utility>

namespace kavio {
namespace {

// The head of a request of the signed-in user; the token is empty when there is none.
RequestHead session(const char* requestName) { return {requestName, KavioUserDefaults::shared()->sessionToken()}; }

std::string platformInformation(std::string_view key) {
    return Platform::current().libraryBundle->informationText(key).value_or("");
}

}  // namespace

void LoginService::challenge(std::string countryCode, std::string phoneNumber, std::string challenge, std::string retry,
                             Completion<Challenge> completion) const {
    sendWithFreshTime(makeRequest<ChallengeRequest>({"challenge"}, std::move(countryCode), std::move(phoneNumber),
                                                    std::move(challenge), std::move(retry)),
                      std::move(completion));
}

void LoginService::verify(std::string verifyCode, std::string countryIsoCode, std::string countryPhoneCode,
                          std::string phoneNumber, std::string challenge, std::string retry,
                          Completion<Token> completion) const {
    sendWithFreshTime(makeRequest<VerifyRequest>({"verify"}, std::move(verifyCode), std::move(countryIsoCode),
                                                 std::move(countryPhoneCode), std::move(phoneNumber),
                                                 std::move(challenge), std::move(retry)),
                      std::move(completion));
}

void AccountService::account(std::optional<std::string> appVersion, Completion<AccountModel> completion) const {
    sendWithFreshTime(
        makeRequest<AccountRequest>(session("account"), KavioUserDefaults::shared()->defualt->string(keys::pushToken),
                                    std::move(appVersion), platformInformation("DTPlatformVersion"),
                                    platformInformation("DTPlatformName")),
        std::move(completion));
}

void AccountService::logout(Completion<LogOutResponse> completion) const {
    sendWithFreshTime(makeRequest<LogOutRequest>(session("logout")), std::move(completion));
}

void MachineService::machines(MachineQuery query, Completion<PublicList<MachineModel>> completion) const {
    sendWithFreshTime(makeRequest<MachineByValueRequest>(session("machines"), std::move(query)), std::move(completion));
}

void MachineService::products(std::uint64_t machineId, Completion<PublicList<MachineProduct>> completion) const {
    sendWithFreshTime(makeRequest<MachineProductsRequest>(session("products"), machineId), std::move(completion));
}

void PurchaseService::purchase(JsonObject params, std::string machineId, Completion<OrderModel> completion) const {
    sendWithFreshTime(makeRequest<PurchaseRequest>(session("purchase"), std::move(machineId), std::move(params)),
                      std::move(completion), SendPath::background);
}

void PurchaseService::order(std::string orderId, bool statusOnly, Completion<OrderModel> completion) const {
    sendWithFreshTime(makeRequest<GetOrderRequest>(session("order"), std::move(orderId), statusOnly),
                      std::move(completion));
}

void PaymentMethodService::addCard(std::map<std::string, std::string> paymentCard, std::string uuidKey,
                                   Completion<AddCreditCardResponse> completion) const {
    sendWithFreshTime(makeRequest<AddCreditCardRequest>(session("addCard"), std::move(uuidKey), std::move(paymentCard)),
                      std::move(completion));
}

void PaymentMethodService::removeCard(std::string tokenLocator, Completion<DeleteCreditResponse> completion) const {
    sendWithFreshTime(makeRequest<DeleteLocatorRequest>(session("removeCard"), std::move(tokenLocator)),
                      std::move(completion));
}

void PaymentMethodService::deposit(Deposit deposit, Completion<DepositModel> completion) const {
    sendWithFreshTime(makeRequest<PostDepositRequest>(session("deposit"), std::move(deposit)), std::move(completion));
}

void PaymentMethodService::addCardTDSecure(TDSAddCard body, Completion<TDSAddCardResponseFactory> completion) const {
    sendWithFreshTime(makeRequest<TDSAddCardRequestProto>(session("TDSAddCardRequestProto"), std::move(body)),
                      std::move(completion));
}

void PaymentMethodService::getCardTDSecure(TDSGetCard body, Completion<TDSGetCardResponseFactory> completion) const {
    sendWithFreshTime(makeRequest<TDSGetCardRequestProto>(session("TDSGetCardRequestProto"), std::move(body)),
                      std::move(completion));
}

void PaymentMethodService::pageTDSecure(TDSGetPage body, std::string url, Completion<std::string> completion) const {
    sendWithFreshTime(makeRequest<TDSGetPageRequestProto>({"TDSGetPageRequestProto"}, std::move(body), std::move(url)),
                      std::move(completion));
}

void PrepaidService::prepaidCards(Completion<PrepaidsList> completion) const {
    sendWithFreshTime(makeRequest<GeneralGetRequest>(session("getPrepaidRequest"), "/prepaidCards"),
                      std::move(completion));
}

void PrepaidService::deposit(std::string prepaidId, Deposit deposit, Completion<DepositModel> completion) const {
    sendWithFreshTime(
        makeRequest<PostPrepaidDepositRequest>(session("prepaidDeposit"), std::move(prepaidId), std::move(deposit)),
        std::move(completion));
}

void ActivitiesService::activities(JsonObject params, Completion<PublicList<OrderActivityModel>> completion) const {
    sendWithFreshTime(makeRequest<ActivitesRequest>(session("activities"), std::move(params)), std::move(completion));
}

}  // namespace kavio
