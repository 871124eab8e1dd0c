#include "models/td_secure_messages.h"

#include "models/json/json_value.h"

#include <type_traits>

namespace kavio {
namespace {

template <class Enumeration>
constexpr auto raw(Enumeration value) {
    return static_cast<std::underlying_type_t<Enumeration>>(value);
}

JsonObject encode(const TDSPaymentCard& card) {
    return {{"number", card.number}, {"month", card.month}, {"year", card.year}, {"securityCode", card.securityCode}};
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
    return {{"holder", encode(details.holder)}, {"browser", encode(details.browser)}, {"redirect", details.redirect}};
}

}  // namespace

JsonObject encode(const TDSAddCard& body) {
    return {{"card", encode(body.card)}, {"key", body.key}, {"tdSecure", encode(body.tdSecure)}};
}

JsonObject encode(const TDSGetCard& body) {
    JsonObject encoded{{"flow", raw(body.flow)}, {"card", encode(body.card)}};
    setIfPresent(encoded, "token", body.token);
    setIfPresent(encoded, "result", body.result);
    setIfPresent(encoded, "description", body.description);
    setIfPresent(encoded, "transaction", body.transaction);
    return encoded;
}

JsonObject encode(const TDSGetPage& body) { return {{"threeDSMethodData", body.threeDSMethodData}}; }

}  // namespace kavio
