#include "cards.h"
#include "parameters.h"
#include "service.h"

#include <fmt/format.h>

namespace kavio::sandbox {
namespace {

constexpr auto challengeLifetime = std::chrono::minutes{5};
constexpr int retryTimeoutSeconds = 30;

std::string digits(const nlohmann::json& in, const char* name, std::size_t shortest, std::size_t longest) {
    auto text = in.at(name).get<std::string>();
    if (!onlyDigits(text) || text.size() < shortest || text.size() > longest)
        throw Refusal(400, fmt::format("{} must be {} to {} digits", name, shortest, longest));
    return text;
}

struct Phone {
    std::string countryCode;
    std::string number;
    std::string full() const { return countryCode + number; }
};

Phone phoneFrom(const nlohmann::json& in) {
    return {digits(in, "countryCode", 1, 4), digits(in, "phoneNumber", 4, 14)};
}

nlohmann::json tokenReply(const std::string& token) { return {{"token", {{"token", token}}}}; }

nlohmann::json time(Call& call) {
    const auto now = call.world.now();
    return {{"serverTime", millisecondsText(now) + "+0000"},
            {"expireTime", millisecondsText(now + call.world.options.sampleLifetime) + "+0000"}};
}

nlohmann::json challenge(Call& call) {
    const auto phone = phoneFrom(call.in);
    if (phone.number.ends_with("999")) throw Refusal(403, "this number is blocked");
    const auto set = call.world.codes.find(phone.full());
    const auto code = set == call.world.codes.end() ? call.world.options.code : set->second;

    const auto text = call.world.options.unguessableText();
    call.world.challenges[text] = {phone.full(), code, call.world.pace() + challengeLifetime};
    if (call.world.options.message)
        call.world.options.message(fmt::format("code for +{} {} is {}", phone.countryCode, phone.number, code));
    return {
        {"challenge", {{"challenge", text}, {"phone", phone.number}, {"retryTimeoutSeconds", retryTimeoutSeconds}}}};
}

nlohmann::json verify(Call& call) {
    const auto phone = phoneFrom(call.in);
    const auto country = call.in.at("country").get<std::string>();
    if (country.size() != 2) throw Refusal(400, "country must be a country code of two letters");
    const auto found = call.world.challenges.find(call.in.at("challenge").get<std::string>());
    if (found == call.world.challenges.end() || found->second.expires <= call.world.pace())
        throw Refusal(400, "challenge is invalid or has expired");

    auto& expected = found->second;
    if (expected.number != phone.full()) throw Refusal(400, "phoneNumber is not the one that the challenge is for");
    if (expected.code != call.in.at("verificationCode")) {
        if (--expected.triesLeft == 0) call.world.challenges.erase(found);
        throw Refusal(400, "verificationCode is wrong");
    }
    call.world.challenges.erase(found);
    call.world.openAccount(phone.countryCode, phone.number, country);
    const auto token = call.world.options.unguessableText();
    call.world.sessions[token] = {phone.full(), call.world.pace() + call.world.options.tokenLifetime};
    return tokenReply(token);
}

nlohmann::json cardsOf(const Account& account) {
    auto cards = nlohmann::json::array();
    for (const auto& card : account.cards) cards.push_back(storedCardReply(card));
    return cards;
}

nlohmann::json account(Call& call) {
    const auto& account = *call.account;
    auto reply = tokenReply(call.token);
    reply["configurationMaxUpdatedDT"] = "2024-01-01T00:00:00.000";
    reply["account"] = {{"firstName", "Robin"},
                        {"lastName", "Sample"},
                        {"phone", account.phone},
                        {"email", "robin@kavio.example"},
                        {"country", account.country},
                        {"currency", account.currency->code},
                        {"balance", account.balance},
                        {"currencyDecimalDigits", account.currency->decimals},
                        {"paypalClientId", "sandbox"},
                        {"tokenLocators", cardsOf(account)},
                        {"marketingConfirmation", false},
                        {"preventPayPalDirectPayment", true},
                        {"preventPayPalTopUpDeposit", true},
                        {"gameficationTotalGamePlayed", 0},
                        {"appData", R"({"machinesOrder":2,"paymentMethodsOrder":0,"lastEarnedCashback":0})"}};
    return reply;
}

nlohmann::json logOut(Call& call) {
    call.world.sessions.erase(call.token);
    return {{"ok", true}, {"result", "signed out"}};
}

}  // namespace

Routes sessionRoutes() {
    return {
        {"GET", "/time", time, {}, Access::open},
        {"POST",
         "/account/challenge/",
         challenge,
         {{Kind::text, {"countryCode", "phoneNumber", "challenge", "retry"}}},
         Access::open},
        {"POST",
         "/account/verify/",
         verify,
         {{Kind::text,
           {"verificationCode", "challenge", "retryTimeoutSeconds", "country", "countryCode", "phoneNumber"}}},
         Access::open},
        {"GET", "/account", account, {{Kind::text, {}, {"os", "osVersion", "appVersion", "pushToken"}}}},
        {"PUT", "/account/logout", logOut},
    };
}

}  // namespace kavio::sandbox
