#include "network/send_with_fresh_time.h"
#include "repositories/repositories.h"

#include <utility>

namespace kavio {

void PurchaseRepository::purchase(JsonObject params, const std::string& machineId,
                                  Completion<OrderModel> completion) const {
    sendWithFreshTime(purchaseRequest(machineId, std::move(params)), std::move(completion), SendPath::background);
}

void PurchaseRepository::order(const std::string& orderId, bool statusOnly, Completion<OrderModel> completion) const {
    sendWithFreshTime(getOrderRequest(orderId, statusOnly), std::move(completion));
}

}  // namespace kavio
