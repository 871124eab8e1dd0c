#include "cards.h"

#include "parameters.h"
#include "reply.h"

#include <fmt/chrono.h>

#include <regex>

namespace kavio::sandbox {
namespace {

bool passesLuhn(const std::string& number) {
    int sum = 0;
    bool doubled = false;
    for (auto digit = number.rbegin(); digit != number.rend(); ++digit, doubled = !doubled) {
        const int value = (*digit - '0') * (doubled ? 2 : 1);
        sum += value > 9 ? value - 9 : value;
    }
    return sum % 10 == 0;
}

std::string issuerOf(const std::string& number) {
    if (number.starts_with('3')) return "American Express";
    if (number.starts_with('4')) return "Visa";
    return number.starts_with('5') ? "Mastercard" : "Other";
}

/// Two-digit years are of this century.
std::int64_t fullYear(std::int64_t year) { return year < 100 ? 2000 + year : year; }

}  // namespace

void checkCard(const CardData& card, TimePoint now, const std::string& where) {
    const auto refuse = [&](const char* member) { throw Refusal(400, fmt::format("{}.{} is wrong", where, member)); };
    if (card.number.size() < 12 || card.number.size() > 19 || !onlyDigits(card.number) || !passesLuhn(card.number))
        refuse("number");
    if (card.month < 1 || card.month > 12) refuse("month");
    const auto today = fmt::gmtime(std::chrono::system_clock::to_time_t(now));
    const auto year = fullYear(card.year);
    if (card.year < 0 || year > 9999 || year * 12 + card.month < (today.tm_year + 1900) * 12 + today.tm_mon + 1)
        refuse("year");
    if (card.securityCode.empty() || card.securityCode.size() > 4 || !onlyDigits(card.securityCode))
        refuse("securityCode");
}

void takeKey(std::set<std::string>& used, const std::string& key) {
    static const std::regex uuid("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}");
    if (!std::regex_match(key, uuid)) throw Refusal(400, "key must be a UUID in upper case");
    if (!used.insert(key).second) throw Refusal(400, "key was used before");
}

StoredCard storedCard(const CardData& card, std::int64_t id, std::string locator) {
    return {.id = id,
            .locator = std::move(locator),
            .label = "•••• " + card.number.substr(card.number.size() - 4),
            .issuer = issuerOf(card.number),
            .month = int(card.month),
            .year = int(fullYear(card.year)),
            .securityCode = std::stoi(card.securityCode)};
}

nlohmann::json storedCardReply(const StoredCard& card) {
    return {{"locator", card.locator}, {"securityCode", card.securityCode},
            {"label", card.label},     {"issuer", card.issuer},
            {"month", card.month},     {"year", card.year},
            {"id", card.id},           {"processorType", "PaymentCard"}};
}

}  // namespace kavio::sandbox
