#include "api/state.h"

#include <kavio/async.h>

namespace kavio {
namespace {

/// As the operation's own payload.
template <class Payload>
Payload payloadOf(const AnyPayload& payload) {
    const auto* own = std::get_if<Payload>(&payload);
    return own == nullptr ? Payload{} : *own;
}
template <>
Nothing payloadOf(const AnyPayload& /*payload*/) {
    return {};
}
template <>
Settlement payloadOf(const AnyPayload& payload) {
    return {payloadOf<std::shared_ptr<const Order>>(payload), payloadOf<std::optional<std::int64_t>>(payload)};
}

/// Passes on to an operation's progress what the facade reports. What was reported is kept even without memory.
template <class Payload>
class Teller final : public Listener {
public:
    explicit Teller(std::shared_ptr<Progress<Payload>> progress) : mProgress(std::move(progress)) {}

    void report(const KavioDelegate::Result& result, const AnyPayload& payload, bool isLast) override {
        change(isLast, [&] { mProgress->add({result, payloadOf<Payload>(payload)}); });
    }
    void end() override {
        change(true, [] {});
    }
    void abandon() override {
        change(true, [&] { mProgress->add({released(), Payload{}}); });
    }

private:
    static KavioDelegate::Result released() {
        return std::make_shared<const KavioResult>(ResultType::FAILURE, "the wallet was released", Effect::UNKNOWN,
                                                   Cause::RELEASED);
    }
    template <class Change>
    void change(bool isLast, Change make) {
        const auto progress = mProgress;  // whoever is told may let go of everything
        if (progress->isOver()) return;
        insisted(make);
        if (isLast) progress->end();
        progress->tell();
    }

    const std::shared_ptr<Progress<Payload>> mProgress;
};

}  // namespace

AsyncKavio::AsyncKavio(std::string apiKey, Kavio::EnvironmentType environment, std::weak_ptr<KavioDelegate> delegate)
    : mKavio(std::make_unique<Kavio>(std::move(delegate), std::move(apiKey), environment)) {}

// Who is told of the end may still use this object.
AsyncKavio::~AsyncKavio() { mKavio->mState->abandon(); }

void AsyncKavio::release() { mKavio->release(mKavio.get()); }

template <class Payload, class... Parameters>
Operation<Payload> AsyncKavio::start(void (Kavio::*call)(Parameters...),
                                     std::type_identity_t<Parameters>... arguments) {
    return start(std::make_shared<Progress<Payload>>(), call, std::move(arguments)...);
}

template <class Payload, class... Parameters>
Operation<Payload> AsyncKavio::start(const std::shared_ptr<Progress<Payload>>& progress,
                                     void (Kavio::*call)(Parameters...),
                                     std::type_identity_t<Parameters>... arguments) {
    mKavio->mState->mNextListener = std::make_shared<Teller<Payload>>(progress);
    ((*mKavio).*call)(std::move(arguments)...);  // a delegate may destroy the wallet in it
    return Operation<Payload>(progress);
}

Operation<> AsyncKavio::isLoggedIn() { return start<Nothing>(&Kavio::isLoggedIn); }
Operation<> AsyncKavio::login(std::string countryCode, std::string phoneNumber) {
    return start<Nothing>(&Kavio::login, std::move(countryCode), std::move(phoneNumber));
}
Operation<> AsyncKavio::verify(std::string otp, std::string country, std::string countryCode, std::string phoneNumber) {
    return start<Nothing>(&Kavio::verify, std::move(otp), std::move(country), std::move(countryCode),
                          std::move(phoneNumber));
}
Operation<> AsyncKavio::logout() { return start<Nothing>(&Kavio::logout); }

Operation<std::optional<PaymentMethods>> AsyncKavio::getPaymentMethods() {
    return start<std::optional<PaymentMethods>>(&Kavio::getPaymentMethods);
}
Operation<std::optional<Machines>> AsyncKavio::getMachines(std::shared_ptr<const MachineFilter> filter) {
    return start<std::optional<Machines>>(&Kavio::getMachines, std::move(filter));
}
Operation<std::optional<Products>> AsyncKavio::getMachineProducts(std::int64_t machineId) {
    return start<std::optional<Products>>(&Kavio::getMachineProducts, machineId);
}
Operation<std::optional<Orders>> AsyncKavio::getTransactions(std::shared_ptr<const TransactionFilter> filter) {
    return start<std::optional<Orders>>(&Kavio::getTransactions, std::move(filter));
}
Operation<std::shared_ptr<const Order>> AsyncKavio::getOrder(std::string orderId) {
    return start<std::shared_ptr<const Order>>(&Kavio::getOrder, std::move(orderId));
}

Operation<std::shared_ptr<const Order>> AsyncKavio::placeOrder(
    std::int64_t kavioId, std::shared_ptr<const PaymentMethod> paymentMethod, std::int64_t amount,
    std::optional<std::vector<std::shared_ptr<const RemoteVendProduct>>> products, std::stop_token stop) {
    const auto progress = std::make_shared<Progress<std::shared_ptr<const Order>>>();
    if (stop.stop_requested()) {
        progress->add({std::make_shared<const KavioResult>(ResultType::FAILURE, "canceled by user", Effect::NONE,
                                                           Cause::CANCELED_BY_PERSON)});
        progress->end();
        return Operation(progress);
    }
    const std::weak_ptr<Kavio::State> weak = mKavio->mState;
    auto operation =
        start(progress, &Kavio::placeOrder, kavioId, std::move(paymentMethod), amount, std::move(products));
    const auto state = weak.lock();
    if (state && !operation.isOver()) progress->kept = state->cancelPurchaseWhen(std::move(stop));
    return operation;
}

Operation<std::shared_ptr<const CreditCard>> AsyncKavio::addCreditCard(std::shared_ptr<const Card> card) {
    return start<std::shared_ptr<const CreditCard>>(&Kavio::addCreditCard, std::move(card));
}
Operation<std::shared_ptr<const CreditCard>> AsyncKavio::addCreditCardTDSecure(TDSPaymentCard paymentCard,
                                                                               TDSCardHolder cardHolder) {
    return start<std::shared_ptr<const CreditCard>>(&Kavio::addCreditCardTDSecure, std::move(paymentCard),
                                                    std::move(cardHolder));
}
Operation<> AsyncKavio::removeCard(std::string id) { return start<Nothing>(&Kavio::removeCard, std::move(id)); }
Operation<std::optional<std::int64_t>> AsyncKavio::deposit(std::shared_ptr<const DepositCard> depositCard,
                                                           double amount, std::string chargedCardId) {
    return start<std::optional<std::int64_t>>(&Kavio::deposit, std::move(depositCard), amount,
                                              std::move(chargedCardId));
}
Operation<Settlement> AsyncKavio::settlePayment(std::string id) {
    return start<Settlement>(&Kavio::settlePayment, std::move(id));
}

}  // namespace kavio
