#pragma once

#include "network/api_result.h"
#include "storage/payment_journal.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace kavio {

struct DepositModel;
struct OrderModel;

/// What a reply tells of its order.
KnownOrder knownOrder(const OrderModel& model);

/// A payment on its way: keeps what the journal says of it true, from just before it can leave until its answer.
/// Whoever may still send it or hear of it holds it; when the last one lets go, the process waits for it no longer.
class PaymentAttempt {
public:
    explicit PaymentAttempt(UnsettledPayment payment);
    ~PaymentAttempt();
    PaymentAttempt(const PaymentAttempt&) = delete;
    PaymentAttempt& operator=(const PaymentAttempt&) = delete;

    /// Writes it down, at the service's time, which has just been asked for if need be. On a failure it must not be
    /// sent; the failure is what to report then.
    std::optional<APIFailure> begin();
    /// It waits for the network.
    void wait();
    void ended(const APIResult<OrderModel>& reply);
    void ended(const APIResult<DepositModel>& reply);

private:
    void noteFailure(const APIFailure& failure);

    const std::shared_ptr<PaymentJournal> mJournal;
    UnsettledPayment mPayment;
    std::chrono::nanoseconds mBegun{0};  // on the clock that nobody can set
    const std::string mOwner;            // of the token that the request was made with
    std::atomic<bool> mHasWaited = false;
};

}  // namespace kavio
