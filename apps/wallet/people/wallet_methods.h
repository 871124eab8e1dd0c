#pragma once

#include "people/money.h"
#include "people/session.h"

#include <kavio/payment_method.h>

#include <memory>
#include <string>

namespace kavio::wallet {

/// What can be paid with, as the service lists it now.
class WalletMethods {
public:
    explicit WalletMethods(Session& session);

    const PaymentMethods& all() const { return mMethods; }

    /// "wallet", "card:ID" or "prepaid:ID"; throws `Failure` for one that is not there.
    std::shared_ptr<const PaymentMethod> named(const std::string& name) const;
    /// The same, of those that money can be added to.
    std::shared_ptr<const DepositCard> depositNamed(const std::string& name) const;
    /// Throws `Failure` when there is none.
    std::shared_ptr<const DepositCard> wallet() const;

private:
    PaymentMethods mMethods;
};

/// Empty for "wallet", "card:ID" and "prepaid:ID", else what is wrong: a check for the command line.
std::string checkMethodName(const std::string& name);
/// The same where a method's ID alone will do.
std::string checkMethodNameOrId(const std::string& text);

/// How the commands name a method.
std::string nameOf(const PaymentMethod& method);
/// The ID of a method by the name that the commands give it, also of a card that is there no more. A text that is no
/// such name is an ID.
std::string idOf(Session& session, const std::string& nameOrId);
/// The name of a credit card, which the user may have given without "card:".
std::string nameOfCard(const std::string& nameOrId);

Currency currencyOf(const DepositCard& card);
/// What is left on it, such as "12.50 EUR".
std::string balanceText(const DepositCard& card);
/// Says what is left on the method of that name, if it has a balance. One that cannot be had is no failure of what
/// changed it.
void showBalance(Session& session, const std::string& method);

/// The amount that the user wrote, in the smallest unit of `currency`; throws `Failure` for what is no amount.
std::int64_t unitsOf(const std::string& amount, const Currency& currency);

}  // namespace kavio::wallet
