#include "repositories/payment_attempt.h"

#include "models/ascii_text.h"
#include "models/order_model.h"
#include "models/payment_model.h"
#include "network/environments.h"
#include "network/session.h"
#include "time/reliable_clock.h"

#include <kavio/platform/platform.h>

#include <utility>

namespace kavio {

// "7" and "+7" name the same order.
KnownOrder knownOrder(const OrderModel& model) {
    const auto number = decimalInteger(model.orderId);
    return {number ? std::to_string(*number) : model.orderId, publicStatus(model.status), model.currency,
            model.prepaidDepositCardId};
}

PaymentAttempt::PaymentAttempt(UnsettledPayment payment)
    : mJournal(PaymentJournal::shared()), mPayment(std::move(payment)), mOwner(sessionOwner()) {}

PaymentAttempt::~PaymentAttempt() { mJournal->answered(mPayment.id); }

std::optional<APIFailure> PaymentAttempt::begin() {
    mPayment.startedAt = serverNow();
    mBegun = Platform::current().clock->uptime();
    const bool isWritten = mJournal->begin({.payment = mPayment,
                                            .service = std::string(name(currentApiType())),
                                            .owner = mOwner,
                                            .isTimeKnown = isServerTimeKnown()});
    if (isWritten) return std::nullopt;
    return APIFailure{.error = APIError::requestFailed,
                      .status = statusConnectionFailure,
                      .message = "the payment could not be written down, so it was not made",
                      .fallbackMessage = std::nullopt,
                      .cause = Cause::STORE_FAILED,
                      .effect = Effect::NONE};
}

void PaymentAttempt::wait() {
    if (!mHasWaited) mHasWaited = mJournal->update(mPayment.id, [](JournalEntry& entry) { entry.hasWaited = true; });
}

void PaymentAttempt::ended(const APIResult<OrderModel>& reply) {
    if (!reply) {
        noteFailure(reply.failure());
    } else if (reply.payload()) {
        mJournal->orderKnown(mPayment.id, knownOrder(*reply.payload()));
    }
    mJournal->answered(mPayment.id);
}

void PaymentAttempt::ended(const APIResult<DepositModel>& reply) {
    if (!reply) {
        noteFailure(reply.failure());
    } else {
        mJournal->depositMade(mPayment.id, reply.payload() ? reply.payload()->id : std::nullopt);
    }
    mJournal->answered(mPayment.id);
}

void PaymentAttempt::noteFailure(const APIFailure& failure) {
    if (failure.effect == Effect::NONE) {
        mJournal->strikeOut(mPayment.id);
    } else {
        // Not by the device's clock, which somebody may have set meanwhile.
        const auto taken = Platform::current().clock->uptime() - mBegun;
        mJournal->update(mPayment.id, [&](JournalEntry& entry) { entry.endedAt = entry.payment.startedAt + taken; });
    }
}

}  // namespace kavio
