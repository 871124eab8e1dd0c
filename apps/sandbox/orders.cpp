#include "service.h"

#include <fmt/format.h>

#include <algorithm>

namespace kavio::sandbox {
namespace {

/// What a purchase without an amount and without products costs, in euros.
constexpr double defaultPrice = 1.0;

/// How a payment source is written in orders, and as the code of a transactions query.
struct SourceNames {
    std::string_view wire;
    int code;
};

SourceNames namesOf(Source source) {
    switch (source) {
        case Source::balance:
            return {"balance", 1};
        case Source::creditCard:
            return {"ecommerce", 2};
        case Source::prepaid:
            return {"prepaid", 99};
    }
    return {};
}

/// Checks the products against what the machine offers, and returns their total cost.
std::int64_t costOf(const nlohmann::json& wanted, const Machine& machine) {
    const auto offered = productsOf(machine);
    std::int64_t cost = 0;
    for (const auto& item : wanted) {
        checkParameters(item, {{Kind::integer, {"productCode", "quantityValue", "pulseLineNumber"}}}, "products");
        const auto quantity = item.at("quantityValue").get<std::int64_t>();
        if (quantity < 1 || quantity > 100) throw Refusal(400, "products.quantityValue must be 1 to 100");
        const auto product = std::find_if(offered.begin(), offered.end(),
                                          [&](const Product& p) { return p.code == item.at("productCode"); });
        if (product == offered.end())
            throw Refusal(400, "products.productCode does not name a product of this machine");
        cost += quantity * machine.city->country.currency.smallestUnits(product->price);
    }
    return cost;
}

/// The status in which an order ends, decided first by its payment, then by its machine.
std::string endingOf(Account& account, const Order& order) {
    if (order.source != Source::creditCard) {
        auto available = account.balanceBehind(order);
        for (const auto& other : account.orders)
            if (!other.settled && other.source == order.source && other.instrument == order.instrument)
                available -= other.amount;
        const auto* card = order.source == Source::prepaid ? account.prepaid(order.instrument) : nullptr;
        if (card != nullptr && card->status != PrepaidCard::active) return "cardNotAllowed";
        if (card != nullptr && card->limit > 0) available += card->limit;
        if (account.currency != &order.machine->city->country.currency) return "currencyMismatch";
        if (order.amount > available) return "limitExceeded";
    }
    return order.machine->ending;
}

std::vector<std::string> courseTo(const std::string& ending) {
    if (ending == "created") return {"created"};
    if (ending == "completed") return {"created", "started", "authorized", "completed"};
    return {"created", "started", ending};
}

void chooseInstrument(Order& order, Account& account, const nlohmann::json& in) {
    if (in.contains("tokenLocator")) {
        const auto* card = account.card(in["tokenLocator"]);
        if (card == nullptr) throw Refusal(400, "tokenLocator does not name a card of this account");
        order.source = Source::creditCard;
        order.instrument = card->locator;
        order.label = card->label;
    } else if (in.contains("prepaidCardId")) {
        const auto* card = account.prepaid(in["prepaidCardId"]);
        if (card == nullptr) throw Refusal(400, "prepaidCardId does not name a card of this account");
        order.source = Source::prepaid;
        order.instrument = std::to_string(card->id);
        order.label = card->number;
    } else {
        order.instrument = "0";
        order.label = account.phone;
    }
}

nlohmann::json itemsOf(const Order& order) {
    auto items = nlohmann::json::array();
    for (const auto& item : order.items) {
        for (const auto& product : productsOf(*order.machine))
            if (product.code == item.at("productCode"))
                items.push_back(
                    {{"name", product.name}, {"quantity", item.at("quantityValue")}, {"price", product.price}});
    }
    return items;
}

nlohmann::json orderReply(const World& world, const Order& order, bool statusOnly) {
    const auto& status = world.statusOf(order);
    nlohmann::json reply{{"id", std::to_string(order.id)},
                         {"orderType", wireName(order.type)},
                         {"orderStatus", status},
                         {"amount", order.amount},
                         {"currency", order.currency},
                         {"createdUTC", secondsText(order.created)},
                         {"paymentSource", namesOf(order.source).wire},
                         {"orderItemsCount", order.items.size()}};
    if (order.endingBalance) reply["endingBalance"] = *order.endingBalance;
    if (statusOnly) return {{"order", reply}};

    reply["paymentSourceLabel"] = order.label;
    reply["chargedAmount"] = status == "completed" ? order.amount : 0;
    if (order.prepaidCardId != 0) reply["externalId"] = order.prepaidCardId;
    if (const auto* machine = order.machine) {
        reply["externalReference"] = machine->name;
        reply["externalId"] = machine->kavioId;
        reply["city"] = machine->city->name;
        reply["country"] = {{"code", machine->city->country.code}};
        reply["orderItems"] = itemsOf(order);
        reply["dataFields"] = {{"machineType", machine->type}};
        reply["machineReview"] = {{"reviewsCount", 12}, {"reviewsAvg", 4.25}};
        if (machine->owner->campaign != nullptr) reply["lookAndFeel"] = lookAndFeelReply(*machine->owner->campaign);
    }
    return {{"order", reply}};
}

nlohmann::json purchase(Call& call) {
    const auto* machine = machineByKavioId(numberFrom(call.captured.front()));
    if (machine == nullptr) throw Refusal(404, "there is no machine with this number");
    const auto& products = call.in.at("products");
    const auto cost = costOf(products, *machine);

    auto& account = *call.account;
    Order order;
    order.machine = machine;
    order.currency = machine->city->country.currency.code;
    chooseInstrument(order, account, call.in);
    if (order.source != Source::prepaid && !call.in.contains("amount")) throw Refusal(400, "amount is missing");
    const auto& currency = machine->city->country.currency;
    order.amount = call.in.value("amount", cost > 0 ? cost : currency.smallestUnits(defaultPrice * currency.perEuro));
    if (order.amount < 1 || order.amount > mostAmount)
        throw Refusal(400, fmt::format("amount must be 1 to {}", mostAmount));

    order.id = call.world.nextId();
    order.items = products;
    order.course = courseTo(endingOf(account, order));
    order.placed = call.world.pace();
    order.created = call.world.now();
    order.startingBalance = account.balanceBehind(order);
    account.machineIds.insert(machine->id);
    account.orders.push_back(order);
    call.world.purchases.push_back(
        {{"order", order.id}, {"account", account.number}, {"machine", machine->kavioId}, {"amount", order.amount}});
    return orderReply(call.world, order, false);
}

nlohmann::json readOrder(Call& call) {
    const auto& orders = call.account->orders;
    const auto order = std::find_if(orders.begin(), orders.end(), [&](const Order& candidate) {
        return std::to_string(candidate.id) == call.captured.front();
    });
    if (order == orders.end()) throw Refusal(404, "there is no order with this number");
    return orderReply(call.world, *order, call.in.at("statusOnly").get<bool>());
}

/// An activity always carries both balances; this stands for one that is not known yet.
constexpr std::int64_t noBalance = -1;

nlohmann::json activityReply(const World& world, const Order& order) {
    nlohmann::json reply{{"orderId", order.id},
                         {"created", millisecondsText(order.created)},
                         {"amount", order.amount},
                         {"orderStatusName", world.statusOf(order)},
                         {"paymentSourceName", namesOf(order.source).wire},
                         {"orderType", int(order.type)},
                         {"orderTypeName", wireName(order.type)},
                         {"label", order.label},
                         {"startingBalance", order.endingBalance ? order.startingBalance : noBalance},
                         {"endingBalance", order.endingBalance.value_or(noBalance)},
                         {"currency", order.currency},
                         {"bonus", 0},
                         {"gameWin", 0},
                         {"autoTopup", false}};
    if (!order.items.empty()) reply["orderItems"] = itemsOf(order).dump();
    if (order.source == Source::prepaid) reply["prepaidCardID"] = order.instrument;
    if (order.source == Source::creditCard) reply["locator"] = order.instrument;
    if (const auto* machine = order.machine) {
        reply["machineType"] = std::to_string(machine->type);
        reply["machineName"] = machine->name;
        reply["operatorName"] = machine->owner->name;
        reply["city"] = machine->city->name;
        reply["country"] = machine->city->country.code;
        if (const auto* campaign = machine->owner->campaign) {
            reply["lookAndFeel"] = lookAndFeelReply(*campaign);
            reply["punchesOnPunch"] = "1";
            reply["totalPunches"] = std::to_string(campaign->totalPunches);
        }
    }
    return reply;
}

bool isWanted(const Order& order, const nlohmann::json& in) {
    if (in.contains("machine_id") && (order.machine == nullptr || in["machine_id"] != order.machine->id)) return false;
    if (in.contains("card_id") && in["card_id"] != order.instrument) return false;
    if (in.contains("paymentSource") && in["paymentSource"] != namesOf(order.source).code) return false;
    return !in.contains("beforeAuTime") || millisecondsText(order.created) < in["beforeAuTime"].get<std::string>();
}

nlohmann::json activities(Call& call) {
    constexpr std::int64_t most = 500;
    const auto limit = call.in.value("limit", most);
    if (limit < 1 || limit > most) throw Refusal(400, "limit must be 1 to 500");
    constexpr std::string_view form = "0000-00-00T00:00:00.000";
    if (call.in.value("beforeAuTime", std::string(form)).size() != form.size())
        throw Refusal(400, "beforeAuTime must have the form 2024-03-05T14:07:09.250");

    std::vector<const Order*> wanted;
    for (const auto& order : call.account->orders)
        if (isWanted(order, call.in)) wanted.push_back(&order);
    std::stable_sort(wanted.begin(), wanted.end(), [](auto* a, auto* b) { return a->created > b->created; });
    wanted.resize(std::min(wanted.size(), std::size_t(limit)));

    auto reply = nlohmann::json::array();
    for (const auto* order : wanted) reply.push_back(activityReply(call.world, *order));
    return reply;
}

}  // namespace

Routes orderRoutes() {
    return {
        {"POST",
         "/machines/*/orders",
         purchase,
         {{Kind::integer, {}, {"amount"}},
          {Kind::text, {}, {"tokenLocator", "prepaidCardId"}},
          {Kind::array, {"products"}}}},
        {"GET",
         "/orders/activities",
         activities,
         {{Kind::integer, {}, {"machine_id", "paymentSource", "limit"}},
          {Kind::text, {}, {"card_id", "beforeAuTime"}}}},
        {"GET", "/orders/*", readOrder, {{Kind::boolean, {"statusOnly"}}}},
    };
}

}  // namespace kavio::sandbox
