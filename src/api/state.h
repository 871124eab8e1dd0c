#pragma once

#include <kavio/kavio.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "network/api_result.h"
#include "repositories/machine_repository.h"
#include "repositories/repositories.h"
#include "storage/kavio_user_defaults.h"
#include "util/service_object.h"
#include "util/shared_instance.h"

namespace kavio {

/// What a facade knows. Response handlers and scheduled polls hold it weakly, so that nothing happens once the facade is
/// gone. Used on the main thread; no locks.
struct Kavio::State final : ServiceObject, std::enable_shared_from_this<Kavio::State> {
    template <class... Payload>
    using Callback = void (KavioDelegate::*)(KavioDelegate::Result, Payload...);

    explicit State(std::weak_ptr<KavioDelegate> delegate) : mDelegate(std::move(delegate)) {}

    // Response handlers, one an operation.
    void challengeResponse(const APIResult<Challenge>& reply);
    void verifyResponse(const APIResult<Token>& reply);
    void logoutResponse(const APIResult<LogOutResponse>& reply);
    void accountResponse(const APIResult<AccountModel>& reply);
    void paymentMethodsAccountResponse(const APIResult<AccountModel>& reply);
    void prepaidsResponse(PaymentMethods paymentMethods, const APIResult<PrepaidsList>& reply);
    void machinesResponse(const APIResult<std::vector<MachineModel>>& reply);
    void machineProductsResponse(const APIResult<std::vector<MachineProduct>>& reply);
    void placeOrderResponse(const APIResult<OrderModel>& reply);
    void orderStatusResponse(const APIResult<OrderModel>& reply);
    void activitiesResponse(const APIResult<std::vector<OrderActivityModel>>& reply);
    void addCreditCardResponse(const APIResult<AddCreditCardResponse>& reply);
    void removeCreditCardResponse(const APIResult<DeleteCreditResponse>& reply);
    void depositResponse(const APIResult<DepositModel>& reply);

    void fetchAccount();
    void scheduleNextPoll();
    void poll();
    void pollResponse(const APIResult<OrderModel>& reply);

    /// A completion that calls `handler` with the reply while the facade exists, and does nothing afterwards.
    template <class P>
    Completion<P> handled(void (State::*handler)(const APIResult<P>&)) {
        return [weak = weak_from_this(), handler](const APIResult<P>& reply) {
            if (const auto self = weak.lock()) ((*self).*handler)(reply);
        };
    }

    /// The gate of every operation: true when it may go on. Otherwise reports `BUSY` to its callback.
    template <class... Payload>
    bool isIdle(Callback<Payload...> callback) {
        if (mIsBusy) fail(callback, ResultType::BUSY);
        return !mIsBusy;
    }

    /// Reports to the delegate, if it still exists. Always the last thing that an operation does: the delegate may start
    /// the next operation, or destroy the facade.
    template <class... Payload>
    void report(Callback<Payload...> callback, ResultType type, std::optional<std::string> message,
                std::type_identity_t<Payload>... payload) {
        if (const auto delegate = mDelegate.lock()) {
            ((*delegate).*callback)(std::make_shared<const KavioResult>(type, std::move(message)), std::move(payload)...);
        }
    }
    template <class... Payload>
    void succeed(Callback<Payload...> callback, std::type_identity_t<Payload>... payload) {
        report(callback, ResultType::SUCCESS, std::nullopt, std::move(payload)...);
    }
    template <class... Payload>
    void fail(Callback<Payload...> callback, ResultType type, std::optional<std::string> message = std::nullopt) {
        report(callback, type, std::move(message), Payload{}...);
    }
    /// The one rule by which a transport failure becomes a result.
    template <class... Payload>
    void fail(Callback<Payload...> callback, const APIFailure& failure) {
        fail(callback, resultType(failure.status), failure.message ? failure.message : failure.fallbackMessage);
    }
    static ResultType resultType(std::int64_t status);

    std::weak_ptr<KavioDelegate> mDelegate;
    const std::shared_ptr<AccountRepository> mAccountRepo = sharedInstance<AccountRepository>();
    const std::shared_ptr<MachineRepository> mMachineRepo = sharedInstance<MachineRepository>();
    const std::shared_ptr<LoginRepository> mLoginRepo = sharedInstance<LoginRepository>();
    const std::shared_ptr<ActivitiesRepository> mActivitiesRepo = sharedInstance<ActivitiesRepository>();
    const std::shared_ptr<PurchaseRepository> mPurchaseRepo = sharedInstance<PurchaseRepository>();
    const std::shared_ptr<PaymentMethodRepository> mPaymentMethodRepo = sharedInstance<PaymentMethodRepository>();
    const std::shared_ptr<KavioUserDefaults> mKavioUserDefaults = KavioUserDefaults::shared();
    std::shared_ptr<const Order> mLastOrder;
    std::optional<std::string> mLastChallenge;
    std::int64_t mPollingCounter = 0;
    bool mIsBusy = false;
    bool mIsUserLogin = false;
};

}  // namespace kavio
