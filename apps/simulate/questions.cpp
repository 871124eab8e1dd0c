#include "questions.h"

#include <algorithm>
#include <array>

namespace kavio::simulate {
namespace {

/// The README's cards for 3-D Secure.
constexpr std::array cards{"4000000000001018", "4000000000001026", "4000000000001034",
                           "4000000000001042", "4000000000001067", "4000000000001075",
                           "4000000000001117", "4000000000001133", "4000000000001141"};

void addCard(Kavio& kavio, std::int64_t) {
    kavio.addCreditCard(std::make_shared<Card>(
        Card{.pan = "4111111111111111", .month = "12", .year = "2039", .cvv = "123", .email = "a@b.example"}));
}

void enrol(Kavio& kavio, std::int64_t card) {
    kavio.addCreditCardTDSecure({.number = cards[std::size_t(card)], .month = 12, .year = 2039, .securityCode = 123},
                                {.name = "Robin", .email = "a@b.example"});
}

constexpr Question questions[]{
    {Kind::ADD_CARD, Callback::ADD_CARD, addCard},
    {Kind::ENROL, Callback::ADD_CARD, enrol},
    {Kind::ASK_SESSION, Callback::SESSION, [](Kavio& kavio, std::int64_t) { kavio.isLoggedIn(); }},
    {Kind::ASK_METHODS, Callback::METHODS, [](Kavio& kavio, std::int64_t) { kavio.getPaymentMethods(); }},
    {Kind::ASK_MACHINES, Callback::MACHINES, [](Kavio& kavio, std::int64_t) { kavio.getMachines(nullptr); }},
    {Kind::ASK_TRANSACTIONS, Callback::TRANSACTIONS,
     [](Kavio& kavio, std::int64_t) { kavio.getTransactions(nullptr); }},
    {Kind::LOG_OUT, Callback::LOGOUT, [](Kavio& kavio, std::int64_t) { kavio.logout(); }},
};

}  // namespace

const Question login{Kind::LOG_IN, Callback::LOGIN, [](Kavio& kavio, std::int64_t) { kavio.login("49", "151234567"); }};
const Question verify{Kind::LOG_IN, Callback::VERIFY,
                      [](Kavio& kavio, std::int64_t) { kavio.verify("123456", "DE", "49", "151234567"); }};

const Question* questionOf(Kind kind) {
    const auto* found = std::ranges::find(questions, kind, &Question::kind);
    return found == std::end(questions) ? nullptr : found;
}

}  // namespace kavio::simulate
