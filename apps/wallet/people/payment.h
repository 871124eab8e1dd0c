#pragma once

#include "people/session.h"

#include <kavio/unsettled_payment.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kavio::wallet {

/// The payment that a command makes, as the library has written it down.
class Payment {
public:
    /// `doubt` says what may have happened, such as "The order may have been placed".
    Payment(Session& session, std::string doubt);

    /// Starts it, passes on each report, and waits until it is over or no longer followed. At most once. `payment` is
    /// what will be written down of it, by which it is told from the payments of other programs.
    void make(std::string what, UnsettledPayment payment, const Session::Operation& start,
              const std::function<void(const Report&)>& onReport);

    /// What to tell a person who must not pay twice.
    std::string warning() const;
    /// Leaves it as it is: what has not been sent yet never will be. Says what that means.
    Failure leave();

private:
    std::optional<UnsettledPayment> writtenDown() const;

    Session& mSession;
    const std::string mDoubt;
    /// Absent before it is started.
    std::optional<UnsettledPayment> mPayment;
    /// Those that were there before.
    std::vector<UnsettledPayment> mOthers;
    /// Empty before the service has named the order.
    std::string mOrderId;
};

/// Makes a payment that the person may interrupt: `work` is then given up, and the `Failure` says what was paid.
void pay(Session& session, std::string doubt, const std::function<void(Payment&)>& work);

/// A sentence about payments that are not known to be over; empty if there are none.
std::string unsettledSentence(const Session& session);

}  // namespace kavio::wallet
