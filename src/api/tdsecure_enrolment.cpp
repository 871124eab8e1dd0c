#include "api/tdsecure_enrolment.h"

#include "models/json/json_value.h"
#include "network/url_request.h"

#include <kavio/platform/platform.h>

#include <utility>

namespace kavio {
namespace {

constexpr const char* cannotParse = "failed to parse server reponse";
constexpr const char* cannotStart = "failed to start 3DS authentication";
constexpr const char* cannotStartPage = "failed to start 3DS authentication page";

template <class... Handlers>
struct Overloaded : Handlers... {
    using Handlers::operator()...;
};
template <class... Handlers>
Overloaded(Handlers...) -> Overloaded<Handlers...>;

// Tells the issuer's fingerprint page where to go when it has ended, and which transaction it runs for.
std::string threeDSMethodData(const std::string& transaction) {
    constexpr int indent = 2;
    const auto data =
        serialise({{"threeDSMethodNotificationURL", loopbackUrl}, {"threeDSServerTransID", transaction}}, indent);
    return Platform::current().base64->encode(data.value_or(""));
}

// "%41" is "A"; anything that is not an escape stays, and so does "+".
std::string percentDecoded(std::string_view text) {
    const auto digit = [](char c) {
        if (c >= '0' && c <= '9') return c - '0';
        const char lower = static_cast<char>(c | 0x20);
        return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
    };
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool escape = text[i] == '%' && i + 2 < text.size() && digit(text[i + 1]) >= 0 && digit(text[i + 2]) >= 0;
        decoded += escape ? static_cast<char>(digit(text[i + 1]) * 16 + digit(text[i + 2])) : text[i];
        if (escape) i += 2;
    }
    return Platform::current().characters->wellFormed(decoded);
}

// Copies what the page has sent from the query of its last address to the body. If an item is repeated, the last one
// counts; one without "=" has no value.
void readRedirect(const std::string& url, TDSGetCard& body) {
    const auto queryAt = url.find('?');
    if (queryAt == std::string::npos) return;
    std::string_view rest = std::string_view(url).substr(queryAt + 1);
    rest = rest.substr(0, rest.find('#'));
    while (!rest.empty()) {
        const auto item = rest.substr(0, rest.find('&'));
        rest.remove_prefix(std::min(item.size() + 1, rest.size()));
        const auto equals = item.find('=');
        const auto name = percentDecoded(item.substr(0, equals));
        const auto value =
            equals == std::string_view::npos ? std::nullopt : std::optional(percentDecoded(item.substr(equals + 1)));
        if (name == "g1") body.token = value;
        if (name == "z2") body.result = value;
        if (name == "z3") body.description = value;
        if (name == "z50") body.transaction = value;
    }
}

// The screen that covers all others in the window that the person is using; null when there is none to present on.
std::shared_ptr<ViewController> topMostViewController() {
    const auto windows = Platform::current().windows;
    const auto window = windows ? windows->keyWindow() : nullptr;
    auto topMost = window ? window->rootViewController() : nullptr;
    while (topMost) {
        auto presented = topMost->presentedViewController();
        if (!presented) break;
        topMost = std::move(presented);
    }
    return topMost;
}

// Does nothing if the page has gone, even if the page of another enrolment is up instead.
void takeAway(const std::weak_ptr<TDSecureScene>& page, TDSecureSceneController& controller) {
    const auto shown = page.lock();
    if (shown && shown == controller.scene()) contained([&] { controller.close(true); });
}

}  // namespace

void Kavio::addCreditCardTDSecure(TDSPaymentCard paymentCard, TDSCardHolder cardHolder) {
    mState->perform(&KavioDelegate::onAddCreditCard, Purpose::CHANGE, [&](const State::CardOperation& operation) {
        std::make_shared<State::Enrolment>(mState, operation, std::move(paymentCard))->start(std::move(cardHolder));
    });
}

// The page can still be up only if memory ran out on the way. If there is none to take the page away either, it stays
// until the person closes it.
Kavio::State::Enrolment::~Enrolment() {
    if (mPage.expired()) return;
    contained([this] {
        Platform::current().mainQueue->post(
            [page = mPage, controller = mTDSecSceneController] { takeAway(page, *controller); });
    });
}

void Kavio::State::Enrolment::start(TDSCardHolder cardHolder) {
    mPaymentMethodRepo->addCardTDSecure(
        {mLastPaymentCard, Platform::current().uuid->make(), {.holder = std::move(cardHolder)}},
        whileUnderWay(&Enrolment::addCreditCardTDSecureResponse));
    prepareScene();
}

