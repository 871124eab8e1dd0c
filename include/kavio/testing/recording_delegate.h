#pragma once

#include <kavio/kavio.h>
#include <kavio/testing/boundary.h>

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace kavio::test {

/// One call of a delegate: which callback, the result, and the payload as a short text ("none" if absent).
struct Report {
    std::string callback;                               ///< such as "onLogin"
    ResultType type;                                    ///< of the result
    std::optional<std::string> message = std::nullopt;  ///< of the result
    std::string payload = "none";                       ///< such as a count, or an order's number and status

    bool operator==(const Report&) const = default;
};

/// As a test's failure shows it.
inline std::ostream& operator<<(std::ostream& out, const Report& report) {
    return out << report.callback << " " << name(report.type) << " \"" << report.message.value_or("none") << "\" "
               << report.payload;
}

/// Keeps every report in order. `onReport` runs inside the callback, as an application's own code would.
class RecordingDelegate final : public KavioDelegate, public std::enable_shared_from_this<RecordingDelegate> {
public:
    std::vector<Report> reports;                  ///< in the order in which they came
    std::vector<std::string> outcomes;            ///< effect and cause of each report, such as "NONE BUSY"
    std::function<void(const Report&)> onReport;  ///< called with each report; may destroy this object
    PaymentMethods paymentMethods;                ///< of the last `onGetPaymentMethods`

    /// Drops the reports so far.
    void forget() { reports.clear(), outcomes.clear(); }

    void onCheckIsUserLogin(Result result) override { record("onCheckIsUserLogin", *result); }
    void onLogin(Result result) override { record("onLogin", *result); }
    void onVerify(Result result) override { record("onVerify", *result); }
    void onLogout(Result result) override { record("onLogout", *result); }
    void onGetPaymentMethods(Result result, std::optional<PaymentMethods> methods) override {
        const OutsideLibrary called;
        paymentMethods = methods.value_or(PaymentMethods{});
        record("onGetPaymentMethods", *result, count(methods));
    }
    void onGetMachines(Result result, std::optional<Machines> machines) override {
        record("onGetMachines", *result, count(machines));
    }
    void onGetMachineProducts(Result result, std::optional<Products> products) override {
        record("onGetMachineProducts", *result, count(products));
    }
    void onPlaceOrder(Result result, std::shared_ptr<const Order> order) override {
        record("onPlaceOrder", *result, shown(order));
    }
    void onDeposit(Result result, std::optional<std::int64_t> balance) override {
        record("onDeposit", *result, balance ? std::to_string(*balance) : "none");
    }
    void onGetOrder(Result result, std::shared_ptr<const Order> order) override {
        record("onGetOrder", *result, shown(order));
    }
    void onGetTransactions(Result result, std::optional<Orders> transactions) override {
        record("onGetTransactions", *result, count(transactions));
    }
    void onAddCreditCard(Result result, std::shared_ptr<const CreditCard> card) override {
        record("onAddCreditCard", *result, card ? card->id : "none");
    }
    void onRemoveCard(Result result) override { record("onRemoveCard", *result); }

private:
    static std::string shown(const std::shared_ptr<const Order>& order) {
        const OutsideLibrary called;
        return order ? order->id + " " + std::string(name(order->status)) : "none";
    }
    template <class List>
    static std::string count(const std::optional<List>& list) {
        return list ? std::to_string(list->size()) : "none";
    }
    void record(const char* callback, const KavioResult& result, const std::string& payload = "none") {
        const OutsideLibrary called;
        reports.push_back({callback, result.type, result.message, payload});
        outcomes.push_back(std::string(name(result.effect)) + " " + std::string(name(result.cause)));
        if (!onReport) return;
        const auto report = reports.back();  // the reaction may destroy this
        const auto reaction = onReport;
        reaction(report);
    }
};

}  // namespace kavio::test
