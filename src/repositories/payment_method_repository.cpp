#include "network/send_with_fresh_time.h"
#include "repositories/payment_attempt.h"
#include "repositories/repositories.h"

#include <utility>

namespace kavio {

void sendDeposit(APIRequest request, UnsettledPayment payment, Completion<DepositModel> completion) {
    const auto attempt = std::make_shared<PaymentAttempt>(std::move(payment));
    sendWithFreshTime<DepositModel>(
        std::move(request), std::move(completion),
        [attempt](const APIResult<DepositModel>& reply) { attempt->ended(reply); },
        [attempt] { return attempt->begin(); });
}

void PaymentMethodRepository::addCard(const std::map<std::string, SecretText>& paymentCard, std::string uuidKey,
                                      Completion<AddCreditCardResponse> completion) const {
    sendWithFreshTime(addCreditCardRequest(std::move(uuidKey), paymentCard), std::move(completion));
}

void PaymentMethodRepository::removeCard(const std::string& tokenLocator,
                                         Completion<DeleteCreditResponse> completion) const {
    sendWithFreshTime(deleteLocatorRequest(tokenLocator), std::move(completion));
}

void PaymentMethodRepository::deposit(const Deposit& deposit, UnsettledPayment payment,
                                      Completion<DepositModel> completion) const {
    sendDeposit(postDepositRequest(deposit), std::move(payment), std::move(completion));
}

void PaymentMethodRepository::addCardTDSecure(const TDSAddCard& body,
                                              Completion<TDSAddCardResponseFactory> completion) const {
    sendWithFreshTime(tdsAddCardRequest(body), std::move(completion));
}

void PaymentMethodRepository::getCardTDSecure(const TDSGetCard& body,
                                              Completion<TDSGetCardResponseFactory> completion) const {
    sendWithFreshTime(tdsGetCardRequest(body), std::move(completion));
}

void PaymentMethodRepository::pageTDSecure(const TDSGetPage& body, std::string url,
                                           Completion<std::string> completion) const {
    sendWithFreshTime(tdsGetPageRequest(body, std::move(url)), std::move(completion));
}

}  // namespace kavio
