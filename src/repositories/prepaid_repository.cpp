#include "network/send_with_fresh_time.h"
#include "repositories/repositories.h"

#include <utility>

namespace kavio {

void PrepaidRepository::prepaidCards(Completion<PrepaidsList> completion) const {
    sendWithFreshTime(prepaidCardsRequest(), std::move(completion));
}

void PrepaidRepository::deposit(const std::string& prepaidId, const Deposit& deposit, UnsettledPayment payment,
                                Completion<DepositModel> completion) const {
    sendDeposit(postPrepaidDepositRequest(prepaidId, deposit), std::move(payment), std::move(completion));
}

}  // namespace kavio
