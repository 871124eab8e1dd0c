#pragma once

#include "models/td_secure_replies.h"
#include "network/api_result.h"
#include "repositories/payment_search.h"
#include "repositories/repositories.h"
#include "storage/kavio_user_defaults.h"
#include "storage/payment_journal.h"
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

/// Whether an operation changes what the service holds.
enum class Purpose { ASK, CHANGE };

/// A purchase that has not been answered yet.
struct PendingPurchase {
    std::shared_ptr<Sending> sending;
    std::string paymentId;
};

/// What a facade knows. Used on the main thread; no locks.
struct Kavio::State final : ServiceObject, std::enable_shared_from_this<Kavio::State> {
    template <class... Payload>
    using Callback = void (KavioDelegate::*)(KavioDelegate::Result, Payload...);
    template <class... Payload>
    class Operation;
    using PaymentMethodsOperation = Operation<std::optional<PaymentMethods>>;
    using OrderOperation = Operation<std::shared_ptr<const Order>>;
    using DepositOperation = Operation<std::optional<std::int64_t>>;
    class Enrolment;
    /// The application version that the account is asked for with.
    static constexpr const char* accountAppVersion = "2.5";
    static constexpr const char* notWrittenDown = "the payment could not be written down, so it was not made";

    explicit State(std::weak_ptr<KavioDelegate> delegate) : mDelegate(std::move(delegate)) {}
    /// Listens to what happens to the issuer's pages, until `release`.
    void attachToScene();

    /// The gate of every operation. Empty while another one is under way; `BUSY` has then been reported.
    template <class... Payload>
    std::optional<Operation<Payload...>> begin(Callback<Payload...> callback, Purpose purpose = Purpose::ASK);

    /// Gives up a purchase that has not left yet; one that has left goes on.
    void giveUpPurchase();
    /// Writes the payment down and returns its identifier; absent when that failed.
    std::optional<std::string> writeDown(UnsettledPayment payment) const;
    /// Finds out what became of the payment; `found` ends the operation for one that was made.
    template <class Asked>
    void settle(const Asked& operation, const JournalEntry& entry,
                void (State::*found)(const Asked&, const std::string& paymentId, const PaymentFinding&));
    void orderFound(const OrderOperation& operation, const std::string& paymentId, const PaymentFinding& finding);
    void depositFound(const DepositOperation& operation, const std::string& paymentId, const PaymentFinding& finding);

    // Handlers for replies that change what the facade knows or do not end their operation.
    void challengeResponse(const Operation<>& operation, APIResult<Challenge> reply);
    void verifyResponse(const Operation<>& operation, APIResult<Token> reply);
    void accountResponse(const PaymentMethodsOperation& operation, APIResult<AccountModel> reply);
    void placeOrderResponse(const OrderOperation& operation, APIResult<OrderModel> reply);
    void follow(const OrderOperation& operation, std::shared_ptr<const Order> order);
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
    Cause mWhyNotFollowed = Cause::FOLLOWING_TIMED_OUT;
    std::optional<PendingPurchase> mPurchase;  // until it is answered
    std::int64_t mLastOperation = 0;           // the number of the last operation
    bool mIsBusy = false;                      // the last operation is under way
};

/// One operation, from the gate to its last report. Whatever waits for a reply or a delay holds it, and it holds the
/// facade weakly: nothing happens once the facade is gone, and an operation that `release` has ended does not end a
/// later one.
template <class... Payload>
class Kavio::State::Operation {
public:
    Operation(std::weak_ptr<State> state, Callback<Payload...> callback, Purpose purpose, std::int64_t number)
        : mState(std::move(state)), mCallback(callback), mPurpose(purpose), mNumber(number) {}

    bool isUnderWay() const {
        const auto state = mState.lock();
        return state && state->mIsBusy && state->mLastOperation == mNumber;
    }
    void end() const {
        if (isUnderWay()) mState.lock()->mIsBusy = false;
    }

    /// A success that is not the end.
    void report(Payload... payload) const {
        const auto effect = mPurpose == Purpose::CHANGE ? Effect::DONE : Effect::NONE;
        tell({ResultType::SUCCESS, std::nullopt, effect, Cause::NONE}, std::move(payload)...);
    }
    void succeed(Payload... payload) const {
        end();
        report(std::move(payload)...);
    }
    /// `effect` says what became of anything that was sent before the failure.
    void fail(ResultType type, Cause cause, std::optional<std::string> message = std::nullopt,
              Effect effect = Effect::NONE) const {
        end();
        tell({type, std::move(message), effect, cause}, Payload{}...);
    }
    /// The one rule by which a transport failure becomes a result.
    void fail(const APIFailure& failure) const {
        fail(failure, mPurpose == Purpose::CHANGE ? failure.effect : Effect::NONE);
    }
    void fail(const APIFailure& failure, Effect effect) const {
        fail(resultType(failure.status), failure.cause, failure.message ? failure.message : failure.fallbackMessage,
             effect);
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
    /// A completion that ends the operation, on success with the payload that `payloadOf` makes from the reply's.
    template <class Reply, class PayloadOf>
    Completion<Reply> finish(PayloadOf payloadOf) const {
        return then<Reply>(
            [payloadOf = std::move(payloadOf)](State&, const Operation& operation, APIResult<Reply> reply) {
                if (!reply) return operation.fail(reply.failure());
                operation.succeed(payloadOf(std::move(reply).payload()));
            });
    }
    /// The same for a reply whose payload does not matter.
    template <class Reply>
    Completion<Reply> finish() const {
        return then<Reply>([](State&, const Operation& operation, const APIResult<Reply>& reply) {
            reply ? operation.succeed() : operation.fail(reply.failure());
        });
    }

private:
    /// Tells the delegate, if it still exists. Always the last thing done: the delegate may start the next operation or
    /// destroy the facade.
    void tell(KavioResult result, Payload... payload) const {
        const auto state = mState.lock();
        const auto delegate = state ? state->mDelegate.lock() : nullptr;
        if (!delegate) return;
        ((*delegate).*mCallback)(std::make_shared<const KavioResult>(std::move(result)), std::move(payload)...);
    }
    static ResultType resultType(std::int64_t status) {
        if (status == 401) return ResultType::ACCESS_DENIED;
        if (status == 400) return ResultType::BAD_INPUT;
        if (status == statusNoConnection) return ResultType::NETWORK_FAILED;
        return status >= 500 && status <= 599 ? ResultType::SERVER_ERROR : ResultType::FAILURE;
    }

    std::weak_ptr<State> mState;
    Callback<Payload...> mCallback;
    Purpose mPurpose;
    std::int64_t mNumber;
};

template <class... Payload>
std::optional<Kavio::State::Operation<Payload...>> Kavio::State::begin(Callback<Payload...> callback, Purpose purpose) {
    if (mIsBusy) {
        Operation<Payload...>(weak_from_this(), callback, purpose, 0).fail(ResultType::BUSY, Cause::BUSY);
        return std::nullopt;
    }
    mIsBusy = true;
    return Operation<Payload...>(weak_from_this(), callback, purpose, ++mLastOperation);
}

}  // namespace kavio
