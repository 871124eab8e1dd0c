#pragma once

#include <kavio/kavio.h>
#include <kavio/testing/device.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace kavio::simulate {

/// A rule that does not hold; `what` says what happened.
struct Violation : std::runtime_error {
    Violation(std::string broken, const std::string& what) : std::runtime_error(what), rule(std::move(broken)) {}
    std::string rule;
};

/// Each callback of the delegate.
enum class Callback {
    SESSION,
    LOGIN,
    VERIFY,
    LOGOUT,
    METHODS,
    MACHINES,
    PRODUCTS,
    PLACE_ORDER,
    DEPOSIT,
    ORDER,
    TRANSACTIONS,
    ADD_CARD,
    REMOVE_CARD,
};

/// A purchase or deposit that the person has asked for. Its amount is its own, so that the service's orders can be told
/// apart.
struct Payment {
    std::int64_t amount = 0;
    bool isDeposit = false;
    Kavio::EnvironmentType environment = Kavio::EnvironmentType::TEST;
    std::optional<Effect> told{};   // what the last report said
    bool hasNeverLeft = false;      // the network has been cut all along
    bool isGivenUpUnsent = false;   // and then the application let go of it
    bool isSettledUnheard = false;  // the application let go while it was asking
    bool isForgotten = false;       // by the person
};

/// One call of an operation.
struct Operation {
    Callback callback;
    std::optional<std::size_t> payment{};
    bool isSettling = false;  // asks what became of the payment
    bool mustBeBusy = false;  // another one was under way
    bool isCalling = true;    // has not returned yet
    bool isOver = false;
    int reports = 0;
    bool hasTimedOut = false;
    std::optional<Order::Status> status{};
};

using Listener = std::function<void(const std::string& report)>;

/// What the application was told, operation by operation, and the rules that every report must keep. One per facade.
class Ledger final : public KavioDelegate {
public:
    Ledger(const test::Timeline& time, std::vector<Payment>& payments, Listener listen = nullptr)
        : mTime(time), mPayments(payments), mListen(std::move(listen)) {}

    /// Calls an operation that reports to `callback`.
    template <class Call>
    void perform(Kavio& kavio, Callback callback, std::optional<std::size_t> payment, Call call,
                 bool isSettling = false) {
        mKavio = &kavio;
        mOperations.push_back(
            {.callback = callback, .payment = payment, .isSettling = isSettling, .mustBeBusy = kavio.isBusy()});
        if (mIsSilent && isSettling) mPayments[*payment].isSettledUnheard = true;
        call(kavio);
        returned();
    }
    /// Checks what must hold between any two pieces of work.
    void check();
    /// Checks that everything has been reported.
    void checkEnd() const;
    /// Nothing may be reported any more. The payments that were still waiting.
    std::vector<std::size_t> silence();
    bool isLastFailureOf(Cause cause) const { return mLastCause == cause; }

    void onCheckIsUserLogin(Result result) override { heard(Callback::SESSION, *result); }
    void onLogin(Result result) override { heard(Callback::LOGIN, *result); }
    void onVerify(Result result) override { heard(Callback::VERIFY, *result); }
    void onLogout(Result result) override { heard(Callback::LOGOUT, *result); }
    void onGetPaymentMethods(Result result, std::optional<PaymentMethods> list) override;
    void onGetMachines(Result result, std::optional<Machines>) override { heard(Callback::MACHINES, *result); }
    void onGetMachineProducts(Result result, std::optional<Products>) override { heard(Callback::PRODUCTS, *result); }
    void onPlaceOrder(Result result, std::shared_ptr<const Order> order) override {
        heard(Callback::PLACE_ORDER, *result, order.get());
    }
    void onDeposit(Result result, std::optional<std::int64_t>) override { heard(Callback::DEPOSIT, *result); }
    void onGetOrder(Result result, std::shared_ptr<const Order>) override { heard(Callback::ORDER, *result); }
    void onGetTransactions(Result result, std::optional<Orders>) override { heard(Callback::TRANSACTIONS, *result); }
    void onAddCreditCard(Result result, std::shared_ptr<const CreditCard>) override {
        heard(Callback::ADD_CARD, *result);
    }
    void onRemoveCard(Result result) override { heard(Callback::REMOVE_CARD, *result); }

    PaymentMethods methods;
    std::string lastOrder = "1";
    /// Called when a logout has succeeded.
    std::function<void()> onLoggedOut;

private:
    void heard(Callback callback, const KavioResult& result, const Order* order = nullptr);
    void heardOrder(Operation& operation, const KavioResult& result, const Order* order);
    void notePayment(Operation& operation, const KavioResult& result);
    void returned();

    const test::Timeline& mTime;
    std::vector<Payment>& mPayments;
    const Listener mListen;
    Kavio* mKavio = nullptr;
    std::vector<Operation> mOperations;
    bool mIsSilent = false;
    Cause mLastCause = Cause::NONE;
};

}  // namespace kavio::simulate
