#include "api/state.h"
#include "models/ascii_text.h"
#include "models/json/json_value.h"
#include "repositories/payment_attempt.h"
#include "time/timer_tool.h"

#include <kavio/platform/platform.h>

#include <algorithm>

namespace kavio {
namespace {

constexpr std::int64_t pollLimit = 60;
constexpr std::int64_t pollIntervalMilliseconds = 1000;

using ProductList = std::vector<std::shared_ptr<const RemoteVendProduct>>;

void add(const ProductList& products, Parameters& params) {
    params.emplace("products", JsonValue::array_t());
    auto& entries = params.at("products").get_ref<JsonValue::array_t&>();
    for (const auto& product : products) {  // in place: to destroy a value with members takes memory
        entries.emplace_back(JsonObject{{"productCode", product->codeInMap},
                                        {"quantityValue", product->quantity},
                                        {"pulseLineNumber", product->pulseLineNumber}});
    }
}

// How an order is paid. Absent for a payment method that cannot pay for orders.
std::optional<Parameters> purchaseParameters(PaymentMethod::PaymentType type, const std::string& id,
                                             std::int64_t amount) {
    Parameters params;
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
            return false;  // any other status ends polling, even one that is added later
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
    mState->perform(&KavioDelegate::onPlaceOrder, Purpose::CHANGE, [&](const State::OrderOperation& operation) {
        const auto type = paymentMethod ? paymentMethod->type : PaymentMethod::PaymentType::UNKNOWN;
        auto params = purchaseParameters(type, paymentMethod ? paymentMethod->id : "", amount);
        if (!params) {
            return operation.fail(ResultType::BAD_INPUT, Cause::INVALID_INPUT,
                                  "selected payment method " + std::string(name(type)) + " is not supported");
        }
        const auto list = std::move(products).value_or(ProductList{});
        if (std::find(list.begin(), list.end(), nullptr) != list.end()) {
            return operation.fail(ResultType::BAD_INPUT, Cause::INVALID_INPUT, "invalid product");
        }
        add(list, *params);
        UnsettledPayment payment{.id = Platform::current().uuid->make(),
                                 .kind = UnsettledPayment::Kind::ORDER,
                                 .kavioId = kavioId,
                                 .amount = amount,
                                 .paymentMethodId = paymentMethod->id,
                                 .paymentType = type};
        auto paymentId = payment.id;
        mState->mPurchase = {mState->mPurchaseRepo->purchase(*std::move(params), std::move(payment),
                                                             operation.then<OrderModel>(&State::placeOrderResponse)),
                             std::move(paymentId)};
    });
}

// A purchase given up before it left is never sent, whatever facade or network comes later.
void Kavio::State::giveUpPurchase() {
    const auto purchase = std::exchange(mPurchase, std::nullopt);
    if (!purchase || !purchase->sending->cancel()) return;
    contained([&] { PaymentJournal::shared()->strikeOut(purchase->paymentId); });
}

void Kavio::State::cancelPurchase() {
    if (mPurchase && mPurchase->sending->cancel()) mPurchase->isCanceled = true;
}

std::shared_ptr<void> Kavio::State::cancelPurchaseWhen(std::stop_token stop) {
    const auto cancel = [weak = weak_from_this(), own = mLastOperation] {
        const auto state = weak.lock();
        if (state && state->isUnderWay(own)) state->cancelPurchase();
    };
    auto onAnyThread = [cancel] { insisted([&] { Platform::current().mainQueue->post(cancel); }); };
    return std::make_shared<std::stop_callback<decltype(onAnyThread)>>(std::move(stop), std::move(onAnyThread));
}

void Kavio::State::placeOrderResponse(const OrderOperation& operation, APIResult<OrderModel> reply) {
    if (operation.isSuperseded()) return;  // a late reply to a purchase that `release` has ended
    const auto purchase = std::exchange(mPurchase, std::nullopt);
    if (purchase && purchase->isCanceled)
        return operation.fail(ResultType::FAILURE, Cause::CANCELED_BY_PERSON, "canceled by user");
    if (!reply) return operation.fail(reply.failure());
    follow(operation, orderOf(std::move(reply).payload()));
}

void Kavio::State::follow(const OrderOperation& operation, std::shared_ptr<const Order> order) {
    auto placed = operation.success();
    mLastOrder = order;
    mPollingCounter = 0;
    mWhyNotFollowed = Cause::FOLLOWING_TIMED_OUT;
    scheduleNextPoll(operation);
    operation.report(placed, std::move(order));
}

// The order of a payment that was in doubt is followed as after its purchase, unless it is already over.
void Kavio::State::orderFound(const OrderOperation& operation, const std::string& paymentId,
                              const PaymentFinding& finding) {
    mPurchaseRepo->order(finding.orderId, false,
                         operation.then<OrderModel>(
                             [paymentId](State& state, const OrderOperation& asking, APIResult<OrderModel> reply) {
                                 if (!reply) return asking.fail(reply.failure(), Effect::DONE);
                                 if (reply.payload())
                                     PaymentJournal::shared()->orderKnown(paymentId, knownOrder(*reply.payload()));
                                 const bool goesOn = reply.payload() && isInProgress(reply.payload()->status);
                                 auto order = orderOf(std::move(reply).payload());
                                 if (goesOn) return state.follow(asking, std::move(order));
                                 asking.succeed(std::move(order));
                             }));
}

void Kavio::State::scheduleNextPoll(const OrderOperation& operation) {
    if (mPollingCounter >= pollLimit) {
        return operation.fail(ResultType::TIMEOUT, mWhyNotFollowed, "polling status timed out", Effect::DONE);
    }
    TimerTool::delay(
        [weak = weak_from_this(), operation] {
            if (const auto self = weak.lock()) self->poll(operation);
        },
        pollIntervalMilliseconds);
}

void Kavio::State::poll(const OrderOperation& operation) {
    if (operation.isSuperseded()) return;
    ++mPollingCounter;
    if (!mLastOrder) return operation.endSilently();
    mPurchaseRepo->order(mLastOrder->id, true, operation.then<OrderModel>(&State::pollResponse));
}

void Kavio::State::pollResponse(const OrderOperation& operation, APIResult<OrderModel> reply) {
    if (operation.isSuperseded()) return;
    mWhyNotFollowed = Cause::FOLLOWING_TIMED_OUT;
    if (!reply) {
        // Without a session no later poll can succeed, unless somebody logs in.
        if (reply.failure().cause == Cause::SESSION_REFUSED) mWhyNotFollowed = Cause::SESSION_REFUSED;
        return scheduleNextPoll(operation);
    }
    const bool goesOn = reply.payload() && isInProgress(reply.payload()->status);
    auto order = orderOf(std::move(reply).payload());
    const bool changed = statusOf(order) != statusOf(mLastOrder);
    auto news = operation.success();
    if (changed) mLastOrder = order;
    if (goesOn) {
        scheduleNextPoll(operation);  // may report TIMEOUT, and the delegate may then destroy the facade
    } else if (changed) {
        operation.end();
    } else {
        operation.endSilently();
    }
    if (changed) operation.report(news, std::move(order));
}

void Kavio::getOrder(std::string orderId) {
    mState->perform(&KavioDelegate::onGetOrder, Purpose::ASK, [&](const State::OrderOperation& operation) {
        if (!decimalInteger(orderId)) {
            return operation.fail(ResultType::BAD_INPUT, Cause::INVALID_INPUT, "{" + orderId + "} is invalid order ID");
        }
        mState->mPurchaseRepo->order(orderId, false, operation.finish<OrderModel>(orderOf));
    });
}

}  // namespace kavio
