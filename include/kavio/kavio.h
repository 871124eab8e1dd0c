#pragma once

#include <kavio/card.h>
#include <kavio/delegate.h>
#include <kavio/export.h>
#include <kavio/filters.h>
#include <kavio/machine.h>
#include <kavio/order.h>
#include <kavio/payment_method.h>
#include <kavio/product.h>
#include <kavio/result.h>
#include <kavio/tdsecure.h>
#include <kavio/unsettled_payment.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kavio {

/// The wallet: the one object that an application creates and talks to. Use it from the main thread.
///
/// Every operation but those that give back a value, and `release`, returns at once and reports to its callback of
/// `KavioDelegate`. One operation at a time: while one is under way every other reports `BUSY` at once and changes
/// nothing. Transport and service failures are reported alike by all: `NETWORK_FAILED` without a network or when the
/// connection was lost, `ACCESS_DENIED` when the service answers 401, `BAD_INPUT` for a request or a reply that is not
/// understood, `SERVER_ERROR`, else `FAILURE`: also for a time-out, for a service that cannot be reached, and for 406.
/// After 401 and 406 the stored session is empty. The type is coarse and the message is for people: programs go by
/// `KavioResult::cause`, and by `KavioResult::effect` to know whether what was asked for may have happened.
///
/// When memory runs out an operation ends with `FAILURE` and the cause `OUT_OF_MEMORY`; its effect is then `UNKNOWN`
/// even where nothing has left yet. Where there is no memory for that report either, or for the answer of a function
/// that gives one back, the process ends (`std::terminate`). Only the constructor throws: `std::bad_alloc`.
///
/// The library catches nothing that a callback throws, but for `std::bad_alloc`, which ends there. From a report that
/// is made before the operation returns, it leaves the operation; from any other, the work on the host's main queue:
/// `RunLoop` lets it out of `run` or `runUntil`, which may be called again, and `Kavio::gtk` turns it into a critical
/// message. The facade stays usable, since a report is the last thing that it does.
///
/// Amounts are whole numbers of the currency's smallest unit, but for `deposit`.
class KAVIO_API Kavio {
public:
    enum class EnvironmentType { TEST = 0, TESTS = 1, PROD = 2 };
    /// Absent for a value that names no environment.
    static std::optional<EnvironmentType> environmentType(std::int64_t rawValue);

    /// Stores the API key and the environment for the whole process: the last facade made wins.
    /// The delegate is held weakly; once it is gone, results are dropped.
    Kavio(std::weak_ptr<KavioDelegate> delegate, std::string apiKey, EnvironmentType environment);
    /// Safe at any time, inside a callback and with a request in flight too. Nothing is reported afterwards. A card
    /// issuer's page that is up stays until the person closes it, unless `release` came before.
    ~Kavio();
    Kavio(const Kavio&) = delete;
    Kavio& operator=(const Kavio&) = delete;

    /// Whether an operation is under way, so that any other would report `BUSY`. An order that is followed counts.
    bool isBusy() const;
    /// Version of the library, such as "1.0.0".
    std::optional<std::string> getVersion() const noexcept;
    /// Build number of the library.
    std::optional<std::string> getBuild() const noexcept;
    /// Gives back what the facade shares with others and drops the delegate. `caller` is the facade itself. Once a
    /// facade: each call gives back one use of the card issuer's page, and the last one takes that down.
    void release(const void* caller);

    /// Whether the stored session is still accepted; reports to `onCheckIsUserLogin`. `FAILURE` "Token is empty",
    /// before returning, when there is none.
    void isLoggedIn();
    /// Asks for a one-time code; reports to `onLogin`. `countryCode` is the telephone prefix, such as "49".
    void login(std::string countryCode, std::string phoneNumber);
    /// Answers the one-time code that `login` asked for and opens the session; reports to `onVerify`. `country` is the
    /// ISO code, such as "DE". `FAILURE` "please call login first", before returning, without a login that succeeded.
    /// After a wrong code call again.
    void verify(std::string otp, std::string country, std::string countryCode, std::string phoneNumber);
    /// Ends the session; reports to `onLogout`.
    void logout();

