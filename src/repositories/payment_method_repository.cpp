#include "network/send_with_fresh_time.h"
#include "repositories/repositories.h"
#include "storage/payment_journal.h"

#include <utility>

namespace kavio {

Recorder<DepositModel> depositRecorder(std::string paymentId) {
    return [paymentId = std::move(paymentId)](const APIResult<DepositModel>& reply) {
        const auto journal = PaymentJournal::shared();
        if (!reply && reply.failure().effect == Effect::NONE) journal->strikeOut(paymentId);
        if (reply) journal->depositMade(paymentId, reply.payload() ? reply.payload()->id : std::nullopt);
        journal->answered(paymentId);
    };
}

void PaymentMethodRepository::addCard(const std::map<std::string, SecretText>& paymentCard, std::string uuidKey,
                                      Completion<AddCreditCardResponse> completion) const {
    sendWithFreshTime(addCreditCardRequest(std::move(uuidKey), paymentCard), std::move(completion));
}

void PaymentMethodRepository::removeCard(const std::string& tokenLocator,
                                         Completion<DeleteCreditResponse> completion) const {
    sendWithFreshTime(deleteLocatorRequest(tokenLocator), std::move(completion));
}

void PaymentMethodRepository::deposit(const Deposit& deposit, std::string paymentId,
                                      Completion<DepositModel> completion) const {
    sendWithFreshTime(postDepositRequest(deposit), std::move(completion), depositRecorder(std::move(paymentId)));
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
