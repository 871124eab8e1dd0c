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
Parameters encode(const TDSPaymentCard& card) {
    Parameters encoded{{"month", card.month}, {"year", card.year}};
    encoded.emplace("number", card.number.text());
    encoded.emplace("securityCode", std::int64_t{card.securityCode});
    return encoded;
}

Parameters encode(const TDSCardHolder& holder) {
    Parameters body{{"name", holder.name}, {"email", holder.email}};
    setIfPresent(body, "streetNumber", holder.streetNumber);
    setIfPresent(body, "streetName", holder.streetName);
    setIfPresent(body, "city", holder.city);
    setIfPresent(body, "territory", holder.territory);
    setIfPresent(body, "country", holder.country);
    setIfPresent(body, "postal", holder.postal);
    return body;
}

Parameters encode(const TDSBrowser& browser) {
    return {{"lang", browser.lang},        {"challengeWindow", raw(browser.challengeWindow)},
            {"agent", browser.agent},      {"accept", browser.accept},
            {"color", raw(browser.color)}, {"width", browser.width},
            {"height", browser.height}};
}

Parameters encode(const TDSDetails& details) {
    Parameters encoded{{"redirect", details.redirect}};
    encoded.add("holder", encode(details.holder));
    encoded.add("browser", encode(details.browser));
    return encoded;
}

}  // namespace

Parameters encode(const TDSAddCard& body) {
    Parameters encoded{{"key", body.key}};
    encoded.add("tdSecure", encode(body.tdSecure));
    encoded.add("card", encode(body.card));
    return encoded;
}

Parameters encode(const TDSGetCard& body) {
    Parameters encoded{{"flow", raw(body.flow)}};
    encoded.add("card", encode(body.card));
    setIfPresent(encoded, "token", body.token);
    setIfPresent(encoded, "result", body.result);
    setIfPresent(encoded, "description", body.description);
    setIfPresent(encoded, "transaction", body.transaction);
    return encoded;
}

Parameters encode(const TDSGetPage& body) { return {{"threeDSMethodData", body.threeDSMethodData}}; }

}  // namespace kavio
