#include "api/state.h"
#include "models/json/json_value.h"
#include "network/url_request.h"

#include <kavio/platform/platform.h>

namespace kavio {
namespace {

constexpr std::string_view storyboard = "libKavio";
constexpr const char* cannotParse = "failed to parse server reponse";
constexpr const char* cannotStart = "failed to start 3DS authentication";
constexpr const char* cannotStartPage = "failed to start 3DS authentication page";

template <class... Handlers>
struct Overloaded : Handlers... {
    using Handlers::operator()...;
};
template <class... Handlers>
Overloaded(Handlers...) -> Overloaded<Handlers...>;

// What the issuer's fingerprint page is told: where to go when it has ended, and for which transaction it runs.
std::string threeDSMethodData(const std::string& transaction) {
    const JsonValue data{{"threeDSMethodNotificationURL", loopbackUrl}, {"threeDSServerTransID", transaction}};
    return Platform::current().base64->encode(data.dump(2));
}

// "%41" is "A"; what is no escape stays, and so does "+".
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

// Puts what the page sent back into the body: of a repeated item the last counts, one without "=" has no value.
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

}  // namespace

void Kavio::addCreditCardTDSecure(TDSPaymentCard paymentCard, TDSCardHolder cardHolder) {
    if (!mState->isIdle(&KavioDelegate::onAddCreditCard)) return;
    mState->mIsBusy = true;
    ++mState->mEnrolment;
    mState->mLastPaymentCard = paymentCard;
    mState->mPaymentMethodRepo->addCardTDSecure(
        {std::move(paymentCard), Platform::current().uuid->make(), {.holder = std::move(cardHolder)}},
        mState->whileEnrolling(&State::addCreditCardTDSecureResponse));
}

void Kavio::State::addCreditCardTDSecureResponse(APIResult<TDSAddCardResponseFactory> reply) {
    if (!reply) {
        mIsBusy = false;
        return fail(&KavioDelegate::onAddCreditCard, reply.failure());
    }
    const auto payload = std::move(reply).payload();
    if (!payload) return finishEnrolment(ResultType::SERVER_ERROR, cannotParse);
    std::visit(
        Overloaded{
            [&](const TDSAddCardFrictionlessResponse&) { finishEnrolment(ResultType::SUCCESS, std::nullopt); },
            [&](const TDSAddCardFingerprintResponse& fingerprint) { startFingerprint(fingerprint); },
            [&](const TDSAddCardChallengeResponse& challenge) {
                mLastFlow = TDSFlowType::CHALLENGE;
                if (!presentPage(TDSFlowType::CHALLENGE, challenge.url)) {
                    finishEnrolment(ResultType::FAILURE, cannotStart);
                }
            },
            [&](const TDSAddCardErrorResponse& error) { finishEnrolment(ResultType::SERVER_ERROR, error.message); },
            [&](std::monostate) { finishEnrolment(ResultType::SERVER_ERROR, cannotParse); },
        },
        payload->reply);
}

void Kavio::State::startFingerprint(const TDSAddCardFingerprintResponse& fingerprint) {
    mLastFlow = TDSFlowType::FINGERPRINT;
    if (!isUrl(fingerprint.page)) return finishEnrolment(ResultType::SERVER_ERROR, "invalid URL");
    mPaymentMethodRepo->pageTDSecure({threeDSMethodData(fingerprint.id)}, fingerprint.page,
                                     whileEnrolling(&State::fingerprintPageResponse));
}

void Kavio::State::fingerprintPageResponse(APIResult<std::string> reply) {
    if (!reply) {
        mIsBusy = false;
        return fail(&KavioDelegate::onAddCreditCard, reply.failure());
    }
    const auto page = std::move(reply).payload();
    const bool isText = page && Platform::current().characters->wellFormed(*page) == *page;
    if (!isText || !presentPage(TDSFlowType::FINGERPRINT, *page)) finishEnrolment(ResultType::FAILURE, cannotStart);
}

// A page has ended: the service is asked what that means. Once a page: it may go to the loopback address twice, and so
// may the page of another facade, for which nobody waits here.
void Kavio::State::tdSecureFinished(const TDSecureSceneController& controller) {
    if (mReceivedTDSRedirect || !controller.mRedirectedUrl || !mLastPaymentCard) return;
    mReceivedTDSRedirect = true;
    TDSGetCard body{.flow = mLastFlow, .card = *mLastPaymentCard};
    readRedirect(*controller.mRedirectedUrl, body);
    mPaymentMethodRepo->getCardTDSecure(
        std::move(body), [weak = weak_from_this(), enrolment = mEnrolment](APIResult<TDSGetCardResponseFactory> reply) {
            if (const auto self = weak.lock()) self->getCardResponse(std::move(reply), self->isUnderWay(enrolment));
        });
}

// Once released nobody waits for the next page, and what is under way is another operation.
void Kavio::State::getCardResponse(APIResult<TDSGetCardResponseFactory> reply, bool isAwaited) {
    const auto payload = reply ? reply.payload() : std::nullopt;
    const auto* challenge = payload ? std::get_if<TDSGetCardChallengeResponse>(&payload->reply) : nullptr;
    if (challenge && isAwaited) return showNextChallenge(challenge->url);
    if (isAwaited) mIsBusy = false;
    closePage();
    if (!reply) return fail(&KavioDelegate::onAddCreditCard, reply.failure());
    if (payload && std::holds_alternative<TDSGetCardLocatorResponse>(payload->reply)) {
        return succeed(&KavioDelegate::onAddCreditCard, nullptr);
    }
    const auto* error = payload ? std::get_if<TDSGetCardErrorResponse>(&payload->reply) : nullptr;
    fail(&KavioDelegate::onAddCreditCard, ResultType::SERVER_ERROR, error ? "error: " + error->message : cannotParse);
}

// Not one that another facade has brought up since.
void Kavio::State::closePage() {
    const auto page = mPage.lock();
    if (page && page == mTDSecSceneController->scene()) mTDSecSceneController->endPage();
}

void Kavio::State::showNextChallenge(const std::string& url) {
    mLastFlow = TDSFlowType::CHALLENGE;
    if (const auto scene = mTDSecSceneController->scene()) {
        mReceivedTDSRedirect = false;
        mPage = scene;
        return scene->load(url, false);
    }
    if (!presentPage(TDSFlowType::CHALLENGE, url)) finishEnrolment(ResultType::FAILURE, cannotStartPage);
}

// The person closed the page. Past its end that changes nothing: the answer of the service is on its way.
void Kavio::State::tdSecureWindowClosed() {
    if (mReceivedTDSRedirect) return;
    mReceivedTDSRedirect = true;  // the page is gone: what another facade's page does later is no concern of this one
    finishEnrolment(ResultType::FAILURE, "canceled by user");
}

// False when there is nothing to present on.
bool Kavio::State::presentPage(TDSFlowType flow, const std::string& content) {
    const auto topMost = topMostViewController();
    if (!topMost) return false;
    mTDSecSceneController->mUrl = content;
    mTDSecSceneController->mFlow = flow;
    const auto scene = mTDSecSceneController->createScene(storyboard);
    if (!scene) return false;
    mPage = scene;
    mReceivedTDSRedirect = false;
    scene->delegate = mTDSecSceneController;
    scene->presentOn(*topMost, true);
    return true;
}

void Kavio::State::finishEnrolment(ResultType type, std::optional<std::string> message) {
    mIsBusy = false;
    report(&KavioDelegate::onAddCreditCard, type, std::move(message), nullptr);
}

void Kavio::State::attachToScene() {
    using Observer = TDSecureSceneController::SceneEvent::Observer;
    mTDSecSceneController->tdSecureFinished->attach(
        std::make_shared<Observer>(weak_from_this(), [weak = weak_from_this()](TDSecureSceneController& controller) {
            if (const auto self = weak.lock()) self->tdSecureFinished(controller);
        }));
    mTDSecSceneController->tdSecureWindowClosed->attach(
        std::make_shared<Observer>(weak_from_this(), [weak = weak_from_this()](TDSecureSceneController&) {
            if (const auto self = weak.lock()) self->tdSecureWindowClosed();
        }));
}

}  // namespace kavio
