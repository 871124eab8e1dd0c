#include "gallery.h"
#include "issuer.h"
#include "service.h"
#include "testcards.h"

#include <fmt/format.h>

namespace kavio::sandbox {
namespace {

constexpr const char* loopback = "http://127.0.0.1";

// The kind that a reply claims to be. Its other members must not contradict it.
enum class AddKind { frictionless = 1, fingerprint = 2, challenge = 3, error = 4 };
enum class LocatorKind { locator = 1, challenge = 2, error = 3, notReady = 4 };

CardData cardFrom(const nlohmann::json& in, TimePoint now) {
    checkParameters(in, {{Kind::text, {"number"}}, {Kind::integer, {"month", "year", "securityCode"}}}, "card");
    CardData card{in["number"], in["month"], in["year"], in["securityCode"].dump()};
    checkCard(card, now, "card");
    return card;
}

void checkBrowser(const nlohmann::json& browser) {
    checkParameters(
        browser,
        {{Kind::text, {"lang", "agent", "accept"}}, {Kind::integer, {"challengeWindow", "color", "width", "height"}}},
        "tdSecure.browser");
    const auto within = [&](const char* name, int most) {
        if (browser[name] < 0 || browser[name] > most)
            throw Refusal(400, fmt::format("tdSecure.browser.{} must be 0 to {}", name, most));
    };
    within("challengeWindow", 4);
    within("color", 7);
    within("width", 10'000);
    within("height", 10'000);
}

void checkDetails(const nlohmann::json& details) {
    checkParameters(details, {{Kind::object, {"holder", "browser"}}, {Kind::text, {"redirect"}}}, "tdSecure");
    checkParameters(details["holder"],
                    {{Kind::text, {"name", "email"}, {"streetName", "city", "territory", "country", "postal"}},
                     {Kind::integer, {}, {"streetNumber"}}},
                    "tdSecure.holder");
    checkBrowser(details["browser"]);
    if (details["redirect"] != loopback) throw Refusal(400, fmt::format("tdSecure.redirect must be {}", loopback));
}

nlohmann::json askForFingerprint(World& world, Enrolment& enrolment) {
    enrolment.flow = Flow::fingerprint;
    const auto page = enrolment.course == Course::fingerprintIsNoUrl ? "no URL: [" : fingerprintUrl(enrolment.id);
    world.enrolments[enrolment.id] = enrolment;
    return {{"type", AddKind::fingerprint}, {"page", page}, {"id", enrolment.id}};
}

nlohmann::json askForChallenge(World& world, const Enrolment& enrolment) {
    world.enrolments[enrolment.id] = enrolment;
    return {{"type", AddKind::challenge}, {"url", challengeUrl(world, enrolment)}, {"id", enrolment.id}};
}

nlohmann::json addCard(Call& call) {
    const auto card = cardFrom(call.in.at("card"), call.world.now());
    checkDetails(call.in.at("tdSecure"));
    takeKey(call.account->usedKeys, call.in.at("key"));
    Enrolment enrolment;
    enrolment.id = call.world.options.unguessableText();
    enrolment.accountNumber = call.account->number;
    enrolment.card = card;
    enrolment.course = courseOf(card.number);
    enrolment.page = galleryPage(card.number);
    enrolment.token = call.world.options.unguessableText();
    switch (enrolment.course) {
        case Course::frictionless:
            return {{"type", AddKind::frictionless}, {"locator", call.world.storeCard(*call.account, card).locator}};
        case Course::fingerprint:
        case Course::fingerprintThenChallenge:
        case Course::fingerprintIsNoUrl:
        case Course::locatorFails:
        case Course::locatorUnknown:
            return askForFingerprint(call.world, enrolment);
        case Course::challenge:
        case Course::challengeAnswersItself:
        case Course::challengeDeclines:
        case Course::challengeNeverEnds:
        case Course::challengeEndsInFrame:
        case Course::challengeIsSlow:
        case Course::challengeCannotLoad:
            return askForChallenge(call.world, enrolment);
        case Course::gallery:
            return enrolment.page->flow == Flow::fingerprint ? askForFingerprint(call.world, enrolment)
                                                             : askForChallenge(call.world, enrolment);
        case Course::addCardFails:
            return {{"type", AddKind::error}, {"message", "the card's bank cannot be reached"}};
        case Course::addCardUnknown:
            return {{"type", 9}};
    }
    return nullptr;
}

/// The enrolment that the request wants to finish. Everything in it must be what its page handed out.
Enrolment& enrolmentFor(Call& call) {
    const auto found = call.world.enrolments.find(call.in.value("transaction", ""));
    if (found == call.world.enrolments.end() || found->second.accountNumber != call.account->number)
        throw Refusal(400, "transaction does not name a card that is being added");
    auto& enrolment = found->second;
    if (cardFrom(call.in.at("card"), call.world.now()) != enrolment.card)
        throw Refusal(400, "card is not the one that is being added");
    if (call.in.at("flow") != enrolment.flow) throw Refusal(400, fmt::format("flow must be {}", int(enrolment.flow)));
    if (!enrolment.ended) throw Refusal(400, "the page has not ended yet");
    if (call.in.value("token", "") != enrolment.token) throw Refusal(400, "token is not the one of the page");
    if (call.in.value("result", "") != enrolment.result) throw Refusal(400, "result is not the one of the page");
    if (call.in.value("description", "") != enrolment.description)
        throw Refusal(400, "description is not the one of the page");
    return enrolment;
}

nlohmann::json locatorError(const std::string& message) {
    return {{"result", LocatorKind::error}, {"message", message}};
}

nlohmann::json getLocator(Call& call) {
    auto& enrolment = enrolmentFor(call);
    if (enrolment.course == Course::fingerprintThenChallenge && enrolment.flow == Flow::fingerprint) {
        enrolment.flow = Flow::challenge;
        enrolment.token = call.world.options.unguessableText();
        enrolment.ended = false;
        return {{"result", LocatorKind::challenge}, {"url", challengeUrl(call.world, enrolment)}};
    }
    const auto finished = enrolment;
    call.world.enrolments.erase(finished.id);
    if (finished.course == Course::locatorFails) return locatorError("the card's bank cannot be reached");
    if (finished.course == Course::locatorUnknown) return {{"result", LocatorKind::notReady}};
    if (finished.result != pageSucceeded) return locatorError(finished.description);
    return {{"result", LocatorKind::locator}, {"locator", call.world.storeCard(*call.account, finished.card).locator}};
}

}  // namespace

Routes tdSecureRoutes() {
    return {
        {"POST",
         "/account/locators/credorax/addCard",
         addCard,
         {{Kind::object, {"card", "tdSecure"}}, {Kind::text, {"key"}}}},
        {"POST",
         "/account/locators/credorax/getLocator",
         getLocator,
         {{Kind::integer, {"flow"}},
          {Kind::object, {"card"}},
          {Kind::text, {}, {"token", "result", "description", "transaction"}}}},
    };
}

}  // namespace kavio::sandbox
