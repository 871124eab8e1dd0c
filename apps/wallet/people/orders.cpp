#include "command_line/help.h"
#include "command_line/numbers.h"
#include "command_line/translation.h"
#include "driver/dates.h"
#include "people/command.h"
#include "people/wallet_methods.h"
#include "wording/money.h"
#include "wording/names.h"
#include "wording/text.h"

#include <kavio/platform/platform.h>

#include <map>
#include <memory>

namespace kavio::wallet {

namespace {

using enum Column::Kind;

const std::map<std::string, PaymentMethod::PaymentType> paymentTypes{
    {"wallet", PaymentMethod::PaymentType::KAVIO},
    {"card", PaymentMethod::PaymentType::CREDIT_CARD},
    {"paypal", PaymentMethod::PaymentType::PAYPAL},
    {"prepaid", PaymentMethod::PaymentType::PREPAID},
};

/// -1 means that the service did not send the amount.
std::string amountText(std::int64_t amount, const Order& order) {
    return amount == -1 ? std::string{} : moneyText(amount, order.currency);
}

/// Asks for orders and shows them.
template <class Ask>
void show(Session& session, Ask ask) {
    const auto asked = Platform::current().clock->now();
    const Orders orders = ask();
    Table table{{{tr("ORDER"), NUMBER},
                 {tr("DATE"), EXACT},
                 {tr("TYPE"), PROSE, 3},
                 {tr("STATUS"), EXACT, 1},
                 {tr("PAID WITH"), PROSE, 2},
                 {tr("AMOUNT"), NUMBER},
                 {tr("ITEMS"), NUMBER, 5},
                 {tr("BALANCE"), NUMBER, 4}}};
    for (const auto& order : orders) {
        // The library gives the current time for a date that it cannot read, and an order is older than that.
        const auto date = order->date < asked ? localTime(order->date) : std::string{};
        table.add({order->id, date, orderTypeName(order->type), statusName(order->status),
                   paymentSourceName(order->paymentSource), amountText(order->amount, *order),
                   fmt::to_string(order->itemsCount), amountText(order->endingBalance, *order)});
    }
    session.show(table, tr("There are no orders."));
}

struct Search {
    std::optional<std::int64_t> machineId;
    std::optional<std::string> method;
    std::optional<PaymentMethod::PaymentType> type;
    std::optional<std::int64_t> limit;
    std::optional<std::string> before;

    bool isEmpty() const { return !machineId && !method && !type && !limit && !before; }
};

/// A date as shown in the table of orders, or as ISO text in UTC.
Date dateOf(const std::string& text) {
    if (const auto date = driver::dateFromIso(text)) return *date;
    if (const auto date = dateFromLocalTime(text); date && driver::isoText(*date)) return *date;
    throw Failure(ExitStatus::USAGE, tr("'{}' is not a date such as {}.", text, "2024-03-05"));
}

void list(Session& session, Search search) {
    const auto before = search.before ? std::optional{dateOf(*search.before)} : std::nullopt;
    if (search.method) search.method = idOf(session, *search.method);
    const auto filter = search.isEmpty() ? nullptr
                                         : std::make_shared<const TransactionFilter>(TransactionFilter{
                                               .machineId = search.machineId,
                                               .paymentMethodId = search.method,
                                               .paymentType = search.type,
                                               .limit = search.limit,
                                               .transactionsBefore = before,
                                           });
    show(session, [&] {
        return session.list<Orders>(tr("Asking for your orders"), [&](Kavio& kavio) { kavio.getTransactions(filter); });
    });
}

OrderReport orderNumbered(Session& session, const std::string& id) {
    try {
        return session.fetch<OrderReport>(
            tr("Looking up the order"), [&](Kavio& kavio) { kavio.getOrder(id); }, WhenClockIsWrong::TRY_AGAIN);
    } catch (const Failure& failure) {
        throw failure.saying(
            Cause::INVALID_INPUT,
            tr("'{}' is not the number of an order: `kavio-wallet transactions` lists yours.", printable(id)));
    }
}

}  // namespace

Command orderCommand(CLI::App& program) {
    auto* const line = program.add_subcommand("order", tr("Look up one order"));
    const auto id = std::make_shared<std::string>();
    line->add_option("ID", *id, tr("The order's number"))->required();
    return {line, [id](Session& session) {
                show(session, [&]() -> Orders {
                    const auto order = orderNumbered(session, *id);
                    if (!order) throw Failure(ExitStatus::FAILED, tr("The service did not send the order."));
                    return {order};
                });
            }};
}

Command transactionsCommand(CLI::App& program) {
    auto* const line = program.add_subcommand("transactions", tr("List your past orders"));
    const auto search = std::make_shared<Search>();
    line->add_option("--machine", search->machineId,
                     tr("Only orders at this machine, by its number in the ID column of `machines`"))
        ->transform(command_line::wholeNumber());
    line->add_option("--method", search->method,
                     tr("Only orders paid with wallet, card:ID or prepaid:ID; an ID alone works too"))
        ->check(checkMethodNameOrId);
    line->add_option_function<std::string>(
            "--type", [search](const std::string& type) { search->type = paymentTypes.at(type); },
            tr("Only orders paid with wallet, card, paypal or prepaid"))
        ->check(CLI::IsMember(paymentTypes));
    line->add_option("--limit", search->limit, tr("Maximum number of orders"))->transform(command_line::listLength());
    line->add_option("--before", search->before,
                     tr("Only orders before this date in your time zone, such as \"2024-03-05 14:07\" or 2024-03-05"));
    command_line::addExamples(*line, {"--limit 10", "--type prepaid --before 2024-03-05"});
    return {line, [search](Session& session) { list(session, *search); }};
}

}  // namespace kavio::wallet
