#pragma once

#include "models/public_objects.h"
#include "network/api_result.h"
#include "repositories/machine_repository.h"
#include "repositories/repositories.h"
#include "storage/kavio_user_defaults.h"
#include "tdsecure/replies.h"
#include "tdsecure/td_secure_scene_controller.h"
#include "util/service_object.h"
#include "util/shared_instance.h"

#include <kavio/kavio.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

namespace kavio {

/// What a facade knows. Response handlers and scheduled polls hold it weakly, so that nothing happens once the facade
/// is gone. Used on the main thread; no locks.
struct Kavio::State final : ServiceObject, std::enable_shared_from_this<Kavio::State> {
    template <class... Payload>
    using Callback = void (KavioDelegate::*)(KavioDelegate::Result, Payload...);

    explicit State(std::weak_ptr<KavioDelegate> delegate) : mDelegate(std::move(delegate)) {}

    // Response handlers, one an operation.
    void challengeResponse(APIResult<Challenge> reply);
    void verifyResponse(APIResult<Token> reply);
    void logoutResponse(APIResult<LogOutResponse> reply);
    void accountResponse(APIResult<AccountModel> reply);
    void paymentMethodsAccountResponse(APIResult<AccountModel> reply);
    void prepaidsResponse(PaymentMethods paymentMethods, APIResult<PrepaidsList> reply);
    void machinesResponse(APIResult<PublicList<MachineModel>> reply);
    void machineProductsResponse(APIResult<PublicList<MachineProduct>> reply);
    void placeOrderResponse(APIResult<OrderModel> reply);
    void orderStatusResponse(APIResult<OrderModel> reply);
    void activitiesResponse(APIResult<PublicList<OrderActivityModel>> reply);
    void addCreditCardResponse(APIResult<AddCreditCardResponse> reply);
    void removeCreditCardResponse(APIResult<DeleteCreditResponse> reply);
    void depositResponse(APIResult<DepositModel> reply);

    void addCreditCardTDSecureResponse(APIResult<TDSAddCardResponseFactory> reply);

    // The steps of a 3-D Secure enrolment that follow the reply to its card.
    void startFingerprint(const TDSAddCardFingerprintResponse& fingerprint);
    void fingerprintPageResponse(APIResult<std::string> reply);
    void tdSecureFinished(const TDSecureSceneController& controller);
    void getCardResponse(APIResult<TDSGetCardResponseFactory> reply, bool isAwaited);
    void showNextChallenge(const std::string& url);
    void tdSecureWindowClosed();
    bool presentPage(TDSFlowType flow, const std::string& content);
    void closePage();
    void finishEnrolment(ResultType type, std::optional<std::string> message);
    void attachToScene();

    void fetchAccount();
    void scheduleNextPoll();
    void poll();
    void pollResponse(APIResult<OrderModel> reply);

    /// A completion that calls `handler` with the reply while the facade exists, and does nothing afterwards.
    template <class P>
    Completion<P> handled(void (State::*handler)(APIResult<P>)) {
        return [weak = weak_from_this(), handler](APIResult<P> reply) {
            if (const auto self = weak.lock()) ((*self).*handler)(std::move(reply));
        };
    }

    /// As `handled`, but nothing happens either once `release` has ended the enrolment: no page may come up then.
    template <class P>
    Completion<P> whileEnrolling(void (State::*handler)(APIResult<P>)) {
        return [weak = weak_from_this(), handler, enrolment = mEnrolment](APIResult<P> reply) {
            const auto self = weak.lock();
            if (self && self->isUnderWay(enrolment)) ((*self).*handler)(std::move(reply));
        };
    }
    bool isUnderWay(std::int64_t enrolment) const { return mIsBusy && mEnrolment == enrolment; }

    /// The gate of every operation: true when it may go on. Otherwise reports `BUSY` to its callback.
    template <class... Payload>
    bool isIdle(Callback<Payload...> callback) {
        if (!mIsBusy) return true;
        fail(callback, ResultType::BUSY);
        return false;
    }

    /// Reports to the delegate, if it still exists. Always the last thing that an operation does: the delegate may
    /// start the next operation, or destroy the facade.
    template <class... Payload>
    void report(Callback<Payload...> callback, ResultType type, std::optional<std::string> message,
                std::type_identity_t<Payload>... payload) {
        if (const auto delegate = mDelegate.lock()) {
            ((*delegate).*callback)(std::make_shared<const KavioResult>(type, std::move(message)),
                                    std::move(payload)...);
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
    const std::shared_ptr<TDSecureSceneController> mTDSecSceneController = TDSecureSceneController::takeUse();
    std::shared_ptr<const Order> mLastOrder;
    std::optional<std::string> mLastChallenge;
    std::optional<TDSPaymentCard> mLastPaymentCard;
    TDSFlowType mLastFlow = TDSFlowType::UNKNOWN;
    std::weak_ptr<TDSecureScene> mPage;  // the last one that this facade showed something on
    std::int64_t mPollingCounter = 0;
    std::int64_t mEnrolment = 0;  // tells them apart; `release` ends one as well
    bool mIsBusy = false;
    bool mReceivedTDSRedirect = true;
    bool mIsUserLogin = false;
};

}  // namespace kavio
