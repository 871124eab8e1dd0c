#include "wallet_methods.h"

#include "command_line/translation.h"
#include "people/interruption.h"
#include "wording/text.h"

#include <algorithm>

namespace kavio::wallet {

namespace {

constexpr std::string_view walletName = "wallet";
constexpr std::string_view cardPrefix = "card:";
constexpr std::string_view prepaidPrefix = "prepaid:";

}  // namespace

WalletMethods::WalletMethods(Session& session)
    : mMethods(session.list<PaymentMethods>(tr("Asking for your payment methods"),
                                            [](Kavio& kavio) { kavio.getPaymentMethods(); })) {}

std::shared_ptr<const PaymentMethod> WalletMethods::named(const std::string& name) const {
    const auto found = std::ranges::find_if(mMethods, [&](const auto& method) { return nameOf(*method) == name; });
    if (found != mMethods.end()) return *found;
    throw Failure(ExitStatus::REFUSED,
                  tr("You have no {}. `kavio-wallet methods` lists what you have.", printable(name)));
}

std::shared_ptr<const DepositCard> WalletMethods::depositNamed(const std::string& name) const {
    if (auto card = std::dynamic_pointer_cast<const DepositCard>(named(name))) return card;
    throw Failure(ExitStatus::REFUSED, tr("Money cannot be added to {}.", printable(name)));
}

std::shared_ptr<const DepositCard> WalletMethods::wallet() const { return depositNamed(std::string{walletName}); }

std::string checkMethodName(const std::string& name) {
    const bool isName = name == walletName || (name.starts_with(cardPrefix) && name.size() > cardPrefix.size()) ||
                        (name.starts_with(prepaidPrefix) && name.size() > prepaidPrefix.size());
    return isName ? std::string{} : tr("'{}' is not wallet, card:ID or prepaid:ID", name);
}

std::string checkMethodNameOrId(const std::string& text) {
    return text.empty() || text.find(':') != std::string::npos ? checkMethodName(text) : std::string{};
}

std::string nameOf(const PaymentMethod& method) {
    switch (method.type) {
        case PaymentMethod::PaymentType::KAVIO:
            return std::string{walletName};
        case PaymentMethod::PaymentType::CREDIT_CARD:
            return fmt::format("{}{}", cardPrefix, method.id);
        case PaymentMethod::PaymentType::PREPAID:
            return fmt::format("{}{}", prepaidPrefix, method.id);
        case PaymentMethod::PaymentType::PAYPAL:
            return fmt::format("paypal:{}", method.id);
        case PaymentMethod::PaymentType::UNKNOWN:
            break;
    }
    return fmt::format("unknown:{}", method.id);
}

std::string idOf(Session& session, const std::string& nameOrId) {
    if (nameOrId == walletName) return WalletMethods{session}.wallet()->id;
    for (const auto prefix : {cardPrefix, prepaidPrefix}) {
        if (nameOrId.starts_with(prefix)) return nameOrId.substr(prefix.size());
    }
    return nameOrId;
}

std::string nameOfCard(const std::string& nameOrId) {
    return nameOrId.starts_with(cardPrefix) ? nameOrId : fmt::format("{}{}", cardPrefix, nameOrId);
}

void showBalance(Session& session, const std::string& method) {
    try {
        const auto card = std::dynamic_pointer_cast<const DepositCard>(WalletMethods{session}.named(method));
        if (card) session.say(tr("New balance: {}", balanceText(*card)));
    } catch (const Failure& failure) {
        session.warn(tr("The new balance is unknown. {}", failure.what()));
    } catch (const Interrupted&) {
        session.warn(tr("The new balance is unknown."));
    }
}

std::int64_t unitsOf(const std::string& amount, const Currency& currency) {
    if (const auto units = smallestUnits(amount, currency.digits)) return *units;
    throw Failure(ExitStatus::REFUSED,
                  tr("'{}' is not an amount such as {}.", printable(amount), moneyText(1250, currency)));
}

}  // namespace kavio::wallet
