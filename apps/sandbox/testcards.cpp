#include "testcards.h"

#include "gallery.h"

#include <algorithm>

namespace kavio::sandbox {
namespace {

constexpr TestCard cards[]{
    {declinedNumber, Course::frictionless, "declined with 402 when it is added without 3-D Secure"},
    {"4000000000001018", Course::frictionless, "accepted immediately"},
    {"4000000000001026", Course::fingerprint, "fingerprint, then accepted"},
    {"4000000000001034", Course::fingerprintThenChallenge, "fingerprint, then a challenge"},
    {"4000000000001042", Course::challenge, "an immediate challenge; the code is 1234"},
    {"4000000000001059", Course::challengeAnswersItself, "a challenge that answers itself, for tests without a person"},
    {"4000000000001067", Course::challengeDeclines, "a challenge that declines, whatever code is entered"},
    {"4000000000001075", Course::challengeNeverEnds, "a challenge page that never ends"},
    {"4000000000001083", Course::challengeEndsInFrame, "a challenge page that ends in a frame"},
    {"4000000000001091", Course::challengeIsSlow, "a challenge page that takes three seconds to load"},
    {"4000000000001109", Course::challengeCannotLoad, "a challenge page that cannot be loaded"},
    {"4000000000001117", Course::addCardFails, "the request to add the card is answered with an error"},
    {"4000000000001125", Course::addCardUnknown, "the request to add the card is answered with an unreadable reply"},
    {"4000000000001133", Course::fingerprintIsNoUrl, "a fingerprint page whose address is not a URL"},
    {"4000000000001141", Course::locatorFails,
     "the request for the locator, after a fingerprint, is answered with an error"},
    {"4000000000001158", Course::locatorUnknown,
     "the request for the locator, after a fingerprint, is answered with an unreadable reply"},
};

}  // namespace

std::span<const TestCard> testCards() { return cards; }

Course courseOf(std::string_view cardNumber) {
    if (galleryPage(cardNumber) != nullptr) return Course::gallery;
    const auto* const found = std::ranges::find(cards, cardNumber, &TestCard::number);
    return found == std::end(cards) ? Course::frictionless : found->course;
}

}  // namespace kavio::sandbox