    /// Wallet, stored credit cards and prepaid cards; reports to `onGetPaymentMethods`.
    void getPaymentMethods();
    /// Machines by code or QR text, by serial, near a position, or the user's own; reports to `onGetMachines`. The
    /// first that the filter holds decides: a `value` or an `hwSerial` that is not empty, `latitude` with `longitude`,
    /// a `limit` of 1 to 500 (the user's own); without a filter the user's own. `BAD_INPUT`, before returning: "{VALUE}
    /// is invalid machine ID or QR code" for a value that is neither, "invalid filter" for any other filter.
    void getMachines(std::shared_ptr<const MachineFilter> filter);
    /// What the machine sells; reports to `onGetMachineProducts`.
    void getMachineProducts(std::int64_t machineId);
    /// The user's past orders; reports to `onGetTransactions`. Without a filter all that the service gives.
    void getTransactions(std::shared_ptr<const TransactionFilter> filter);
    /// One order; reports to `onGetOrder`. `BAD_INPUT`, before returning, when `orderId` is no decimal integer.
    void getOrder(std::string orderId);

    /// Buys at a machine and follows the order; reports to `onPlaceOrder`: once when it is placed, then once at each
    /// change of its status. The order is followed by one request a second, 60 at most; then `TIMEOUT` is reported,
    /// which says nothing about the order itself: ask `getOrder`. A change that the last request brings is still
    /// reported, after it. There is no report of the end as such: an order that stays as it is, or that the reply to
    /// the purchase does not hold, ends in silence, and the next operation is welcome. The facade is busy until the
    /// order is no longer followed. The purchase is written down first and sent at most once. Without connectivity it
    /// waits, and is signed when it is asked for: after minutes the service may refuse it. `release` and the end of the
    /// facade give it up as long as it waits; it is then never sent. After any failure with the effect `UNKNOWN` an
    /// order may have been placed, whatever the type: ask `settlePayment` before the person pays again. `kavioId`: the
    /// machine's `kavioId`; not 0, which no machine has. `paymentMethod`: wallet, credit card or prepaid card; any
    /// other type is `BAD_INPUT` before returning, as is a null product ("invalid product"). `amount` is not sent for a
    /// prepaid card.
    void placeOrder(std::int64_t kavioId, std::shared_ptr<const PaymentMethod> paymentMethod, std::int64_t amount,
                    std::optional<std::vector<std::shared_ptr<const RemoteVendProduct>>> products);

    /// Stores a card without 3-D Secure; reports to `onAddCreditCard`. `BAD_INPUT` "invalid card" for a null one. After
    /// a failure with the effect `UNKNOWN` the card may have been stored, and adding it again may store it twice: look
    /// at `getPaymentMethods` first.
    void addCreditCard(std::shared_ptr<const Card> card);
    /// Stores a card, with the issuer's page when the issuer asks for it; reports to `onAddCreditCard`, always without
    /// a card. Waits for as long as the page is open. After a failure the same holds as for `addCreditCard`.
    void addCreditCardTDSecure(TDSPaymentCard paymentCard, TDSCardHolder cardHolder);
    /// Removes the stored card whose `id` is given; reports to `onRemoveCard`.
    void removeCard(std::string id);
    /// Charges the stored card `chargedCardId` and adds to the wallet or a prepaid card; reports to `onDeposit`.
    /// `amount` is in whole units of the currency (12.5 is 12 units and a half); what is finer than the smallest unit
    /// is cut off. `BAD_INPUT`, before returning: "invalid amount" for one that is not finite or too large, "cannot
    /// deposit to TYPE card" for another type of card. It is written down first and sent at most once. After any
    /// failure with the effect `UNKNOWN` the charged card may have paid, whatever the type: ask `settlePayment` before
    /// the person tries again.
    void deposit(std::shared_ptr<const DepositCard> depositCard, double amount, std::string chargedCardId);

    /// Purchases and deposits that were started on this device and are not known to be over, oldest first; also what an
    /// earlier run of the program left. At once, from the store.
    std::vector<UnsettledPayment> unsettledPayments() const noexcept;
    /// Finds out what became of one of them, and never pays; reports like the operation itself. A purchase, to
    /// `onPlaceOrder`: one that was made is followed as after `placeOrder`, unless it is over already. A deposit, to
    /// `onDeposit`. `FAILURE` with the cause `NOT_MADE`: nothing was paid, and it is struck out. `FAILURE` with the
    /// cause `NOT_CERTAIN` and the effect `UNKNOWN`: it cannot be told yet, or at all, and is kept; ask again a few
    /// minutes after it was started, or let the person compare the transactions. Any other failure leaves it as it was.
    /// `BAD_INPUT` to `onPlaceOrder`, before returning, for an identifier that names none of them. A purchase of which
    /// another program on the same store is still in the middle must not be settled.
    void settlePayment(std::string id);
    /// Strikes one of them out, whatever became of it. False when there is no such payment, or no memory to do it.
    bool forgetPayment(const std::string& id);

private:
    struct State;
    std::shared_ptr<State> mState;
};

}  // namespace kavio
