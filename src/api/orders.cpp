#include "api/state.h"
#include "models/ascii_text.h"
#include "models/json/json_value.h"
#include "time/timer_tool.h"

#include <algorithm>

namespace kavio {
namespace {

constexpr std::int64_t pollLimit = 60;
constexpr std::int64_t pollIntervalMilliseconds = 1000;

using ProductList = std::vector<std::shared_ptr<const RemoteVendProduct>>;

JsonValue productEntries(const ProductList& products) {
    auto entries = JsonValue::array();
    for (const auto& product : products) {
        entries.push_back(JsonObject{{"productCode", product->codeInMap},
                                     {"quantityValue", product->quantity},
                                     {"pulseLineNumber", product->pulseLineNumber}});
    }
    return entries;
}

// How an order is paid. Absent for a payment method that cannot pay one.
std::optional<JsonObject> purchaseParameters(PaymentMethod::PaymentType type, const std::string& id,
                                             std::int64_t amount) {
    JsonObject params;
    switch (type) {
        case PaymentMethod::PaymentType::KAVIO:
            params["amount"] = amount;
            return params;
        case PaymentMethod::PaymentType::CREDIT_CARD:
            params["tokenLocator"] = id;
            params["amount"] = amount;
            return params;
        case PaymentMethod::PaymentType::PREPAID:
            params["prepaidCardId"] = id;
            return params;
        case PaymentMethod::PaymentType::UNKNOWN:
        case PaymentMethod::PaymentType::PAYPAL:
            return std::nullopt;
    }
    return std::nullopt;
}

bool isInProgress(OrderStatus status) {
    switch (status) {
        case OrderStatus::created:
        case OrderStatus::createdPreselection:
        case OrderStatus::started:
        case OrderStatus::startedPreselection:
        case OrderStatus::authorized:
            return true;
        default:
            return false;  // every other status ends polling, one that is added later too
    }
}

std::shared_ptr<const Order> orderOf(std::optional<OrderModel> model) {
    return model ? publicObject(*std::move(model)) : nullptr;
}

// An absent order counts as a status of its own.
std::optional<Order::Status> statusOf(const std::shared_ptr<const Order>& order) {
    return order ? std::optional(order->status) : std::nullopt;
}

}  // namespace

void Kavio::placeOrder(std::int64_t kavioId, std::shared_ptr<const PaymentMethod> paymentMethod, std::int64_t amount,
                       std::optional<ProductList> products) {
    const auto operation = mState->begin(&KavioDelegate::onPlaceOrder);
    if (!operation) return;
    const auto type = paymentMethod ? paymentMethod->type : PaymentMethod::PaymentType::UNKNOWN;
    auto params = purchaseParameters(type, paymentMethod ? paymentMethod->id : "", amount);
    if (!params) {
        return operation->fail(ResultType::BAD_INPUT,
                               "selected payment method " + std::string(name(type)) + " is not supported");
    }
    const auto list = std::move(products).value_or(ProductList{});
    if (std::find(list.begin(), list.end(), nullptr) != list.end()) {
        return operation->fail(ResultType::BAD_INPUT, "invalid product");
    }
    params->emplace("products", productEntries(list));
    mState->mPurchaseRepo->purchase(*std::move(params), std::to_string(kavioId),
                                    operation->then<OrderModel>(&State::placeOrderResponse));
}

void Kavio::State::placeOrderResponse(const OrderOperation& operation, APIResult<OrderModel> reply) {
    if (!reply) return operation.fail(reply.failure());
    mLastOrder = orderOf(std::move(reply).payload());
    mPollingCounter = 0;
    scheduleNextPoll(operation);
    operation.report(ResultType::SUCCESS, std::nullopt, mLastOrder);
}

void Kavio::State::scheduleNextPoll(const OrderOperation& operation) {
    if (mPollingCounter >= pollLimit) return operation.fail(ResultType::TIMEOUT, "polling status timed out");
    TimerTool::delay(
        [weak = weak_from_this(), operation] {
            if (const auto self = weak.lock()) self->poll(operation);
        },
        pollIntervalMilliseconds);
}

void Kavio::State::poll(const OrderOperation& operation) {
    ++mPollingCounter;
    if (!mLastOrder) return operation.end();
    mPurchaseRepo->order(mLastOrder->id, true, operation.then<OrderModel>(&State::pollResponse));
}

void Kavio::State::pollResponse(const OrderOperation& operation, APIResult<OrderModel> reply) {
    if (!reply) return scheduleNextPoll(operation);
    const bool goesOn = reply.payload() && isInProgress(reply.payload()->status);
    auto order = orderOf(std::move(reply).payload());
    const bool changed = statusOf(order) != statusOf(mLastOrder);
    if (changed) mLastOrder = order;
    if (goesOn) {
        scheduleNextPoll(operation);  // may report TIMEOUT, and the delegate may then destroy the facade
    } else {
        operation.end();
    }
    if (changed) operation.report(ResultType::SUCCESS, std::nullopt, std::move(order));
}

void Kavio::getOrder(std::string orderId) {
    const auto operation = mState->begin(&KavioDelegate::onGetOrder);
    if (!operation) return;
    if (!decimalInteger(orderId)) {
        return operation->fail(ResultType::BAD_INPUT, "{" + orderId + "} is invalid order ID");
    }
    mState->mPurchaseRepo->order(std::move(orderId), false, operation->finish<OrderModel>(orderOf));
}

}  // namespace kavio
