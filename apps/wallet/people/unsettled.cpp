#include "command_line/help.h"
#include "command_line/translation.h"
#include "driver/objects.h"
#include "people/command.h"
#include "people/payment.h"
#include "people/wallet_methods.h"
#include "wording/money.h"
#include "wording/names.h"
#include "wording/text.h"

#include <algorithm>
#include <memory>
#include <optional>

namespace kavio::wallet {

namespace {

using enum Column::Kind;

/// The sentence for a purchase or the one for a top-up, with the machine's number or the method's name.
std::string about(const UnsettledPayment& payment, const char* purchase, const char* topUp) {
    if (payment.kind == UnsettledPayment::Kind::ORDER)
        return fmt::format(fmt::runtime(gettext(purchase)), payment.kavioId.value_or(0));
    return fmt::format(fmt::runtime(gettext(topUp)), nameOf({payment.paymentMethodId, "", payment.paymentType}));
}

/// With a prepaid card the machine decides what to charge.
std::string amountOf(const UnsettledPayment& payment) {
    const bool isOpen =
        payment.kind == UnsettledPayment::Kind::ORDER && payment.paymentType == PaymentMethod::PaymentType::PREPAID;
    return isOpen ? std::string{} : moneyText(payment.amount, payment.currency);
}

std::string stateOf(const UnsettledPayment& payment) {
    if (!payment.orderId) return tr("in doubt");
    return tr("order {}: {}", *payment.orderId, statusName(payment.status.value_or(Order::Status::UNKNOWN)));
}

void list(Session& session) {
    const auto payments = session.unsettled();
    session.answer("unsettledPayments", payments);
    Table table{{{tr("ID"), EXACT},
                 {tr("WHAT"), EXACT},
                 {tr("WHEN"), EXACT, 2},
                 {tr("AMOUNT"), NUMBER, 1},
                 {tr("STATE"), EXACT}}};
    for (const auto& payment : payments) {
        table.add({payment.id, about(payment, later("purchase at {}"), later("top-up of {}")),
                   localTime(payment.startedAt), amountOf(payment), stateOf(payment)});
    }
    session.show(table, tr("Every payment is known to be over."));
}

Failure unknownPayment(const std::string& id) {
    return {ExitStatus::REFUSED, tr("There is no payment {} in doubt: `kavio-wallet unsettled` lists those "
                                    "that are, and `kavio-wallet transactions` the others.",
                                    printable(id))};
}

/// Says what the reports told about the payment. Anything still uncertain is a `Failure`.
void conclude(const Session& session, const UnsettledPayment& payment, const Report& last, const OrderReport& order) {
    if (last.result->cause == Cause::NOT_MADE)
        return session.say(about(payment, later("The service does not have the purchase at {}: nothing was paid."),
                                 later("The service does not have the top-up of {}: nothing was paid.")));
    if (last.result->cause == Cause::NOT_CERTAIN)
        throw Failure(ExitStatus::FAILED, about(payment, later("It is not certain what became of the purchase at {}."),
                                                later("It is not certain what became of the top-up of {}.")) +
                                              ' ' +
                                              tr("Try again a few minutes after it was started, logged in as then, or "
                                                 "compare `kavio-wallet transactions`."));
    if (last.result->type != ResultType::SUCCESS) throw failureOf(*last.result);
    if (payment.kind == UnsettledPayment::Kind::DEPOSIT)
        return session.say(about(payment, "", later("The top-up of {} was made.")));
    if (!order) throw Failure(ExitStatus::FAILED, tr("The service did not send the order."));
    if (isFinal(order->status)) return session.say(about(payment, later("The purchase at {} is over."), ""));
    throw Failure(ExitStatus::FAILED, about(payment, later("The purchase at {} is not over yet."), ""));
}

void settle(Session& session, const UnsettledPayment& payment) {
    std::optional<Report> last;
    OrderReport order;
    session.follow(
        about(payment, later("Finding out about the purchase at {}"), later("Finding out about the top-up of {}")),
        [&](Kavio& kavio) { kavio.settlePayment(payment.id); },
        [&](const Report& report) {
            last = report;
            const auto* const told = std::get_if<OrderReport>(&report.payload);
            if (told == nullptr || !*told) return;
            order = *told;
            session.say(statusSentence(*order));
        });
    conclude(session, payment, last.value(), order);
}

void settleOne(Session& session, const std::string& id) {
    const auto payments = session.unsettled();
    const auto payment = std::ranges::find(payments, id, &UnsettledPayment::id);
    if (payment == payments.end()) throw unknownPayment(id);
    settle(session, *payment);
}

/// One that stays in doubt must not hold up the others.
void settleAll(Session& session) {
    const auto payments = session.unsettled();
    std::optional<Failure> failure;
    for (const auto& payment : payments) {
        try {
            settle(session, payment);
        } catch (const Failure& reason) {
            if (failure) session.warn(failure->what());
            failure = reason;
        }
    }
    if (failure) throw *failure;
    if (payments.empty()) session.say(tr("Every payment is known to be over."));
}

}  // namespace

Command unsettledCommand(CLI::App& program) {
    auto* const line = program.add_subcommand("unsettled", tr("List your payments that are not known to be over"));
    return {line, list};
}

Command settleCommand(CLI::App& program) {
    auto* const line = program.add_subcommand("settle", tr("Find out what became of a payment; never pays"));
    const auto id = std::make_shared<std::string>();
    const auto isAll = std::make_shared<bool>(false);
    auto* const one = line->add_option("ID", *id, tr("The payment, as listed by `unsettled`"));
    line->add_flag("--all", *isAll, tr("Every payment that `unsettled` lists"))->excludes(one);
    line->parse_complete_callback([id, isAll] {
        if (id->empty() && !*isAll) throw CLI::RequiredError(tr("ID or --all"));
    });
    command_line::addExamples(*line, {"--all"});
    return {line, [id, isAll](Session& session) { *isAll ? settleAll(session) : settleOne(session, *id); }};
}

Command forgetCommand(CLI::App& program) {
    auto* const line = program.add_subcommand("forget", tr("Strike a payment off that list, whatever became of it"));
    const auto id = std::make_shared<std::string>();
    line->add_option("ID", *id, tr("The payment, as listed by `unsettled`"))->required();
    return {line, [id](Session& session) {
                const bool isKnown = session.forget(*id);
                session.answer("forgetPayment", isKnown);
                if (!isKnown) throw unknownPayment(*id);
                session.say(tr("The payment was struck off the list."));
            }};
}

}  // namespace kavio::wallet
