#include "cards.h"
#include "service.h"
#include "testcards.h"

#include <fmt/format.h>

#include <algorithm>

namespace kavio::sandbox {
namespace {

nlohmann::json addCard(Call& call) {
    const auto& given = call.in.at("paymentCard");
    checkParameters(given, {{Kind::text, {"number", "year", "month", "securityCode", "email"}}}, "paymentCard");
    const CardData card{given["number"], numberFrom(given["month"].get<std::string>()),
                        numberFrom(given["year"].get<std::string>()), given["securityCode"]};
    checkCard(card, call.world.now(), "paymentCard");
    if (given["email"].get<std::string>().find('@') == std::string::npos)
        throw Refusal(400, "paymentCard.email is wrong");
    takeKey(call.account->usedKeys, call.in.at("key"));
    if (card.number == declinedNumber) throw Refusal(402, "the card was declined");
    return {{"locator", storedCardReply(call.world.storeCard(*call.account, card))}};
}

nlohmann::json removeCard(Call& call) {
    auto& cards = call.account->cards;
    const auto removed = std::remove_if(cards.begin(), cards.end(),
                                        [&](const StoredCard& c) { return c.locator == call.captured.front(); });
    if (removed == cards.end()) throw Refusal(404, "there is no card with this locator");
    cards.erase(removed, cards.end());
    return {{"ok", true}};
}

nlohmann::json prepaidReply(const PrepaidCard& card, const Currency& currency) {
    return {{"cardId", card.id},
            {"cardNumber", card.number},
            {"revalue", card.isMoney},
            {"balance", card.balance},
            {"cardLimit", card.limit},
            {"cardHolderName", "Robin Sample"},
            {"cardIssuerName", card.issuer},
            {"cardStatus", card.status},
            {"createdTime", millisecondsText(card.created)},
            {"cardType", card.isVirtual ? 30000601 : 30000600},
            {"currency", {{"code", currency.code}, {"decimalDigits", currency.decimals}}},
            {"fullTreeOperatorsField", {9000, card.operatorId}},
            {"isMoney", card.isMoney}};
}

nlohmann::json prepaidCards(Call& call) {
    auto cards = nlohmann::json::array();
    for (const auto& card : call.account->prepaidCards) cards.push_back(prepaidReply(card, *call.account->currency));
    return {{"prepaidCards", cards}};
}

nlohmann::json deposit(Call& call, OrderType type, std::int64_t& balance, const std::string& instrument,
                       std::int64_t prepaidCardId = 0) {
    auto& account = *call.account;
    const auto& locator = call.in.at("paymentCardLocator");
    checkParameters(locator, {{Kind::text, {"locator"}}}, "paymentCardLocator");
    const auto* charged = account.card(locator["locator"]);
    if (charged == nullptr) throw Refusal(400, "paymentCardLocator.locator does not name a card of this account");
    if (call.in.at("currency") != account.currency->code)
        throw Refusal(400, fmt::format("currency must be {}", account.currency->code));
    const auto amount = call.in.at("amount").get<std::int64_t>();
    if (amount < 1 || amount > mostAmount) throw Refusal(400, fmt::format("amount must be 1 to {}", mostAmount));

    Order order;
    order.id = call.world.nextId();
    order.type = type;
    order.prepaidCardId = prepaidCardId;
    order.amount = amount;
    order.currency = account.currency->code;
    order.source = Source::creditCard;
    order.instrument = charged->locator;
    order.label = instrument + " from " + charged->label;
    order.course = {"completed"};
    order.placed = call.world.pace();
    order.created = call.world.now();
    order.settled = true;
    order.startingBalance = balance;
    order.endingBalance = balance += amount;
    account.orders.push_back(order);
    return {{"deposit",
             {{"balance", balance},
              {"currency", account.currency->code},
              {"fee", 0},
              {"gross", amount},
              {"net", amount},
              {"id", order.id},
              {"paymentSource", "ecommerce"},
              {"paymentSourceLabel", charged->label},
              {"createdUTC", secondsText(order.created)},
              {"issuer", charged->issuer}}}};
}

nlohmann::json walletDeposit(Call& call) {
    return deposit(call, OrderType::balanceDeposit, call.account->balance, "wallet");
}

nlohmann::json prepaidDeposit(Call& call) {
    auto* card = call.account->prepaid(call.captured.front());
    if (card == nullptr) throw Refusal(404, "there is no prepaid card with this identifier");
    return deposit(call, OrderType::prepaidDeposit, card->balance, card->number, card->id);
}

}  // namespace

Routes paymentRoutes() {
    const Parameters depositParameters{{Kind::object, {"paymentCardLocator"}},
                                       {Kind::integer, {"amount"}},
                                       {Kind::text, {"currency"}, {"payPalMetadataId", "label"}},
                                       {Kind::boolean, {"autoTopup"}}};
    return {
        {"POST", "/account/locators", addCard, {{Kind::object, {"paymentCard"}}, {Kind::text, {"key"}}}},
        {"DELETE", "/account/locators/*", removeCard},
        {"GET", "/prepaidCards", prepaidCards},
        {"POST", "/deposits/", walletDeposit, depositParameters},
        {"POST", "/prepaidCards/*/deposits/", prepaidDeposit, depositParameters},
    };
}

}  // namespace kavio::sandbox
