#pragma once

#include <kavio/export.h>
#include <kavio/result.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace kavio {

class CreditCard;
class PaymentMethod;
struct Machine;
struct Order;
struct Product;

///@{
/// What a report lists; no element is null.
using PaymentMethods = std::vector<std::shared_ptr<const PaymentMethod>>;
using Machines = std::vector<std::shared_ptr<const Machine>>;
using Products = std::vector<std::shared_ptr<const Product>>;
using Orders = std::vector<std::shared_ptr<const Order>>;
///@}

/// Receives the outcome of every operation of a `Kavio`; the application implements and owns it.
///
/// Each operation calls its own callback once (`onPlaceOrder`: once or more), never with an exception in flight and
/// never with a lock held: a callback may call the facade again, or destroy it. What is refused without asking the
/// service, such as `BUSY` or input that cannot be right, is reported on the calling thread before the operation
/// returns, everything else on the main thread. On any result but `SUCCESS` the payload is absent; on `SUCCESS` it is
/// absent when the service's reply carried none.
class KAVIO_API KavioDelegate {
public:
    /// How an operation ended; never null.
    using Result = std::shared_ptr<const KavioResult>;

    virtual ~KavioDelegate() = default;
    /// The outcome of `Kavio::isLoggedIn`: `SUCCESS` if the session is accepted.
    virtual void onCheckIsUserLogin(Result result) = 0;
    /// The outcome of `Kavio::login`: `SUCCESS` if a one-time code is on its way.
    virtual void onLogin(Result result) = 0;
    /// The outcome of `Kavio::verify`: `SUCCESS` if the session is open.
    virtual void onVerify(Result result) = 0;
    /// The outcome of `Kavio::logout`.
    virtual void onLogout(Result result) = 0;
    /// The wallet first, then the stored credit cards, then the prepaid cards.
    virtual void onGetPaymentMethods(Result result, std::optional<PaymentMethods> paymentMethods) = 0;
    /// The machines that `Kavio::getMachines` found.
    virtual void onGetMachines(Result result, std::optional<Machines> machines) = 0;
    /// What `Kavio::getMachineProducts` found the machine to sell.
    virtual void onGetMachineProducts(Result result, std::optional<Products> products) = 0;
    /// Once when the order is placed and once at each change of its status while it is followed;
    /// see `Kavio::placeOrder`.
    virtual void onPlaceOrder(Result result, std::shared_ptr<const Order> order) = 0;
    /// `balance`: the new balance in the currency's smallest unit.
    virtual void onDeposit(Result result, std::optional<std::int64_t> balance) = 0;
    /// The order that `Kavio::getOrder` asked for.
    virtual void onGetOrder(Result result, std::shared_ptr<const Order> order) = 0;
    /// The past orders that `Kavio::getTransactions` asked for.
    virtual void onGetTransactions(Result result, std::optional<Orders> transactions) = 0;
    /// The stored card, if `Kavio::addCreditCard` stored it; never one after `Kavio::addCreditCardTDSecure`.
    /// Without a message where the card issuer's page had to give way to another facade's; see
    /// `Kavio::addCreditCardTDSecure`.
    virtual void onAddCreditCard(Result result, std::shared_ptr<const CreditCard> card) = 0;
    /// The outcome of `Kavio::removeCard`.
    virtual void onRemoveCard(Result result) = 0;
};

/// Ignores every report: a base for an application that cares about only a few operations.
class KAVIO_API QuietDelegate : public KavioDelegate {
public:
    void onCheckIsUserLogin(Result /*result*/) override {}
    void onLogin(Result /*result*/) override {}
    void onVerify(Result /*result*/) override {}
    void onLogout(Result /*result*/) override {}
    void onGetPaymentMethods(Result /*result*/, std::optional<PaymentMethods> /*paymentMethods*/) override {}
    void onGetMachines(Result /*result*/, std::optional<Machines> /*machines*/) override {}
    void onGetMachineProducts(Result /*result*/, std::optional<Products> /*products*/) override {}
    void onPlaceOrder(Result /*result*/, std::shared_ptr<const Order> /*order*/) override {}
    void onDeposit(Result /*result*/, std::optional<std::int64_t> /*balance*/) override {}
    void onGetOrder(Result /*result*/, std::shared_ptr<const Order> /*order*/) override {}
    void onGetTransactions(Result /*result*/, std::optional<Orders> /*transactions*/) override {}
    void onAddCreditCard(Result /*result*/, std::shared_ptr<const CreditCard> /*card*/) override {}
    void onRemoveCard(Result /*result*/) override {}
};

}  // namespace kavio
