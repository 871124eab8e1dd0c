#include "command_line/help.h"
#include "command_line/translation.h"
#include "people/command.h"
#include "people/payment.h"
#include "people/wallet_methods.h"
#include "wording/text.h"

#include <memory>

namespace kavio::wallet {

namespace {

using enum Column::Kind;

std::string brandOf(const PaymentMethod& method) {
    const auto* const card = dynamic_cast<const CreditCard*>(&method);
    return card != nullptr ? card->brand : std::string{};
}

std::string balanceOf(const PaymentMethod& method) {
    const auto* const card = dynamic_cast<const DepositCard*>(&method);
    return card != nullptr ? balanceText(*card) : std::string{};
}

std::string noteOf(const PaymentMethod& method) {
    const auto* const card = dynamic_cast<const PrepaidCard*>(&method);
    return card != nullptr && !card->isActive ? tr("not active") : "";
}

void list(Session& session) {
    const WalletMethods methods{session};
    Table table{{{tr("NAME"), EXACT},
                 {tr("NUMBER"), EXACT},
                 {tr("BRAND"), PROSE, 2},
                 {tr("BALANCE"), NUMBER},
                 {tr("NOTE"), EXACT, 1}}};
    for (const auto& method : methods.all()) {
        table.add({nameOf(*method), method->number, brandOf(*method), balanceOf(*method), noteOf(*method)});
    }
    session.show(table, tr("You have no payment methods."));
}

struct TopUp {
    std::string amount;
    std::string card;
    std::string to = "wallet";
};

void deposit(Payment& payment, UnsettledPayment unsettled, const Session::Operation& operation) {
    std::optional<Report> report;
    payment.make(tr("Topping up"), std::move(unsettled), operation, [&](const Report& last) { report = last; });
    const auto& result = *report.value().result;
    if (result.type != ResultType::SUCCESS) throw failureOf(result).withHint(payment.warning());
    if (std::get<std::optional<std::int64_t>>(report->payload)) return;
    throw Failure(ExitStatus::FAILED, tr("The service did not say what happened to the top-up. {}", payment.warning()));
}

void topUp(Session& session, Payment& payment, const TopUp& order) {
    const WalletMethods methods{session};
    const auto card = methods.depositNamed(order.to);
    const auto charged = methods.named(nameOfCard(order.card));
    const auto units = unitsOf(order.amount, currencyOf(*card));
    const auto amount = wholeUnits(units, card->currencyDecimalDigits);
    if (!amount) throw Failure(ExitStatus::REFUSED, tr("{} is too much.", order.amount));

    UnsettledPayment unsettled{.kind = UnsettledPayment::Kind::DEPOSIT,
                               .amount = units,
                               .paymentMethodId = card->id,
                               .chargedCardId = charged->id};
    deposit(payment, std::move(unsettled), [&](Kavio& kavio) { kavio.deposit(card, *amount, charged->id); });
    session.say(tr("Added {} to {}.", moneyText(units, currencyOf(*card)), printable(order.to)));
    showBalance(session, order.to);
}

}  // namespace

Command methodsCommand(CLI::App& program) {
    auto* const line =
        program.add_subcommand("methods", tr("List your payment methods: wallet, credit cards and prepaid cards"));
    return {line, list};
}

Command removeCardCommand(CLI::App& program) {
    auto* const line = program.add_subcommand("remove-card", tr("Remove a stored credit card"));
    const auto id = std::make_shared<std::string>();
    line->add_option("ID", *id, tr("The card, as listed by `methods`"))->required();
    return {line, [id](Session& session) {
                const auto card = WalletMethods{session}.named(nameOfCard(*id));
                session.perform(tr("Removing the card"), [&](Kavio& kavio) { kavio.removeCard(card->id); });
                session.say(tr("The card was removed."));
            }};
}

Command topUpCommand(CLI::App& program) {
    auto* const line =
        program.add_subcommand("top-up", tr("Add money from a credit card to the wallet or a prepaid card"));
    const auto order = std::make_shared<TopUp>();
    line->add_option("AMOUNT", order->amount, tr("Amount to add, such as 12.50"))->required();
    line->add_option("--card", order->card, tr("Credit card to charge, as listed by `methods`"))->required();
    line->add_option("--to", order->to, tr("Add the money to wallet or prepaid:ID (default: wallet)"))
        ->check(checkMethodName);
    command_line::addExamples(*line, {"20 --card 7000000001", "12.50 --card 7000000001 --to prepaid:7000000003"});
    return {line, [order](Session& session) {
                pay(session, tr("The card may have been charged"),
                    [&](Payment& payment) { topUp(session, payment, *order); });
            }};
}

}  // namespace kavio::wallet
