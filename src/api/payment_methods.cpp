#include "api/state.h"

#include <kavio/platform/platform.h>

#include <cmath>

namespace kavio {
namespace {

// In the currency's smallest unit, with anything finer cut off; absent when it does not fit into 64 bits.
std::optional<std::int64_t> smallestUnits(double amount, std::int64_t decimalDigits) {
    // One multiplication at a time, which is how the amounts that people see elsewhere are made. Beyond the range of a
    // double nothing changes any more, however many digits a card claims to have.
    for (std::int64_t i = 0; i < decimalDigits && std::isfinite(amount) && amount != 0; ++i) amount *= 10.0;
    constexpr double limit = 9223372036854775808.0;  // 2^63, the first that does not fit
    if (!(amount >= -limit && amount < limit)) return std::nullopt;
    return static_cast<std::int64_t>(amount);
}

}  // namespace

void Kavio::getPaymentMethods() {
    mState->perform(&KavioDelegate::onGetPaymentMethods, Purpose::ASK,
                    [&](const State::PaymentMethodsOperation& operation) {
                        mState->mAccountRepo->account(State::accountAppVersion,
                                                      operation.then<AccountModel>(&State::accountResponse));
                    });
}

void Kavio::State::accountResponse(const PaymentMethodsOperation& operation, APIResult<AccountModel> reply) {
    if (!reply) return operation.fail(reply.failure());
    auto account = std::move(reply).payload();
    mPrepaidRepo->prepaidCards(operation.finish<PrepaidsList>(
        [others = account ? paymentMethods(*std::move(account)) : PaymentMethods{}](std::optional<PrepaidsList> list) {
            auto methods = others;
            if (!list) return methods;
            for (auto& card : list->prepaids) methods.push_back(publicObject(std::move(card)));
            return methods;
        }));
}

void Kavio::addCreditCard(std::shared_ptr<const Card> card) {
    mState->perform(&KavioDelegate::onAddCreditCard, Purpose::CHANGE, [&](const State::CardOperation& operation) {
        if (!card) return operation.fail(ResultType::BAD_INPUT, Cause::INVALID_INPUT, "invalid card");
        mState->mPaymentMethodRepo->addCard(
            {{"number", card->pan},
             {"year", card->year},
             {"month", card->month},
             {"securityCode", card->cvv},
             {"email", card->email}},
            Platform::current().uuid->make(),
            operation.finish<AddCreditCardResponse>([](std::optional<AddCreditCardResponse> added) {
                return added ? publicObject(std::move(added->creditCard)) : nullptr;
            }));
    });
}

void Kavio::removeCard(std::string id) {
    mState->perform(&KavioDelegate::onRemoveCard, Purpose::CHANGE, [&](const State::Operation<>& operation) {
        mState->mPaymentMethodRepo->removeCard(id, operation.finish<DeleteCreditResponse>());
    });
}

void Kavio::deposit(std::shared_ptr<const DepositCard> depositCard, double amount, std::string chargedCardId) {
    using PaymentType = PaymentMethod::PaymentType;
    mState->perform(&KavioDelegate::onDeposit, Purpose::CHANGE, [&](const State::DepositOperation& operation) {
        const auto units = depositCard ? smallestUnits(amount, depositCard->currencyDecimalDigits) : 0;
        if (!units) return operation.fail(ResultType::BAD_INPUT, Cause::INVALID_INPUT, "invalid amount");
        const auto type = depositCard ? depositCard->type : PaymentType::UNKNOWN;
        if (type != PaymentType::KAVIO && type != PaymentType::PREPAID) {
            return operation.fail(ResultType::BAD_INPUT, Cause::INVALID_INPUT,
                                  "cannot deposit to " + std::string(name(type)) + " card");
        }

        UnsettledPayment payment{.id = Platform::current().uuid->make(),
                                 .kind = UnsettledPayment::Kind::DEPOSIT,
                                 .amount = *units,
                                 .currency = depositCard->currency,
                                 .paymentMethodId = depositCard->id,
                                 .paymentType = type,
                                 .chargedCardId = chargedCardId};
        const Deposit deposit{.tokenLocator = std::move(chargedCardId),
                              .paypalMetaDataId = std::nullopt,
                              .currency = depositCard->currency,
                              .amount = *units,
                              .label = std::nullopt,
                              .autoTopup = false};
        auto depositResponse = operation.finish<DepositModel>(
            [](const std::optional<DepositModel>& done) { return done ? done->balance : std::nullopt; });
        if (type == PaymentType::PREPAID) {
            mState->mPrepaidRepo->deposit(depositCard->id, deposit, std::move(payment), std::move(depositResponse));
        } else {
            mState->mPaymentMethodRepo->deposit(deposit, std::move(payment), std::move(depositResponse));
        }
    });
}

}  // namespace kavio
