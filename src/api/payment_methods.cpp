#include "api/state.h"

#include <kavio/platform/platform.h>

#include <cmath>

namespace kavio {
namespace {

constexpr const char* invalidAmount = "invalid amount";

// In the currency's smallest unit, what is finer cut off; absent when it is no 64-bit number.
std::optional<std::int64_t> smallestUnits(double amount, std::int64_t decimalDigits) {
    // One multiplication at a time, as the amounts that people see elsewhere are made. Past the range of a double
    // nothing changes any more, however many digits a card claims to have.
    for (std::int64_t i = 0; i < decimalDigits && std::isfinite(amount) && amount != 0; ++i) amount *= 10.0;
    constexpr double limit = 9223372036854775808.0;  // 2^63, the first that does not fit
    if (!(amount >= -limit && amount < limit)) return std::nullopt;
    return static_cast<std::int64_t>(amount);
}

}  // namespace

void Kavio::getPaymentMethods() {
    if (!mState->isIdle(&KavioDelegate::onGetPaymentMethods)) return;
    mState->mIsBusy = true;
    mState->fetchAccount();
}

void Kavio::State::paymentMethodsAccountResponse(APIResult<AccountModel> reply) {
    if (!reply) {
        mIsBusy = false;
        return fail(&KavioDelegate::onGetPaymentMethods, reply.failure());
    }
    auto account = std::move(reply).payload();
    auto methods = account ? paymentMethods(*std::move(account)) : PaymentMethods{};
    mAccountRepo->prepaidCards(
        [weak = weak_from_this(), methods = std::move(methods)](APIResult<PrepaidsList> prepaids) {
            if (const auto self = weak.lock()) self->prepaidsResponse(methods, std::move(prepaids));
        });
}

void Kavio::State::prepaidsResponse(PaymentMethods methods, APIResult<PrepaidsList> reply) {
    mIsBusy = false;
    if (!reply) return fail(&KavioDelegate::onGetPaymentMethods, reply.failure());
    if (auto list = std::move(reply).payload()) {
        for (auto& card : list->prepaids) methods.push_back(publicObject(std::move(card)));
    }
    succeed(&KavioDelegate::onGetPaymentMethods, std::move(methods));
}

void Kavio::addCreditCard(std::shared_ptr<const Card> card) {
    if (!mState->isIdle(&KavioDelegate::onAddCreditCard)) return;
    if (!card) return mState->fail(&KavioDelegate::onAddCreditCard, ResultType::BAD_INPUT, "invalid card");
    mState->mIsBusy = true;
    mState->mPaymentMethodRepo->addCard({{"number", card->pan},
                                         {"year", card->year},
                                         {"month", card->month},
                                         {"securityCode", card->cvv},
                                         {"email", card->email}},
                                        Platform::current().uuid->make(),
                                        mState->handled(&State::addCreditCardResponse));
}

void Kavio::State::addCreditCardResponse(APIResult<AddCreditCardResponse> reply) {
    mIsBusy = false;
    if (!reply) return fail(&KavioDelegate::onAddCreditCard, reply.failure());
    auto added = std::move(reply).payload();
    succeed(&KavioDelegate::onAddCreditCard, added ? publicObject(std::move(added->creditCard)) : nullptr);
}

void Kavio::removeCard(std::string id) {
    if (!mState->isIdle(&KavioDelegate::onRemoveCard)) return;
    mState->mIsBusy = true;
    mState->mPaymentMethodRepo->removeCard(std::move(id), mState->handled(&State::removeCreditCardResponse));
}

void Kavio::State::removeCreditCardResponse(APIResult<DeleteCreditResponse> reply) {
    mIsBusy = false;
    if (!reply) return fail(&KavioDelegate::onRemoveCard, reply.failure());
    succeed(&KavioDelegate::onRemoveCard);
}

void Kavio::deposit(std::shared_ptr<const DepositCard> depositCard, double amount, std::string chargedCardId) {
    using PaymentType = PaymentMethod::PaymentType;
    if (!mState->isIdle(&KavioDelegate::onDeposit)) return;
    const auto units = depositCard ? smallestUnits(amount, depositCard->currencyDecimalDigits) : 0;
    if (!units) return mState->fail(&KavioDelegate::onDeposit, ResultType::BAD_INPUT, invalidAmount);
    const auto type = depositCard ? depositCard->type : PaymentType::UNKNOWN;
    if (type != PaymentType::KAVIO && type != PaymentType::PREPAID) {
        return mState->fail(&KavioDelegate::onDeposit, ResultType::BAD_INPUT,
                            "cannot deposit to " + std::string(name(type)) + " card");
    }

    mState->mIsBusy = true;
    Deposit deposit{.tokenLocator = std::move(chargedCardId),
                    .paypalMetaDataId = std::nullopt,
                    .currency = depositCard->currency,
                    .amount = *units,
                    .label = std::nullopt,
                    .autoTopup = false};
    auto handler = mState->handled(&State::depositResponse);
    if (type == PaymentType::PREPAID) {
        mState->mPaymentMethodRepo->prepaidDeposit(depositCard->id, std::move(deposit), std::move(handler));
    } else {
        mState->mPaymentMethodRepo->deposit(std::move(deposit), std::move(handler));
    }
}

void Kavio::State::depositResponse(APIResult<DepositModel> reply) {
    mIsBusy = false;
    if (!reply) return fail(&KavioDelegate::onDeposit, reply.failure());
    succeed(&KavioDelegate::onDeposit, reply.payload() ? reply.payload()->balance : std::nullopt);
}

}  // namespace kavio
