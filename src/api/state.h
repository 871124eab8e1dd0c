#pragma once

#include "models/td_secure_replies.h"
#include "network/api_result.h"
#include "repositories/payment_search.h"
#include "repositories/repositories.h"
#include "storage/kavio_user_defaults.h"
#include "storage/payment_journal.h"
#include "tdsecure/td_secure_scene_controller.h"
#include "util/contained.h"
#include "util/service_object.h"
#include "util/shared_instance.h"

#include <kavio/kavio.h>
#include <kavio/platform/platform.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <stop_token>
#include <string>
#include <utility>
#include <variant>

namespace kavio {

/// Whether an operation changes what the service holds.
enum class Purpose { ASK, CHANGE };

/// A purchase that has not been answered yet.
struct PendingPurchase {
    std::shared_ptr<Sending> sending;
    std::string paymentId;
    bool isCanceled = false;  // nothing of it has left, or ever will
};

using AnyPayload = std::variant<std::monostate, std::optional<PaymentMethods>, std::optional<Machines>,
                                std::optional<Products>, std::optional<Orders>, std::shared_ptr<const Order>,
                                std::shared_ptr<const CreditCard>, std::optional<std::int64_t>>;

/// Who waits for one operation, besides the delegate. Told after it.
class Listener {
public:
    virtual ~Listener() = default;
    virtual void report(const KavioDelegate::Result& result, const AnyPayload& payload, bool isLast) = 0;
    /// Nothing more will be reported. More than once, perhaps.
    virtual void end() = 0;
    /// The facade is let go of.
    virtual void abandon() = 0;
};

/// What a facade knows. Used on the main thread; no locks.
struct [[gnu::visibility("hidden")]] Kavio::State final : ServiceObject, std::enable_shared_from_this<Kavio::State> {
    template <class... Payload>
    using Callback = void (KavioDelegate::*)(KavioDelegate::Result, Payload...);
    template <class... Payload>
    class Operation;
    using PaymentMethodsOperation = Operation<std::optional<PaymentMethods>>;
    using OrderOperation = Operation<std::shared_ptr<const Order>>;
    using CardOperation = Operation<std::shared_ptr<const CreditCard>>;
    using DepositOperation = Operation<std::optional<std::int64_t>>;
    class Enrolment;
    /// The application version that the account is asked for with.
    static constexpr const char* accountAppVersion = "2.5";

    explicit State(std::weak_ptr<KavioDelegate> delegate) : mDelegate(std::move(delegate)) {}
    /// Listens to what happens to the issuer's pages, until `release`.
    void attachToScene();
    /// The last operation is not under way any more, and needs nothing that was prepared for it.
    void becomeIdle();
    /// Ends what is under way, without a report: the application has let go of the facade.
    void abandon();
    /// Takes away the page that an enrolment of this facade has up, if any. Nobody waits for it any more.
    void closePage();

    /// The gate of every operation: calls `work` with it, unless another one is under way, which is reported as `BUSY`.
    template <class... Payload, class Work>
    void perform(Callback<Payload...> callback, Purpose purpose, Work work);
    /// Calls the delegate, if it still exists, and who else waits.
    template <class... Payload>
    void tell(Callback<Payload...> callback, const std::shared_ptr<Listener>& listener, bool isLast,
              const KavioDelegate::Result& result, Payload... payload) const;

    /// Gives up a purchase that has not left yet; one that has left goes on.
    void giveUpPurchase();
    /// The same, but it is reported.
    void cancelPurchase();
    /// Does that when `stop` is requested, on any thread, for as long as what is returned is kept.
    std::shared_ptr<void> cancelPurchaseWhen(std::stop_token stop);
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

    bool isUnderWay(std::int64_t operation) const { return mIsBusy && mLastOperation == operation; }

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
    std::shared_ptr<TDSecureScene> mPrepared;  // for the first page of the enrolment under way
    std::shared_ptr<Enrolment> mEnrolment;     // the one that waits for its page
    std::weak_ptr<Enrolment> mShown;           // the last one that has shown a page
    std::int64_t mPollingCounter = 0;
    Cause mWhyNotFollowed = Cause::FOLLOWING_TIMED_OUT;
    std::optional<PendingPurchase> mPurchase;  // until it is answered
    std::shared_ptr<Listener> mNextListener;   // of the operation that is being started
    std::weak_ptr<Listener> mListener;         // of the last operation
    std::int64_t mLastOperation = 0;           // the number of the last operation
    bool mIsBusy = false;                      // the last operation is under way
};

/// The report that memory has run out. It waits until there is some for the report.
inline KavioDelegate::Result outOfMemory(Effect effect) noexcept {
    return insisted([effect] {
        return std::make_shared<const KavioResult>(ResultType::FAILURE, "out of memory", effect, Cause::OUT_OF_MEMORY);
    });
}

/// One operation, from the gate to its last report. Whatever waits for a reply or a delay holds it, and it holds the
/// facade weakly: nothing happens once the facade is gone, and an operation that `release` has ended does not end a
/// later one. If the last holder lets go before the end, memory has run out on the way, and that is reported.
template <class... Payload>
class Kavio::State::Operation {
public:
    Operation(std::weak_ptr<State> state, Callback<Payload...> callback, std::shared_ptr<Listener> listener,
              Purpose purpose, std::int64_t number)
        : mCourse(std::make_shared<Course>(std::move(state), callback, std::move(listener), purpose, number)) {}

