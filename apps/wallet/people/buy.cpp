#include "command_line/help.h"
#include "command_line/numbers.h"
#include "command_line/translation.h"
#include "people/command.h"
#include "people/machine_named.h"
#include "people/payment.h"
#include "people/wallet_methods.h"
#include "wording/money.h"
#include "wording/names.h"
#include "wording/text.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace kavio::wallet {

namespace {

struct Wanted {
    std::int64_t code = 0;
    std::int64_t quantity = 1;
};

struct Purchase {
    MachineName machine;
    std::optional<std::string> amount;
    std::vector<Wanted> products;
    std::string method = "wallet";
};

/// "CODE" or "CODE:QUANTITY"
Wanted wantedFrom(const std::string& text) {
    const auto colon = text.find(':');
    const auto code = command_line::numberFrom<std::int64_t>(text.substr(0, colon));
    const auto quantity =
        colon == std::string::npos ? 1 : command_line::numberFrom<std::int64_t>(text.substr(colon + 1)).value_or(0);
    if (code && quantity > 0) return {*code, quantity};
    throw CLI::ValidationError("--product", tr("'{}' is not CODE or CODE:QUANTITY", text));
}

Currency paidIn(const PaymentMethod& method, const Machine& machine, const WalletMethods& methods) {
    if (const auto currency = currencyFor(method, machine, currencyOf(*methods.wallet()))) return *currency;
    throw Failure(ExitStatus::REFUSED, tr("The currency of {} is unknown, so it cannot be paid with a card: use the "
                                          "wallet.",
                                          titleOf(machine)));
}

/// The total price of the wanted products, in the smallest unit of `currency`.
std::int64_t costOf(Session& session, const std::vector<Wanted>& wanted, const Machine& machine,
                    const Currency& currency) {
    const auto offered = session.list<Products>(tr("Asking for the prices"),
                                                [&](Kavio& kavio) { kavio.getMachineProducts(machine.id); });
    double cost = 0;
    for (const auto& item : wanted) {
        const auto found =
            std::ranges::find_if(offered, [&](const auto& product) { return product->codeInMap == item.code; });
        if (found != offered.end() && (*found)->vendOut)
            throw Failure(ExitStatus::REFUSED, tr("{} has sold out of product {}.", titleOf(machine), item.code));
        const auto price = found == offered.end() ? std::nullopt : priceOf(**found);
        if (!price) {
            throw Failure(ExitStatus::REFUSED, tr("{} has no price for product {}: give an amount with --amount.",
                                                  titleOf(machine), item.code));
        }
        cost += *price * static_cast<double>(item.quantity);
    }
    const auto units = smallestUnitsOf(cost, currency.digits);
    if (!units)
        throw Failure(ExitStatus::REFUSED, tr("The total price of the products is not an amount that can be paid."));
    return *units;
}

/// For a prepaid card no amount is sent, because the machine decides what to charge.
std::int64_t amountOf(Session& session, const Purchase& purchase, const Machine& machine, const PaymentMethod& method,
                      const Currency& currency) {
    const bool isPrepaid = method.type == PaymentMethod::PaymentType::PREPAID;
    if (isPrepaid && purchase.amount)
        throw Failure(ExitStatus::USAGE,
                      tr("--amount cannot be used with a prepaid card: the machine decides what to charge."));
    if (isPrepaid) return 0;
    if (purchase.amount) return unitsOf(*purchase.amount, currency);
    if (!purchase.products.empty()) return costOf(session, purchase.products, machine, currency);
    throw Failure(ExitStatus::USAGE, tr("Give an amount with --amount, or choose what to buy with --product."));
}

std::vector<std::shared_ptr<const RemoteVendProduct>> productsOf(const Purchase& purchase, const Machine& machine) {
    if (!purchase.products.empty() && !machine.supportRemoteVend) {
        throw Failure(ExitStatus::REFUSED,
                      tr("{} does not sell by product code: choose at the machine, and give an amount with --amount.",
                         titleOf(machine)));
    }
    std::vector<std::shared_ptr<const RemoteVendProduct>> products;
    for (const auto& item : purchase.products) {
        products.push_back(std::make_shared<const RemoteVendProduct>(
            RemoteVendProduct{.codeInMap = item.code, .quantity = item.quantity, .pulseLineNumber = 0}));
    }
    return products;
}

/// Refuses a machine that would not take the payment, and warns of one that may not.
void check(const Session& session, const Machine& machine, const PaymentMethod& method) {
    if (machine.kavioId == 0)
        throw Failure(ExitStatus::REFUSED,
                      tr("You cannot pay at {}: the service gives no number for it.", titleOf(machine)));
    if (!machine.isWalletAllowed && method.type == PaymentMethod::PaymentType::KAVIO)
        throw Failure(ExitStatus::REFUSED,
                      tr("{} does not take the wallet: choose a card with --pay.", titleOf(machine)));
    if (!machine.machineStatus) session.warn(tr("{} is out of service, according to the service.", titleOf(machine)));
}

/// What is to be paid, in smallest units of the currency.
struct Price {
    std::int64_t amount;
    Currency currency;
};

/// How the order ended: a sentence for people, and the same as an exit status for scripts.
struct Ending {
    ExitStatus status;
    std::string sentence;
};

/// Such as "Paid 1.50 EUR at …", or just "Paid at …" if the service does not say how much.
std::string paymentSentence(const Order& order, const Machine& machine, const Currency& expected) {
    if (order.amount < 0) return tr("Paid at {}.", titleOf(machine));
    const auto told = order.currency.value_or("");
    const bool isOther = !told.empty() && told != expected.code;
    return tr("Paid {} at {}.", moneyText(order.amount, isOther ? currencyNamed(told) : expected), titleOf(machine));
}

/// Whether the balance was known not to be enough. What a prepaid card pays is up to the machine.
bool isTooMuch(const Price& price, const PaymentMethod& method) {
    const auto* const card = dynamic_cast<const DepositCard*>(&method);
    return card != nullptr && card->currency == price.currency.code && price.amount > card->balance;
}

Ending endingOf(const Order& order, const Machine& machine, const Price& price, const PaymentMethod& method) {
    switch (order.status) {
        case Order::Status::COMPLETED:
            return {ExitStatus::OK, paymentSentence(order, machine, price.currency)};
        case Order::Status::FREE_TRANSACTION:
            return {ExitStatus::OK, tr("Served for free at {}.", titleOf(machine))};
        case Order::Status::CANCELED:
            return {ExitStatus::FAILED, isTooMuch(price, method)
                                            ? tr("The order was canceled: the balance is too small.")
                                            : tr("The order was canceled.")};
        case Order::Status::TIMEOUT:
            return {ExitStatus::TIMED_OUT, tr("The machine did not answer in time.")};
        case Order::Status::INCOMPLETE:
            return {ExitStatus::FAILED, tr("The order was not completed.")};
        case Order::Status::UNKNOWN:
        case Order::Status::CREATED:
        case Order::Status::AUTHORIZED:
            break;
    }
    return {ExitStatus::FAILED, tr("The order has not ended yet: check `kavio-wallet order {}`.", printable(order.id))};
}

/// Why the order is no longer followed. It goes on, and must not be paid twice.
Failure notFollowed(const Failure& failure, const Order& order) {
    const auto id = printable(order.id);
    return {failure.status,
            failure.status == ExitStatus::NOT_LOGGED_IN
                ? tr("The session has ended, so the order is not followed any further: log in again, and check "
                     "`kavio-wallet order {}` before you try again.",
                     id)
                : tr("The order is taking too long to follow any further: check `kavio-wallet order {}` before you try "
                     "again.",
                     id)};
}

/// Follows the order to its end; throws `Failure` if none was placed, or if that is not certain.
OrderReport place(Session& session, Payment& payment, UnsettledPayment purchase, const Session::Operation& operation) {
    OrderReport last;
    std::optional<Failure> failure;
    payment.make(tr("Waiting for the machine"), std::move(purchase), operation, [&](const Report& report) {
        if (report.result->type != ResultType::SUCCESS) {
            failure = failureOf(*report.result);
            return;
        }
        last = std::get<OrderReport>(report.payload);
        if (last) session.say(statusSentence(*last));
    });
    if (failure && last) throw notFollowed(*failure, *last);
    if (failure) throw failure->withHint(payment.warning());
    if (last) return last;
    throw Failure(ExitStatus::FAILED, tr("The service did not say what happened to the order. {}", payment.warning()));
}

void buy(Session& session, Payment& payment, const Purchase& purchase) {
    const WalletMethods methods{session};
    const auto method = methods.named(purchase.method);
    const auto machine = machineNamed(session, purchase.machine);
    check(session, *machine, *method);
    const auto products = productsOf(purchase, *machine);
    const auto currency = paidIn(*method, *machine, methods);
    const Price price{amountOf(session, purchase, *machine, *method, currency), currency};

    const UnsettledPayment unsettled{.kind = UnsettledPayment::Kind::ORDER,
                                     .kavioId = machine->kavioId,
                                     .amount = price.amount,
                                     .paymentMethodId = method->id};
    const auto order = place(session, payment, unsettled,
                             [&](Kavio& kavio) { kavio.placeOrder(machine->kavioId, method, price.amount, products); });
    const auto ending = endingOf(*order, *machine, price, *method);
    if (ending.status == ExitStatus::OK) session.say(ending.sentence);
    showBalance(session, purchase.method);
    if (ending.status != ExitStatus::OK) throw Failure(ending.status, ending.sentence);
}

}  // namespace

