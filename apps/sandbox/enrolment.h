#pragma once

#include "cards.h"

#include <string>

namespace kavio::sandbox {

/// What happens to a card on its way through 3-D Secure.
enum class Course {
    frictionless,
    fingerprint,
    fingerprintThenChallenge,
    challenge,
    challengeAnswersItself,
    challengeDeclines,
    challengeNeverEnds,
    challengeEndsInFrame,
    challengeIsSlow,
    challengeCannotLoad,
    addCardFails,
    addCardUnknown,
    fingerprintIsNoUrl,
    locatorFails,
    locatorUnknown,
};

/// A 3-D Secure reply's kind, as clients send it back.
enum class Flow { fingerprint = 2, challenge = 3 };

/// A card between the request to add it and the reply with its locator.
struct Enrolment {
    std::string id;  // the transaction
    std::string accountNumber;
    CardData card;
    Course course = Course::frictionless;
    Flow flow = Flow::challenge;
    std::string token;  // what the current page hands to the client
    int triesLeft = 3;
    // How the page ended.
    bool ended = false;
    std::string result;
    std::string description;
};

}  // namespace kavio::sandbox
