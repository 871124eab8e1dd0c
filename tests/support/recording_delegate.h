#pragma once

#include <kavio/kavio.h>

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace kavio::test {

/// One call of a delegate: which callback, the result, and the payload as a short text ("none" when it is absent).
struct Report {
    std::string callback;
    ResultType type;
    std::optional<std::string> message = std::nullopt;
    std::string payload = "none";

    bool operator==(const Report&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Report& report);

/// Keeps every report in order. `onReport` runs inside the callback, as an application's own code would.
class RecordingDelegate final : public KavioDelegate {
public:
    std::vector<Report> reports;
    std::vector<std::thread::id> threads;
    std::function<void(const Report&)> onReport;
    /// The objects of the last report that carried some.
    PaymentMethods paymentMethods;
    Machines machines;
    Products products;
    Orders orders;

    void onCheckIsUserLogin(Result result) override { record("onCheckIsUserLogin", *result); }
    void onLogin(Result result) override { record("onLogin", *result); }
    void onVerify(Result result) override { record("onVerify", *result); }
    void onLogout(Result result) override { record("onLogout", *result); }
    void onGetPaymentMethods(Result result, std::optional<PaymentMethods> methods) override;
    void onGetMachines(Result result, std::optional<Machines> found) override;
    void onGetMachineProducts(Result result, std::optional<Products> found) override;
    void onPlaceOrder(Result result, std::shared_ptr<const Order> order) override;
    void onDeposit(Result result, std::optional<std::int64_t> balance) override;
    void onGetOrder(Result result, std::shared_ptr<const Order> order) override;
    void onGetTransactions(Result result, std::optional<Orders> transactions) override;
    void onAddCreditCard(Result result, std::shared_ptr<const CreditCard> card) override;
    void onRemoveCard(Result result) override { record("onRemoveCard", *result); }

private:
    void record(std::string callback, const KavioResult& result, std::string payload = "none");
};

}  // namespace kavio::test