Command buyCommand(CLI::App& program) {
    auto* const line = program.add_subcommand("buy", tr("Pay at a machine, and follow the order until it ends"));
    const auto purchase = std::make_shared<Purchase>();
    addMachineName(*line, purchase->machine);
    line->add_option("--amount", purchase->amount,
                     tr("Amount to pay, such as 1.50 (default: the price of the products)"));
    line->add_option_function<std::vector<std::string>>(
            "--product",
            [purchase](const std::vector<std::string>& products) {
                std::ranges::transform(products, std::back_inserter(purchase->products), wantedFrom);
            },
            tr("Product to buy, with its code from `products`; may be repeated"))
        ->type_name("CODE[:QUANTITY]")
        ->expected(1)
        ->allow_extra_args(false)
        ->take_all();
    line->add_option("--pay", purchase->method,
                     tr("Pay with wallet, card:ID or prepaid:ID, as listed by `methods` (default: wallet)"))
        ->check(checkMethodName);
    command_line::addExamples(*line,
                              {"42100107 --amount 1.50", "42100107 --product 11 --product 12:2",
                               "42100107 --product 11 --pay prepaid:7000000003", "--qr photo.jpg --amount 1.50"});
    return {line, [purchase](Session& session) {
                pay(session, tr("The order may have been placed"),
                    [&](Payment& payment) { buy(session, payment, *purchase); });
            }};
}

}  // namespace kavio::wallet
