#pragma once

#include "cards.h"
#include "data.h"
#include "options.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kavio::sandbox {

/// What happens to a card in 3-D Secure.
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
    gallery,
};

/// A 3-D Secure reply's kind, as clients send it back.
enum class Flow { fingerprint = 2, challenge = 3 };

struct GalleryPage;

/// A card between the request to add it and the reply with its locator.
struct Enrolment {
    std::string id;  // the transaction
    std::string accountNumber;
    CardData card;
    Course course = Course::frictionless;
    Flow flow = Flow::challenge;
    std::string token;  // what the current page hands to the client
    int triesLeft = 3;
    const GalleryPage* page = nullptr;          // on the course `gallery`
    std::map<std::string, std::size_t> visits;  // to each of its replies
    // How the page ended.
    bool ended = false;
    std::string result;
    std::string description;
};

/// The largest purchase or deposit, in the currency's smallest unit.
constexpr std::int64_t mostAmount = 100'000'000;

struct PrepaidCard {
    static constexpr int active = 1, blackListed = 4;
    std::int64_t id = 0;
    std::string number;
    std::string issuer;
    std::int64_t operatorId = 0;
    std::int64_t balance = 0;
    std::int64_t limit = -1;  // negative for none
    int status = active;
    bool isVirtual = true;
    bool isMoney = true;
    TimePoint created;
};

enum class OrderType { vending = 1, prepaidDeposit = 2, balanceDeposit = 3 };
enum class Source { balance, creditCard, prepaid };

struct Order {
    std::int64_t id = 0;
    OrderType type = OrderType::vending;
    const Machine* machine = nullptr;  // null for a deposit
    std::int64_t prepaidCardId = 0;    // what a deposit tops up; 0 for none
    std::int64_t amount = 0;
    std::string currency;
    Source source = Source::balance;
    std::string instrument;  // the payment method's identifier, as clients know it
    std::string label;
    nlohmann::json items = nlohmann::json::array();
    std::vector<std::string> course;  // the statuses it goes through
    TimePoint placed;                 // by the clock that moves it on
    TimePoint created;                // by the service's clock, which tests may shift by years
    bool settled = false;
    std::int64_t startingBalance = 0;
    std::optional<std::int64_t> endingBalance;  // once it is settled, if it was paid from a balance in its own currency
};

struct Account {
    std::string number;  // country code and number, digits only
    std::string phone;   // as the account shows it
    std::string country;
    const Currency* currency = nullptr;
    std::int64_t balance = 0;
    std::vector<StoredCard> cards;
    std::vector<PrepaidCard> prepaidCards;
    std::vector<Order> orders;
    std::size_t ordersAtFirst = 0;  // how many of them the account had from the start
    std::set<std::int64_t> machineIds;
    std::set<std::string> usedKeys;

    StoredCard* card(const std::string& locator);
    PrepaidCard* prepaid(const std::string& id);
    /// The balance that the order's payment changes.
    std::int64_t& balanceBehind(const Order& order);
};

struct Challenge {
    std::string number;
    std::string code;
    TimePoint expires;
    int triesLeft = 5;
};

struct Session {
    std::string number;
    TimePoint expires;
};

/// How the clock by which orders progress and tokens expire differs from the machine's: it can be stopped and moved on.
struct Pace {
    std::optional<TimePoint> stoppedAt;
    TimePoint::duration ahead{0};

    TimePoint at(TimePoint clock) const { return stoppedAt.value_or(clock) + ahead; }
    void stop(TimePoint clock) { stoppedAt = stoppedAt.value_or(clock); }
    /// Goes on from where it was stopped.
    void resume(TimePoint clock) {
        ahead -= clock - stoppedAt.value_or(clock);
        stoppedAt.reset();
    }
};

/// Everything the service remembers. It has no lock of its own: only one request at a time may use it.
struct World {
    explicit World(Options theOptions) : options(std::move(theOptions)) {}

    const Options options;
    std::chrono::seconds clockOffset{0};
    Pace paceKeeper;
    std::map<std::string, Account> accounts;      // by number
    std::map<std::string, Challenge> challenges;  // by challenge text
    std::map<std::string, Session> sessions;      // by token
    std::map<std::string, std::string> codes;     // by number
    std::map<std::string, Enrolment> enrolments;  // by transaction
    // Where the issuer's visible pages are.
    std::string issuerScheme;
    std::uint16_t issuerPort = 0;
    nlohmann::json purchases = nlohmann::json::array();

    /// The clock by which orders progress and tokens expire.
    TimePoint pace() const { return paceKeeper.at(options.clock()); }
    /// The clock that clients see.
    TimePoint now() const { return options.clock() + clockOffset; }

    std::int64_t nextId() { return ++mLastId; }
    /// The account of a number; a new one gets a balance, cards and a little history.
    Account& openAccount(const std::string& countryCode, const std::string& phoneNumber, const std::string& country);
    Account* accountOf(const std::string& token);
    const StoredCard& storeCard(Account& account, const CardData& card);

    const std::string& statusOf(const Order& order) const;
    /// Moves the money of the orders that have ended.
    void settleOrders();

private:
    void settle(Account& account, Order& order) const;

    std::int64_t mLastId = 7'000'000'000;
};

std::string wireName(OrderType type);

}  // namespace kavio::sandbox