    bool isUnderWay() const {
        const auto state = mCourse->state.lock();
        return state && state->isUnderWay(mCourse->number);
    }
    /// Whether the facade has begun another one since.
    bool isSuperseded() const {
        const auto state = mCourse->state.lock();
        return !state || state->mLastOperation != mCourse->number;
    }
    void end() const {
        mCourse->hasEnded = true;
        if (isUnderWay()) mCourse->state.lock()->becomeIdle();
    }
    /// Ends without another report.
    void endSilently() const {
        end();
        if (mCourse->listener) mCourse->listener->end();
    }

    // Results are made before anything changes, since memory may run out.

    KavioDelegate::Result success() const {
        if (mCourse->purpose == Purpose::CHANGE) mCourse->effect = Effect::DONE;
        return std::make_shared<const KavioResult>(ResultType::SUCCESS, std::nullopt, mCourse->effect, Cause::NONE);
    }
    /// `effect` says what became of anything that was sent before the failure.
    KavioDelegate::Result failure(ResultType type, Cause cause, std::optional<std::string> message = std::nullopt,
                                  Effect effect = Effect::NONE) const {
        return std::make_shared<const KavioResult>(type, std::move(message), effect, cause);
    }
    /// The one rule by which a transport failure becomes a result.
    KavioDelegate::Result failure(const APIFailure& failed) const {
        return failure(failed, mCourse->purpose == Purpose::CHANGE ? failed.effect : Effect::NONE);
    }
    KavioDelegate::Result failure(const APIFailure& failed, Effect effect) const {
        return failure(resultType(failed.status), failed.cause,
                       failed.message ? failed.message : failed.fallbackMessage, effect);
    }

    /// Tells the delegate. Always the last thing that is done: the delegate may start the next operation, or destroy
    /// the facade.
    void report(const KavioDelegate::Result& result, Payload... payload) const {
        if (const auto state = mCourse->state.lock())
            state->tell(mCourse->callback, mCourse->listener, mCourse->hasEnded, result, std::move(payload)...);
    }
    void succeed(Payload... payload) const {
        const auto result = success();
        end();
        report(result, std::move(payload)...);
    }
    /// As `failure` says.
    template <class... Why>
    void fail(Why&&... why) const {
        const auto result = failure(std::forward<Why>(why)...);
        end();
        report(result, Payload{}...);
    }

    /// A completion that calls `handler` with the state, this operation and the reply.
    template <class Reply, class Handler>
    Completion<Reply> then(Handler handler) const {
        return [operation = *this, handler = std::move(handler)](APIResult<Reply> reply) {
            if (const auto state = operation.mCourse->state.lock()) {
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
    /// What all who hold the operation share. The last of them may be on any thread.
    struct Course {
        Course(std::weak_ptr<State> facade, Callback<Payload...> told, std::shared_ptr<Listener> waiting,
               Purpose wanted, std::int64_t ownNumber)
            : state(std::move(facade)),
              callback(told),
              listener(std::move(waiting)),
              purpose(wanted),
              number(ownNumber) {}
        ~Course() {
            if (hasEnded || state.expired()) return;
            insisted([&] {
                Platform::current().mainQueue->post(
                    [weak = state, told = callback, waiting = listener, own = number, result = outOfMemory(effect)] {
                        const auto facade = weak.lock();
                        if (!facade || !facade->isUnderWay(own)) return;
                        facade->becomeIdle();
                        facade->tell(told, waiting, true, result, Payload{}...);
                    });
            });
        }
        Course(const Course&) = delete;
        Course& operator=(const Course&) = delete;

        const std::weak_ptr<State> state;
        const Callback<Payload...> callback;
        const std::shared_ptr<Listener> listener;
        const Purpose purpose;
        const std::int64_t number;
        Effect effect = purpose == Purpose::CHANGE ? Effect::UNKNOWN : Effect::NONE;
        bool hasEnded = false;
    };

    static ResultType resultType(std::int64_t status) {
        if (status == 401) return ResultType::ACCESS_DENIED;
        if (status == 400) return ResultType::BAD_INPUT;
        if (status == statusNoConnection) return ResultType::NETWORK_FAILED;
        return status >= 500 && status <= 599 ? ResultType::SERVER_ERROR : ResultType::FAILURE;
    }

    std::shared_ptr<Course> mCourse;
};

template <class... Payload>
void Kavio::State::tell(Callback<Payload...> callback, const std::shared_ptr<Listener>& listener, bool isLast,
                        const KavioDelegate::Result& result, Payload... payload) const {
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the delegate may destroy all else
    const auto waiting = listener;
    const auto delegate = mDelegate.lock();
    if (!waiting) {
        if (delegate) ((*delegate).*callback)(result, std::move(payload)...);
        return;
    }
    if (delegate) ((*delegate).*callback)(result, payload...);
    waiting->report(result, AnyPayload(std::move(payload)...), isLast);
}

template <class... Payload, class Work>
void Kavio::State::perform(Callback<Payload...> callback, Purpose purpose, Work work) {
    const auto listener = std::exchange(mNextListener, nullptr);
    std::optional<Operation<Payload...>> operation;
    KavioDelegate::Result refusal;
    try {
        if (mIsBusy) {
            refusal = std::make_shared<const KavioResult>(ResultType::BUSY, std::nullopt, Effect::NONE, Cause::BUSY);
        } else {
            operation.emplace(weak_from_this(), callback, listener, purpose, mLastOperation + 1);
        }
    } catch (const std::bad_alloc&) {
        refusal = outOfMemory(Effect::NONE);
    }
    if (refusal) return tell(callback, listener, true, refusal, Payload{}...);
    mIsBusy = true;
    ++mLastOperation;
    mListener = listener;
    contained([&] { work(*operation); });
}

}  // namespace kavio
