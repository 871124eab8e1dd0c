#include "models/ascii_text.h"
#include "repositories/repositories.h"
#include "storage/payment_journal.h"

#include <utility>

namespace kavio {
namespace {

// "7" and "+7" name the same order.
bool isSameOrder(const std::string& id, const std::string& other) {
    const auto number = decimalInteger(id);
    return id == other || (number && number == decimalInteger(other));
}

}  // namespace

KnownOrder knownOrder(const OrderModel& model) { return {model.orderId, publicStatus(model.status), model.currency}; }

std::shared_ptr<Sending> PurchaseRepository::purchase(JsonObject params, const std::string& machineId,
                                                      std::string paymentId, Completion<OrderModel> completion) const {
    return sendInBackgroundWithFreshTime<OrderModel>(
        purchaseRequest(machineId, std::move(params)), std::move(completion),
        [paymentId = std::move(paymentId)](const APIResult<OrderModel>& reply) {
            const auto journal = PaymentJournal::shared();
            if (!reply && reply.failure().effect == Effect::NONE) journal->strikeOut(paymentId);
            if (reply && reply.payload()) journal->orderKnown(paymentId, knownOrder(*reply.payload()));
            journal->answered(paymentId);
        });
}

void PurchaseRepository::order(const std::string& orderId, bool statusOnly, Completion<OrderModel> completion) const {
    sendWithFreshTime<OrderModel>(
        getOrderRequest(orderId, statusOnly), std::move(completion), [orderId](APIResult<OrderModel>& reply) {
            if (!reply || !reply.payload()) return;
            if (isSameOrder(reply.payload()->orderId, orderId)) {
                PaymentJournal::shared()->orderSeen(knownOrder(*reply.payload()));
            } else {
                reply =
                    APIResult<OrderModel>::failed({APIError::jsonConversionFailure, 400, std::nullopt, std::nullopt});
            }
        });
}

}  // namespace kavio
