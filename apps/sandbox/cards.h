#pragma once

#include "times.h"

#include <nlohmann/json.hpp>

#include <set>
#include <string>

namespace kavio::sandbox {

/// A card as a client enters it. Checked by `checkCard`.
struct CardData {
    std::string number;
    std::int64_t month = 0;
    std::int64_t year = 0;
    std::string securityCode;
    bool operator==(const CardData&) const = default;
};

struct StoredCard {
    std::int64_t id = 0;
    std::string locator;
    std::string label;
    std::string issuer;
    int month = 0;
    int year = 0;
    int securityCode = 0;
};

/// Throws a Refusal (400) that names the first wrong member: a number whose length or check digit is wrong, a date in
/// the past, or something other than a security code.
void checkCard(const CardData& card, TimePoint now, const std::string& where);

/// Throws a Refusal (400) unless the key is a UUID in upper case that is not among the used ones, which it joins.
void takeKey(std::set<std::string>& used, const std::string& key);

StoredCard storedCard(const CardData& card, std::int64_t id, std::string locator);

/// A stored card as it is listed by the account and by replies to an addition.
nlohmann::json storedCardReply(const StoredCard& card);

}  // namespace kavio::sandbox
