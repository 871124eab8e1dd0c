#pragma once

#include "people/session.h"
#include "wording/money.h"

#include <kavio/payment_method.h>

#include <memory>
#include <string>

namespace kavio::wallet {

/// The payment methods that the service lists at the moment.
class WalletMethods {
public:
    explicit WalletMethods(Session& session);

    const PaymentMethods& all() const { return mMethods; }

    /// Takes "wallet", "card:ID" or "prepaid:ID"; throws `Failure` if there is no such method.
    std::shared_ptr<const PaymentMethod> named(const std::string& name) const;
    /// The same, but only for methods that money can be added to.
    std::shared_ptr<const DepositCard> depositNamed(const std::string& name) const;
    /// Throws `Failure` if there is none.
    std::shared_ptr<const DepositCard> wallet() const;

private:
    PaymentMethods mMethods;
};

/// A check for the command line: empty for "wallet", "card:ID" and "prepaid:ID", otherwise what is wrong.
std::string checkMethodName(const std::string& name);
/// The same where an ID alone is accepted too.
std::string checkMethodNameOrId(const std::string& text);

/// The name of a method in commands.
std::string nameOf(const PaymentMethod& method);
/// The ID of a method, given by its name in commands; works for a card that no longer exists, too. Any other text is
/// taken as an ID.
std::string idOf(Session& session, const std::string& nameOrId);
/// The name of a credit card, from which the user may have left out "card:".
std::string nameOfCard(const std::string& nameOrId);

/// Shows the balance of the method with that name, if it has one. If the balance cannot be found out, the operation
/// that changed it has still succeeded.
void showBalance(Session& session, const std::string& method);

/// The amount that the user wrote, in the smallest unit of `currency`; throws `Failure` if it is not an amount.
std::int64_t unitsOf(const std::string& amount, const Currency& currency);

}  // namespace kavio::wallet
