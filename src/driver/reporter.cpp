#include "driver/reporter.h"

#include "driver/objects.h"

#include <kavio/threads_manager.h>

#include <utility>

namespace kavio::driver {

namespace {

struct PayloadWriter {
    Json& event;
    std::string_view label;

    void operator()(std::monostate) const {}
    void operator()(const auto& payload) const { event[std::string{label}] = payload; }
};

}  // namespace

Json eventOf(const Report& report, std::string_view facade) {
    Json event = {
        {"event", "callback"},     {"callback", report.callback},
        {"facade", facade},        {"onMainThread", ThreadsManager::isMainThread()},
        {"result", report.result},
    };
    std::visit(PayloadWriter{event, report.label}, report.payload);
    return event;
}

Json answerOf(std::string_view op, std::string_view facade, const Json& value) {
    return {{"event", "return"}, {"op", op}, {"facade", facade}, {"value", value}};
}

Reporter::Reporter(Sink sink) : mSink(std::move(sink)) {}

void Reporter::onCheckIsUserLogin(Result result) { mSink({"onCheckIsUserLogin", result}); }
void Reporter::onLogin(Result result) { mSink({"onLogin", result}); }
void Reporter::onVerify(Result result) { mSink({"onVerify", result}); }
void Reporter::onLogout(Result result) { mSink({"onLogout", result}); }
void Reporter::onGetPaymentMethods(Result result, std::optional<PaymentMethods> paymentMethods) {
    mSink({"onGetPaymentMethods", result, "paymentMethods", std::move(paymentMethods)});
}
void Reporter::onGetMachines(Result result, std::optional<Machines> machines) {
    mSink({"onGetMachines", result, "machines", std::move(machines)});
}
void Reporter::onGetMachineProducts(Result result, std::optional<Products> products) {
    mSink({"onGetMachineProducts", result, "products", std::move(products)});
}
void Reporter::onPlaceOrder(Result result, OrderReport order) {
    mSink({"onPlaceOrder", result, "order", std::move(order)});
}
void Reporter::onDeposit(Result result, std::optional<std::int64_t> balance) {
    mSink({"onDeposit", result, "balance", balance});
}
void Reporter::onGetOrder(Result result, OrderReport order) {
    mSink({"onGetOrder", result, "order", std::move(order)});
}
void Reporter::onGetTransactions(Result result, std::optional<Orders> transactions) {
    mSink({"onGetTransactions", result, "transactions", std::move(transactions)});
}
void Reporter::onAddCreditCard(Result result, CardReport card) {
    mSink({"onAddCreditCard", result, "card", std::move(card)});
}
void Reporter::onRemoveCard(Result result) { mSink({"onRemoveCard", result}); }

}  // namespace kavio::driver
