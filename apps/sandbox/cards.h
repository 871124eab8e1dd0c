#pragma once

#include "sandbox.h"

#include <nlohmann/json.hpp>

#include <string>

namespace kavio::sandbox {

struct Account;
struct StoredCard;
struct World;

/// A card as a client enters it. Checked by `checkCard`.
struct CardData {
    std::string number;
    std::int64_t month = 0;
    std::int64_t year = 0;
    std::string securityCode;
    bool operator==(const CardData&) const = default;
};

/// Throws a Refusal (400) that names the first member that is wrong: length and check digit of the number, a date in
/// the past, a security code that is none.
void checkCard(const CardData& card, TimePoint now, const std::string& where);

/// Throws a Refusal (400) unless the key is a new UUID in upper case.
void takeKey(Account& account, const std::string& key);

const StoredCard& storeCard(World& world, Account& account, const CardData& card);

/// A stored card as the account and the replies to an addition list it.
nlohmann::json storedCardReply(const StoredCard& card);

}  // namespace kavio::sandbox