// While the service is being asked. A page takes most of its time to start, and most cards have one.
void Kavio::State::Enrolment::prepareScene() const {
    const auto facade = mFacade.lock();
    const auto windows = Platform::current().windows;
    if (facade && windows && mOperation.isUnderWay()) facade->mPrepared = windows->prepareScene();
}

// A completion that takes the next step. Once the facade is released or destroyed, it does nothing: no page may appear
// then.
template <class Reply>
Completion<Reply> Kavio::State::Enrolment::whileUnderWay(void (Enrolment::*step)(APIResult<Reply>)) {
    return mOperation.then<Reply>([self = shared_from_this(), step](State&, const auto& operation, auto reply) {
        if (operation.isUnderWay()) ((*self).*step)(std::move(reply));
    });
}

void Kavio::State::Enrolment::addCreditCardTDSecureResponse(APIResult<TDSAddCardResponseFactory> reply) {
    if (!reply) return mOperation.fail(reply.failure());
    const auto payload = std::move(reply).payload().value_or(TDSAddCardResponseFactory{std::monostate{}});
    std::visit(Overloaded{
                   [&](const TDSAddCardFrictionlessResponse&) { mOperation.succeed(nullptr); },
                   [&](const TDSAddCardFingerprintResponse& fingerprint) { startFingerprint(fingerprint); },
                   [&](const TDSAddCardChallengeResponse& challenge) {
                       if (!presentPage(TDSFlowType::CHALLENGE, challenge.url)) {
                           mOperation.fail(ResultType::FAILURE, Cause::PAGE_NOT_SHOWN, cannotStart, Effect::UNKNOWN);
                       }
                   },
                   [&](const TDSAddCardErrorResponse& error) {
                       mOperation.fail(ResultType::SERVER_ERROR, Cause::REFUSED_BY_SERVICE, error.message);
                   },
                   [&](std::monostate) {
                       mOperation.fail(ResultType::SERVER_ERROR, Cause::UNREADABLE_REPLY, cannotParse, Effect::UNKNOWN);
                   },
               },
               payload.reply);
}

void Kavio::State::Enrolment::startFingerprint(const TDSAddCardFingerprintResponse& fingerprint) {
    if (!isUrl(fingerprint.page))
        return mOperation.fail(ResultType::SERVER_ERROR, Cause::UNREADABLE_REPLY, "invalid URL", Effect::UNKNOWN);
    mPaymentMethodRepo->pageTDSecure({threeDSMethodData(fingerprint.id)}, fingerprint.page,
                                     whileUnderWay(&Enrolment::pageResponse));
}

void Kavio::State::Enrolment::pageResponse(APIResult<std::string> reply) {
    if (!reply) return mOperation.fail(reply.failure(), Effect::UNKNOWN);  // the service may still store the card
    const auto page = std::move(reply).payload();
    const bool isText = page && Platform::current().characters->wellFormed(*page) == *page;
    if (!isText || !presentPage(TDSFlowType::FINGERPRINT, *page))
        mOperation.fail(ResultType::FAILURE, Cause::PAGE_NOT_SHOWN, cannotStart, Effect::UNKNOWN);
}

// The page has ended, so the service is asked what that means.
void Kavio::State::Enrolment::tdSecureFinished() {
    const auto& url = mTDSecSceneController->mRedirectedUrl;
    if (!url) return;  // there was no memory for it; this enrolment ends here and reports that
    TDSGetCard body{.flow = mLastFlow, .card = mLastPaymentCard};
    readRedirect(*url, body);
    mPaymentMethodRepo->getCardTDSecure(body, mOperation.then<TDSGetCardResponseFactory>(
                                                  [self = shared_from_this()](State&, const auto&, const auto& reply) {
                                                      self->getCardResponse(reply);
                                                  }));
}

void Kavio::State::Enrolment::getCardResponse(const APIResult<TDSGetCardResponseFactory>& reply) {
    const auto payload = reply ? reply.payload() : std::nullopt;
    const auto* challenge = payload ? std::get_if<TDSGetCardChallengeResponse>(&payload->reply) : nullptr;
    if (challenge && mOperation.isUnderWay()) return showNextChallenge(challenge->url);
    const auto outcome = outcomeOf(reply);
    mOperation.end();
    closePage();
    mOperation.report(outcome, nullptr);
}

