#pragma once

#include "driver/json.h"

#include <kavio/delegate.h>

#include <functional>
#include <string_view>
#include <variant>

namespace kavio::driver {

using OrderReport = std::shared_ptr<const Order>;
using CardReport = std::shared_ptr<const CreditCard>;

/// What a callback delivers besides its result; `std::monostate` if nothing.
using Payload =
    std::variant<std::monostate, std::optional<PaymentMethods>, std::optional<Machines>, std::optional<Products>,
                 OrderReport, std::optional<std::int64_t>, std::optional<Orders>, CardReport>;

/// One call of one callback.
struct Report {
    std::string_view callback;
    KavioDelegate::Result result;
    std::string_view label = {};
    Payload payload = {};
};

/// The report in the form that programs read; see docs/wallet.md.
Json eventOf(const Report& report, std::string_view facade);

/// The answer to a question that is answered at once.
Json answerOf(std::string_view op, std::string_view facade, const Json& value);

/// The application's delegate: turns every callback into a `Report`.
class Reporter final : public KavioDelegate {
public:
    using Sink = std::function<void(const Report&)>;
    explicit Reporter(Sink sink);

    void onCheckIsUserLogin(Result result) override;
    void onLogin(Result result) override;
    void onVerify(Result result) override;
    void onLogout(Result result) override;
    void onGetPaymentMethods(Result result, std::optional<PaymentMethods> paymentMethods) override;
    void onGetMachines(Result result, std::optional<Machines> machines) override;
    void onGetMachineProducts(Result result, std::optional<Products> products) override;
    void onPlaceOrder(Result result, std::shared_ptr<const Order> order) override;
    void onDeposit(Result result, std::optional<std::int64_t> balance) override;
    void onGetOrder(Result result, std::shared_ptr<const Order> order) override;
    void onGetTransactions(Result result, std::optional<Orders> transactions) override;
    void onAddCreditCard(Result result, std::shared_ptr<const CreditCard> card) override;
    void onRemoveCard(Result result) override;

private:
    const Sink mSink;
};

}  // namespace kavio::driver
