#pragma once

#include "models/td_secure_replies.h"
#include "network/api_result.h"
#include "repositories/repositories.h"
#include "storage/kavio_user_defaults.h"
#include "tdsecure/td_secure_scene_controller.h"
#include "util/service_object.h"
#include "util/shared_instance.h"

#include <kavio/kavio.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace kavio {

/// What a facade knows. Used on the main thread; no locks.
struct Kavio::State final : ServiceObject, std::enable_shared_from_this<Kavio::State> {
    template <class... Payload>
    using Callback = void (KavioDelegate::*)(KavioDelegate::Result, Payload...);
    template <class... Payload>
    class Operation;
    using PaymentMethodsOperation = Operation<std::optional<PaymentMethods>>;
    using OrderOperation = Operation<std::shared_ptr<const Order>>;
    class Enrolment;
    /// The application version that the account is asked for with.
    static constexpr const char* accountAppVersion = "2.5";

    explicit State(std::weak_ptr<KavioDelegate> delegate) : mDelegate(std::move(delegate)) {}
    /// Takes part in what happens to the issuer's pages, until `release`.
    void attachToScene();

    /// The gate of every operation. Empty while another one is under way: that has been reported as `BUSY` then.
    template <class... Payload>
    std::optional<Operation<Payload...>> begin(Callback<Payload...> callback);

    // Handlers of replies that change what the facade knows, or that are not the end of their operation.
    void challengeResponse(const Operation<>& operation, APIResult<Challenge> reply);
    void verifyResponse(const Operation<>& operation, APIResult<Token> reply);
    void accountResponse(const PaymentMethodsOperation& operation, APIResult<AccountModel> reply);
    void placeOrderResponse(const OrderOperation& operation, APIResult<OrderModel> reply);
    void scheduleNextPoll(const OrderOperation& operation);
    void poll(const OrderOperation& operation);
    void pollResponse(const OrderOperation& operation, APIResult<OrderModel> reply);

    std::weak_ptr<KavioDelegate> mDelegate;
    const std::shared_ptr<AccountRepository> mAccountRepo = sharedInstance<AccountRepository>();
    const std::shared_ptr<MachineRepository> mMachineRepo = sharedInstance<MachineRepository>();
    const std::shared_ptr<LoginRepository> mLoginRepo = sharedInstance<LoginRepository>();
    const std::shared_ptr<ActivitiesRepository> mActivitiesRepo = sharedInstance<ActivitiesRepository>();
    const std::shared_ptr<PurchaseRepository> mPurchaseRepo = sharedInstance<PurchaseRepository>();
    const std::shared_ptr<PaymentMethodRepository> mPaymentMethodRepo = sharedInstance<PaymentMethodRepository>();
    const std::shared_ptr<PrepaidRepository> mPrepaidRepo = sharedInstance<PrepaidRepository>();
    const std::shared_ptr<KavioUserDefaults> mKavioUserDefaults = KavioUserDefaults::shared();
    const std::shared_ptr<TDSecureSceneController> mTDSecSceneController = TDSecureSceneController::takeUse();
    std::shared_ptr<const Order> mLastOrder;
    std::optional<std::string> mLastChallenge;
    std::shared_ptr<Enrolment> mEnrolment;  // the last one
    std::int64_t mPollingCounter = 0;
    std::int64_t mLastOperation = 0;  // its number
    bool mIsBusy = false;             // it is under way
};

/// One operation, from the gate to its last report. Whoever waits for a reply or a delay holds it, and through it the
/// facade weakly: nothing happens once the facade is gone, and an operation that `release` has ended ends no later one.
template <class... Payload>
class Kavio::State::Operation {
public:
    Operation(std::weak_ptr<State> state, Callback<Payload...> callback, std::int64_t number)
        : mState(std::move(state)), mCallback(callback), mNumber(number) {}

    bool isUnderWay() const {
        const auto state = mState.lock();
        return state && state->mIsBusy && state->mLastOperation == mNumber;
    }
    void end() const {
        if (isUnderWay()) mState.lock()->mIsBusy = false;
    }

    /// Tells the delegate, if it still exists. Always the last thing that is done: the delegate may start the next
    /// operation, or destroy the facade.
    void report(ResultType type, std::optional<std::string> message, Payload... payload) const {
        const auto state = mState.lock();
        const auto delegate = state ? state->mDelegate.lock() : nullptr;
        if (!delegate) return;
        ((*delegate).*mCallback)(std::make_shared<const KavioResult>(type, std::move(message)), std::move(payload)...);
    }
    void succeed(Payload... payload) const {
        end();
        report(ResultType::SUCCESS, std::nullopt, std::move(payload)...);
    }
    void fail(ResultType type, std::optional<std::string> message = std::nullopt) const {
        end();
        report(type, std::move(message), Payload{}...);
    }
    /// The one rule by which a transport failure becomes a result.
    void fail(const APIFailure& failure) const {
        fail(resultType(failure.status), failure.message ? failure.message : failure.fallbackMessage);
    }

    /// A completion that calls `handler` with the state, this operation and the reply.
    template <class Reply, class Handler>
    Completion<Reply> then(Handler handler) const {
        return [operation = *this, handler = std::move(handler)](APIResult<Reply> reply) {
            if (const auto state = operation.mState.lock()) {
                std::invoke(handler, *state, operation, std::move(reply));
            }
        };
    }
    /// A completion that ends the operation, on success with the payload that `payloadOf` makes of the reply's.
    template <class Reply, class PayloadOf>
    Completion<Reply> finish(PayloadOf payloadOf) const {
        return then<Reply>(
            [payloadOf = std::move(payloadOf)](State&, const Operation& operation, APIResult<Reply> reply) {
                if (!reply) return operation.fail(reply.failure());
                operation.succeed(payloadOf(std::move(reply).payload()));
            });
    }
    /// The same where only success counts.
    template <class Reply>
    Completion<Reply> finish() const {
        return then<Reply>([](State&, const Operation& operation, const APIResult<Reply>& reply) {
            reply ? operation.succeed() : operation.fail(reply.failure());
        });
    }

private:
    static ResultType resultType(std::int64_t status) {
        if (status == 401) return ResultType::ACCESS_DENIED;
        if (status == 400) return ResultType::BAD_INPUT;
        if (status == statusNoConnection) return ResultType::NETWORK_FAILED;
        return status >= 500 && status <= 599 ? ResultType::SERVER_ERROR : ResultType::FAILURE;
    }

    std::weak_ptr<State> mState;
    Callback<Payload...> mCallback;
    std::int64_t mNumber;
};

template <class... Payload>
std::optional<Kavio::State::Operation<Payload...>> Kavio::State::begin(Callback<Payload...> callback) {
    if (mIsBusy) {
        Operation<Payload...>(weak_from_this(), callback, 0).fail(ResultType::BUSY);
        return std::nullopt;
    }
    mIsBusy = true;
    return Operation<Payload...>(weak_from_this(), callback, ++mLastOperation);
}

}  // namespace kavio