KavioDelegate::Result Kavio::State::Enrolment::outcomeOf(const APIResult<TDSGetCardResponseFactory>& reply) const {
    if (!reply) {
        // The request to add the card has been sent, so only an answer from the service can say that it is not stored.
        return mOperation.failure(reply.failure(),
                                  reply.failure().status > 0 ? reply.failure().effect : Effect::UNKNOWN);
    }
    const auto& payload = reply.payload();
    if (payload && std::holds_alternative<TDSGetCardLocatorResponse>(payload->reply)) return mOperation.success();
    if (const auto* error = payload ? std::get_if<TDSGetCardErrorResponse>(&payload->reply) : nullptr)
        return mOperation.failure(ResultType::SERVER_ERROR, Cause::REFUSED_BY_SERVICE, "error: " + error->message);
    return mOperation.failure(ResultType::SERVER_ERROR, Cause::UNREADABLE_REPLY, cannotParse, Effect::UNKNOWN);
}

void Kavio::State::Enrolment::closePage() const { takeAway(mPage, *mTDSecSceneController); }

void Kavio::State::Enrolment::showNextChallenge(const std::string& url) {
    const auto scene = mTDSecSceneController->scene();
    if (scene && scene == mPage.lock()) {
        mLastFlow = TDSFlowType::CHALLENGE;
        return waitForPage(scene, [&] { scene->load(url, false); });
    }
    if (!presentPage(TDSFlowType::CHALLENGE, url))
        mOperation.fail(ResultType::FAILURE, Cause::PAGE_NOT_SHOWN, cannotStartPage, Effect::UNKNOWN);
}

void Kavio::State::Enrolment::tdSecureWindowClosed() {
    mOperation.fail(ResultType::FAILURE, Cause::CANCELED_BY_PERSON, "canceled by user", Effect::UNKNOWN);
}

void Kavio::State::Enrolment::tdSecureWindowTaken() {
    mOperation.fail(ResultType::FAILURE, Cause::PAGE_NOT_SHOWN, std::nullopt, Effect::UNKNOWN);
}

// False if the page could not be presented: there is nothing to present on, the scene could not be made, or the facade
// was released meanwhile.
bool Kavio::State::Enrolment::presentPage(TDSFlowType flow, const std::string& content) {
    mLastFlow = flow;
    if (!topMostViewController()) return false;
    // There is one screen for all facades: a page that another one has up gives way, and whoever waits for it is told.
    // That may release this facade, or close the application's windows.
    mTDSecSceneController->takePage();
    const auto facade = mFacade.lock();
    const auto topMost = mOperation.isUnderWay() ? topMostViewController() : nullptr;
    if (!facade || !topMost) return false;
    mTDSecSceneController->mUrl = content;
    mTDSecSceneController->mFlow = flow;
    const auto scene = mTDSecSceneController->createScene(std::exchange(facade->mPrepared, nullptr));
    if (!scene) return false;
    scene->delegate = mTDSecSceneController;
    waitForPage(scene, [&] { topMost->present(scene, true); });
    return true;
}

// Brings up the page with `show`, and lets the facade wait for it to end. If `show` throws, nobody waits.
template <class Show>
void Kavio::State::Enrolment::waitForPage(const std::shared_ptr<TDSecureScene>& scene, Show show) {
    const auto facade = mFacade.lock();
    if (!facade) return;
    mPage = scene;
    facade->mEnrolment = shared_from_this();
    facade->mShown = weak_from_this();
    try {
        show();
    } catch (...) {
        if (facade->mEnrolment.get() == this) facade->mEnrolment.reset();
        throw;
    }
}

void Kavio::State::closePage() {
    const auto shown = mShown.lock();
    mEnrolment.reset();
    if (shown) shown->closePage();
}

// Only the first event of a page counts. After its end it may go to the loopback address again, and the person may
// close it: neither changes anything, since the service has been asked already.
void Kavio::State::attachToScene() {
    using Observer = TDSecureSceneController::SceneEvent::Observer;
    const auto observer = [&](void (Enrolment::*step)()) {
        return std::make_shared<Observer>(weak_from_this(), [weak = weak_from_this(), step](TDSecureSceneController&) {
            const auto self = weak.lock();
            const auto enrolment = self ? std::exchange(self->mEnrolment, nullptr) : nullptr;
            if (enrolment) ((*enrolment).*step)();
        });
    };
    mTDSecSceneController->tdSecureFinished->attach(observer(&Enrolment::tdSecureFinished));
    mTDSecSceneController->tdSecureWindowClosed->attach(observer(&Enrolment::tdSecureWindowClosed));
    mTDSecSceneController->tdSecureWindowTaken->attach(observer(&Enrolment::tdSecureWindowTaken));
}

}  // namespace kavio
