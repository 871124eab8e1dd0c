#include "support/recording_delegate.h"

#include <ostream>

namespace kavio::test {
namespace {

std::string shown(const std::shared_ptr<const Order>& order) {
    return order ? order->id + " " + std::string(name(order->status)) : "none";
}

template <class List>
std::string count(const std::optional<List>& list) {
    return list ? std::to_string(list->size()) : "none";
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Report& report) {
    return out << report.callback << " " << name(report.type) << " \"" << report.message.value_or("none") << "\" "
               << report.payload;
}

void RecordingDelegate::onGetPaymentMethods(Result result, std::optional<PaymentMethods> methods) {
    paymentMethods = methods.value_or(PaymentMethods{});
    record("onGetPaymentMethods", *result, count(methods));
}

void RecordingDelegate::onGetMachines(Result result, std::optional<Machines> found) {
    machines = found.value_or(Machines{});
    record("onGetMachines", *result, count(found));
}

void RecordingDelegate::onGetMachineProducts(Result result, std::optional<Products> found) {
    products = found.value_or(Products{});
    record("onGetMachineProducts", *result, count(found));
}

void RecordingDelegate::onPlaceOrder(Result result, std::shared_ptr<const Order> order) {
    record("onPlaceOrder", *result, shown(order));
}

void RecordingDelegate::onDeposit(Result result, std::optional<std::int64_t> balance) {
    record("onDeposit", *result, balance ? std::to_string(*balance) : "none");
}

void RecordingDelegate::onGetOrder(Result result, std::shared_ptr<const Order> order) {
    record("onGetOrder", *result, shown(order));
}

void RecordingDelegate::onGetTransactions(Result result, std::optional<Orders> transactions) {
    orders = transactions.value_or(Orders{});
    record("onGetTransactions", *result, count(transactions));
}

void RecordingDelegate::onAddCreditCard(Result result, std::shared_ptr<const CreditCard> card) {
    record("onAddCreditCard", *result, card ? card->id : "none");
}

void RecordingDelegate::record(std::string callback, const KavioResult& result, std::string payload) {
    reports.push_back({std::move(callback), result.type, result.message, std::move(payload)});
    threads.push_back(std::this_thread::get_id());
    if (!onReport) return;
    const auto report = reports.back();  // the reaction may destroy this
    const auto reaction = onReport;
    reaction(report);
}

}  // namespace kavio::test
