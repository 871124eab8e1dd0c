#include "world.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <openssl/rand.h>

#include <algorithm>
#include <array>

namespace kavio::sandbox {
namespace {

constexpr int pastOrders = 3;

void addSampleInstruments(World& world, Account& account) {
    const auto money = [&](double euros) { return account.currency->smallestUnits(euros * account.currency->perEuro); };
    account.balance = money(50);
    account.cards = {{world.nextId(), world.options.unguessableText(), "•••• 1111", "Visa", 12, 2031, 123},
                     {world.nextId(), world.options.unguessableText(), "•••• 4444", "Mastercard", 6, 2029, 456}};
    account.prepaidCards = {{.id = world.nextId(),
                             .number = "6301 2200 0001",
                             .issuer = "North Vend",
                             .operatorId = 9001,
                             .balance = money(10),
                             .limit = money(5),
                             .created = world.now() - std::chrono::hours{24 * 200}},
                            {.id = world.nextId(),
                             .number = "6301 2200 0002",
                             .issuer = "City Bean",
                             .operatorId = 9002,
                             .balance = money(3),
                             .status = PrepaidCard::blackListed,
                             .isVirtual = false,
                             .isMoney = false,
                             .created = world.now() - std::chrono::hours{24 * 900}}};
}

void addHistory(World& world, Account& account) {
    for (const auto& machine : machines()) {
        if (machine.city->country.code != account.country || account.orders.size() == pastOrders) continue;
        const auto ago = std::chrono::hours{24} * int(pastOrders - account.orders.size());
        const auto product = productsOf(machine).front();
        const auto price = account.currency->smallestUnits(product.price);
        account.machineIds.insert(machine.id);
        account.orders.push_back({.id = world.nextId(),
                                  .machine = &machine,
                                  .amount = price,
                                  .currency = std::string(account.currency->code),
                                  .instrument = "0",
                                  .label = account.phone,
                                  .course = {"completed"},
                                  .placed = world.pace() - ago,
                                  .created = world.now() - ago,
                                  .settled = true,
                                  .startingBalance = account.balance + price,
                                  .endingBalance = account.balance});
    }
}

}  // namespace

StoredCard* Account::card(const std::string& locator) {
    const auto found = std::ranges::find(cards, locator, &StoredCard::locator);
    return found == cards.end() ? nullptr : &*found;
}

PrepaidCard* Account::prepaid(const std::string& id) {
    const auto found = std::find_if(prepaidCards.begin(), prepaidCards.end(),
                                    [&](const auto& c) { return std::to_string(c.id) == id; });
    return found == prepaidCards.end() ? nullptr : &*found;
}

std::int64_t& Account::balanceBehind(const Order& order) {
    auto* const card = order.source == Source::prepaid ? prepaid(order.instrument) : nullptr;
    return card != nullptr ? card->balance : balance;
}

Account& World::openAccount(const std::string& countryCode, const std::string& phoneNumber,
                            const std::string& country) {
    const auto [entry, isNew] = accounts.try_emplace(countryCode + phoneNumber);
    auto& account = entry->second;
    if (!isNew) return account;
    account.number = entry->first;
    account.phone = fmt::format("+{} {}", countryCode, phoneNumber);
    account.country = country;
    account.currency = &countryOf(countryCode).currency;
    if (phoneNumber.ends_with("000")) return account;
    addSampleInstruments(*this, account);
    addHistory(*this, account);
    account.ordersAtFirst = account.orders.size();
    return account;
}

Account* World::accountOf(const std::string& token) {
    const auto session = sessions.find(token);
    if (session == sessions.end() || session->second.expires <= pace()) return nullptr;
    return &accounts.at(session->second.number);
}

const StoredCard& World::storeCard(Account& account, const CardData& card) {
    return account.cards.emplace_back(storedCard(card, nextId(), options.unguessableText()));
}

const std::string& World::statusOf(const Order& order) const {
    const auto step = std::max(options.orderStep, std::chrono::milliseconds{1});
    const auto steps = std::max<std::int64_t>((pace() - order.placed) / step, 0);
    return order.course[std::min(std::size_t(steps), order.course.size() - 1)];
}

void World::settleOrders() {
    for (auto& [number, account] : accounts)
        for (auto& order : account.orders) settle(account, order);
}

void World::settle(Account& account, Order& order) const {
    if (order.settled || statusOf(order) != order.course.back()) return;
    order.settled = true;
    if (order.source == Source::creditCard || order.currency != account.currency->code) return;
    auto& balance = account.balanceBehind(order);
    if (order.course.back() == "completed") balance -= order.amount;
    order.endingBalance = balance;
}

std::string randomText() {
    std::array<unsigned char, 16> bytes{};
    RAND_bytes(bytes.data(), int(bytes.size()));
    return fmt::format("{:02x}", fmt::join(bytes, ""));
}

std::string wireName(OrderType type) {
    switch (type) {
        case OrderType::vending:
            return "vending";
        case OrderType::prepaidDeposit:
            return "prePaidDeposit";
        case OrderType::balanceDeposit:
            return "balanceDeposit";
    }
    return {};
}

}  // namespace kavio::sandbox
