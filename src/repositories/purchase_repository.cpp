#include "models/ascii_text.h"
#include "network/environments.h"
#include "repositories/payment_attempt.h"
#include "repositories/repositories.h"

#include <utility>

namespace kavio {
std::shared_ptr<Sending> PurchaseRepository::purchase(Parameters params, UnsettledPayment payment,
                                                      Completion<OrderModel> completion) const {
    auto request = purchaseRequest(std::to_string(payment.kavioId.value_or(0)), std::move(params));
    const auto attempt = std::make_shared<PaymentAttempt>(std::move(payment));
    request.willWait = [attempt] { attempt->wait(); };
    return sendInBackgroundWithFreshTime<OrderModel>(
        std::move(request), std::move(completion),
        [attempt](const APIResult<OrderModel>& reply) { attempt->ended(reply); },
        [attempt] { return attempt->begin(); });
}

void PurchaseRepository::order(const std::string& orderId, bool statusOnly, Completion<OrderModel> completion) const {
    sendWithFreshTime<OrderModel>(
        getOrderRequest(orderId, statusOnly), std::move(completion),
        [orderId, service = std::string(name(currentApiType()))](APIResult<OrderModel>& reply) {
            if (!reply || !reply.payload()) return;
            const auto order = knownOrder(*reply.payload());
            if (order.id == orderId || decimalInteger(order.id) == decimalInteger(orderId)) {
                PaymentJournal::shared()->orderSeen(service, order);
            } else {
                reply =
                    APIResult<OrderModel>::failed({APIError::jsonConversionFailure, 400, std::nullopt, std::nullopt});
            }
        });
}

}  // namespace kavio
