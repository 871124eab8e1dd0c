#include "network/send_with_fresh_time.h"
#include "repositories/repositories.h"

#include <utility>

namespace kavio {

void PrepaidRepository::prepaidCards(Completion<PrepaidsList> completion) const {
    sendWithFreshTime(prepaidCardsRequest(), std::move(completion));
}

void PrepaidRepository::deposit(const std::string& prepaidId, const Deposit& deposit, std::string paymentId,
                                Completion<DepositModel> completion) const {
    sendWithFreshTime(postPrepaidDepositRequest(prepaidId, deposit), std::move(completion),
                      depositRecorder(std::move(paymentId)));
}

}  // namespace kavio
