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
    if (!mState->isIdle(&KavioDelegate::onPlaceOrder)) return;
    const auto type = paymentMethod ? paymentMethod->type : PaymentMethod::PaymentType::UNKNOWN;
    auto params = purchaseParameters(type, paymentMethod ? paymentMethod->id : "", amount);
    if (!params) {
        return mState->fail(&KavioDelegate::onPlaceOrder, ResultType::BAD_INPUT,
                            "selected payment method " + std::string(name(type)) + " is not supported");
    }
    const auto list = std::move(products).value_or(ProductList{});
    if (std::find(list.begin(), list.end(), nullptr) != list.end()) {
        return mState->fail(&KavioDelegate::onPlaceOrder, ResultType::BAD_INPUT, "invalid product");
    }
    params->emplace("products", productEntries(list));
    mState->mIsBusy = true;
    mState->mPurchaseRepo->purchase(*std::move(params), std::to_string(kavioId),
                                    mState->handled(&State::placeOrderResponse));
}

void Kavio::State::placeOrderResponse(APIResult<OrderModel> reply) {
    if (!reply) {
        mIsBusy = false;
        return fail(&KavioDelegate::onPlaceOrder, reply.failure());
    }
    mLastOrder = orderOf(std::move(reply).payload());
    mPollingCounter = 0;
    scheduleNextPoll();
    succeed(&KavioDelegate::onPlaceOrder, mLastOrder);
}

void Kavio::State::scheduleNextPoll() {
    if (mPollingCounter >= pollLimit) {
        mIsBusy = false;
        return fail(&KavioDelegate::onPlaceOrder, ResultType::TIMEOUT, "polling status timed out");
    }
    TimerTool::delay(
        [weak = weak_from_this()] {
            if (const auto self = weak.lock()) self->poll();
        },
        pollIntervalMilliseconds);
}

void Kavio::State::poll() {
    ++mPollingCounter;
    if (!mLastOrder) {
        mIsBusy = false;
        return;
    }
    mPurchaseRepo->order(mLastOrder->id, true, handled(&State::pollResponse));
}

void Kavio::State::pollResponse(APIResult<OrderModel> reply) {
    if (!reply) return scheduleNextPoll();
    const bool goesOn = reply.payload() && isInProgress(reply.payload()->status);
    auto order = orderOf(std::move(reply).payload());
    const bool changed = statusOf(order) != statusOf(mLastOrder);
    if (changed) mLastOrder = order;
    if (goesOn) {
        scheduleNextPoll();  // may report TIMEOUT, and the delegate may then destroy the facade
    } else {
        mIsBusy = false;
    }
    if (changed) succeed(&KavioDelegate::onPlaceOrder, std::move(order));
}

void Kavio::getOrder(std::string orderId) {
    if (!mState->isIdle(&KavioDelegate::onGetOrder)) return;
    if (!decimalInteger(orderId)) {
        return mState->fail(&KavioDelegate::onGetOrder, ResultType::BAD_INPUT, "{" + orderId + "} is invalid order ID");
    }
    mState->mIsBusy = true;
    mState->mPurchaseRepo->order(std::move(orderId), false, mState->handled(&State::orderStatusResponse));
}

void Kavio::State::orderStatusResponse(APIResult<OrderModel> reply) {
    mIsBusy = false;
    if (!reply) return fail(&KavioDelegate::onGetOrder, reply.failure());
    succeed(&KavioDelegate::onGetOrder, orderOf(std::move(reply).payload()));
}

}  // namespace kavio
