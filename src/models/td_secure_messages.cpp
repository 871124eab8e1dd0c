#include "models/td_secure_messages.h"

#include "models/json/json_value.h"

#include <type_traits>

namespace kavio {
namespace {

template <class Enumeration>
constexpr auto raw(Enumeration value) {
    return static_cast<std::underlying_type_t<Enumeration>>(value);
}

// Secrets, and values with members, are put in separately: braces would copy them, leave the copy of a secret in
// memory, and need memory to destroy the copy of a structure.
JsonObject encode(const TDSPaymentCard& card) {
    JsonObject encoded{{"month", card.month}, {"year", card.year}};
    encoded.emplace("number", card.number.text());
    encoded.emplace("securityCode", std::int64_t{card.securityCode});
    return encoded;
}

JsonObject encode(const TDSCardHolder& holder) {
    JsonObject body{{"name", holder.name}, {"email", holder.email}};
    setIfPresent(body, "streetNumber", holder.streetNumber);
    setIfPresent(body, "streetName", holder.streetName);
    setIfPresent(body, "city", holder.city);
    setIfPresent(body, "territory", holder.territory);
    setIfPresent(body, "country", holder.country);
    setIfPresent(body, "postal", holder.postal);
    return body;
}

JsonObject encode(const TDSBrowser& browser) {
    return {{"lang", browser.lang},        {"challengeWindow", raw(browser.challengeWindow)},
            {"agent", browser.agent},      {"accept", browser.accept},
            {"color", raw(browser.color)}, {"width", browser.width},
            {"height", browser.height}};
}

JsonObject encode(const TDSDetails& details) {
    JsonObject encoded{{"redirect", details.redirect}};
    encoded.emplace("holder", encode(details.holder));
    encoded.emplace("browser", encode(details.browser));
    return encoded;
}

}  // namespace

JsonObject encode(const TDSAddCard& body) {
    JsonObject encoded{{"key", body.key}};
    encoded.emplace("tdSecure", encode(body.tdSecure));
    encoded.emplace("card", encode(body.card));
    return encoded;
}

JsonObject encode(const TDSGetCard& body) {
    JsonObject encoded{{"flow", raw(body.flow)}};
    encoded.emplace("card", encode(body.card));
    setIfPresent(encoded, "token", body.token);
    setIfPresent(encoded, "result", body.result);
    setIfPresent(encoded, "description", body.description);
    setIfPresent(encoded, "transaction", body.transaction);
    return encoded;
}

JsonObject encode(const TDSGetPage& body) { return {{"threeDSMethodData", body.threeDSMethodData}}; }

}  // namespace kavio
