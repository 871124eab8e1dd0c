#pragma once

#include "api/state.h"
#include "models/td_secure_replies.h"

#include <memory>
#include <optional>
#include <string>

namespace kavio {

/// One enrolment of a card with 3-D Secure, from the request that adds the card to its report. What it waits for keeps
/// it alive: a reply or, through the facade, its page. Wherever it ends, its page goes, too.
class Kavio::State::Enrolment final : public std::enable_shared_from_this<Enrolment> {
public:
    Enrolment(const std::shared_ptr<State>& facade, CardOperation operation, TDSPaymentCard card)
        : mFacade(facade),
          mPaymentMethodRepo(facade->mPaymentMethodRepo),
          mTDSecSceneController(facade->mTDSecSceneController),
          mOperation(std::move(operation)),
          mLastPaymentCard(std::move(card)) {}
    /// May run on any thread.
    ~Enrolment();
    Enrolment(const Enrolment&) = delete;
    Enrolment& operator=(const Enrolment&) = delete;

    void start(TDSCardHolder cardHolder);
    /// Its page has sent the web view to the loopback address.
    void tdSecureFinished();
    /// The person has closed the screen of its page.
    void tdSecureWindowClosed();
    /// The screen of its page was taken away, which was not the person's doing.
    void tdSecureWindowTaken();
    /// Takes its page away if that is still up.
    void closePage() const;

private:
    template <class Reply>
    Completion<Reply> whileUnderWay(void (Enrolment::*step)(APIResult<Reply>));

    void prepareScene() const;
    void addCreditCardTDSecureResponse(APIResult<TDSAddCardResponseFactory> reply);
    void startFingerprint(const TDSAddCardFingerprintResponse& fingerprint);
    void pageResponse(APIResult<std::string> reply);
    void getCardResponse(const APIResult<TDSGetCardResponseFactory>& reply);
    KavioDelegate::Result outcomeOf(const APIResult<TDSGetCardResponseFactory>& reply) const;
    void showNextChallenge(const std::string& url);
    bool presentPage(TDSFlowType flow, const std::string& content);
    template <class Show>
    void waitForPage(const std::shared_ptr<TDSecureScene>& scene, Show show);

    const std::weak_ptr<State> mFacade;
    const std::shared_ptr<PaymentMethodRepository> mPaymentMethodRepo;
    const std::shared_ptr<TDSecureSceneController> mTDSecSceneController;
    const CardOperation mOperation;
    const TDSPaymentCard mLastPaymentCard;
    TDSFlowType mLastFlow = TDSFlowType::UNKNOWN;
    std::weak_ptr<TDSecureScene> mPage;  // the last one that this enrolment showed something on
};

}  // namespace kavio
