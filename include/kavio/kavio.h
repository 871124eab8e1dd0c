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

/// What an application uses, and what a device must bring.
namespace kavio {

/// The wallet: the one object that an application creates and talks to. Use it from the main thread.
///
/// Every operation, except `release` and those that return a value, returns at once and reports to its callback in
/// `KavioDelegate`. Operations run one at a time: while one is under way, any other reports `BUSY` at once and
/// changes nothing.
///
/// All operations report transport and service failures in the same way: `NETWORK_FAILED` without a network or when the
/// connection was lost, `ACCESS_DENIED` when the service answers 401, `BAD_INPUT` for a request or a reply that is not
/// understood, `SERVER_ERROR` when the service fails, and otherwise `FAILURE`, which includes a time-out, a service
/// that cannot be reached, and 406. After 401 and 406 the stored session is empty. The type is coarse and the message
/// is for people: programs should look at `KavioResult::cause`, and at `KavioResult::effect` to know whether what was
/// asked for may have happened.
///
/// When memory runs out, an operation ends with `FAILURE` and the cause `OUT_OF_MEMORY`; its effect is then `UNKNOWN`
/// even if nothing had left yet. If there is no memory for that report either, it waits until there is some, and with
/// it whichever thread makes it: the process ends (`std::terminate`) after ten seconds of that, and at once if there is
/// no memory for the answer of a function that returns one. Only the constructor throws: `std::bad_alloc`.
///
/// The library catches nothing that a callback throws, except `std::bad_alloc`, which ends there. An exception from a
/// report that comes before the operation returns leaves the operation; any other leaves the work on the host's main
/// queue: `RunLoop` lets it out of `run` or `runUntil`, which may be called again, and `Kavio::gtk` turns it into a
/// critical message. The facade stays usable, since a report is the last thing that it does.
///
/// Amounts are whole numbers of the currency's smallest unit, except in `deposit`.
class KAVIO_API Kavio {
public:
    /// Which of the service's environments to use. Only `PROD` is the real one.
    enum class EnvironmentType { TEST = 0, TESTS = 1, PROD = 2 };
    /// Absent for a value that names no environment.
    static std::optional<EnvironmentType> environmentType(std::int64_t rawValue);

    /// Stores the API key and the environment for the whole process: the most recent facade wins. The delegate is held
    /// weakly; once it is gone, results are dropped.
    Kavio(std::weak_ptr<KavioDelegate> delegate, std::string apiKey, EnvironmentType environment);
    /// Safe at any time, even inside a callback or with a request in flight, but on the main thread only, where the
    /// card issuer's page is taken down that an enrolment of this facade has up. Nothing is reported afterwards.
    ~Kavio();
    Kavio(const Kavio&) = delete;
    Kavio& operator=(const Kavio&) = delete;

    /// Whether an operation is under way, so that any other would report `BUSY`. Following an order counts.
    bool isBusy() const;
    /// Version of the library, such as "1.0.0".
    std::optional<std::string> getVersion() const noexcept;
    /// Build number of the library.
    std::optional<std::string> getBuild() const noexcept;
    /// Gives up what the facade shares with others, drops the delegate, and takes down the card issuer's page that an
    /// enrolment of this facade has up. `caller` is the facade itself. Call it once per facade: each call gives up one
    /// use of the screen for these pages, and the last one takes down whatever page is there.
    void release(const void* caller);

    /// Checks whether the stored session is still accepted; reports to `onCheckIsUserLogin`. `FAILURE` "Token is
    /// empty", before returning, when there is none.
    void isLoggedIn();
    /// Asks for a one-time code; reports to `onLogin`. `countryCode` is the telephone prefix, such as "49".
    void login(std::string countryCode, std::string phoneNumber);
    /// Answers the one-time code that `login` asked for and opens the session; reports to `onVerify`. `country` is the
    /// ISO code, such as "DE". `FAILURE` "please call login first", before returning, without a login that succeeded.
    /// After a wrong code, call it again.
    void verify(std::string otp, std::string country, std::string countryCode, std::string phoneNumber);
    /// Ends the session; reports to `onLogout`.
    void logout();

    /// Wallet, stored credit cards and prepaid cards; reports to `onGetPaymentMethods`.
    void getPaymentMethods();
    /// Machines by code or QR text, by serial number, near a position, or the user's own; reports to `onGetMachines`.
    /// The first of these that the filter holds decides: a non-empty `value`, a non-empty `hwSerial`, `latitude` with
    /// `longitude`, or a `limit` of 1 to 500 (the user's own). Without a filter, the user's own. `BAD_INPUT`, before
    /// returning: "{VALUE} is invalid machine ID or QR code" for a value that is neither, "invalid filter" for any
    /// other filter.
    void getMachines(std::shared_ptr<const MachineFilter> filter);
    /// What the machine sells; reports to `onGetMachineProducts`.
    void getMachineProducts(std::int64_t machineId);
    /// The user's past orders; reports to `onGetTransactions`. Without a filter, all that the service gives.
    void getTransactions(std::shared_ptr<const TransactionFilter> filter);
    /// One order; reports to `onGetOrder`. `BAD_INPUT`, before returning, when `orderId` is not a decimal integer.
    void getOrder(std::string orderId);

    /// Buys at a machine and follows the order; reports to `onPlaceOrder` once when the order is placed and once at
    /// each change of its status.
    ///
    /// The order is polled once a second, at most 60 times; then `TIMEOUT` is reported, which says nothing about the
    /// order itself: call `getOrder`. A change that the last poll brings is still reported, after the `TIMEOUT`.
    /// Nothing more is reported when following ends, so it ends silently for an order that was over from the start or
    /// that the reply to the purchase lacks. Until then the facade is busy.
    ///
    /// The purchase is written down first and sent at most once. Without connectivity it waits, but it has been signed
    /// already: after a few minutes the service may refuse it. `release` and destroying the facade give up a purchase
    /// that is still waiting; it is then never sent. After any failure with the effect `UNKNOWN`, whatever its type, an
    /// order may have been placed: call `settlePayment` before the person pays again.
    ///
    /// `kavioId`: the machine's, never 0. `paymentMethod`: wallet, credit card or prepaid card; any other type is
    /// `BAD_INPUT` before returning, as is a null product ("invalid product"). `amount` is not sent for a prepaid card.
    void placeOrder(std::int64_t kavioId, std::shared_ptr<const PaymentMethod> paymentMethod, std::int64_t amount,
                    std::optional<std::vector<std::shared_ptr<const RemoteVendProduct>>> products);

    /// Stores a card without 3-D Secure; reports to `onAddCreditCard`. `BAD_INPUT` "invalid card" for a null one. After
    /// a failure with the effect `UNKNOWN`, the card may have been stored, and adding it again may store it twice: call
    /// `getPaymentMethods` first.
    void addCreditCard(std::shared_ptr<const Card> card);
    /// Stores a card, showing the issuer's page if the issuer asks for it; reports to `onAddCreditCard`, always without
    /// a card. Waits for as long as the page is open. After a failure, the same applies as for `addCreditCard`.
    ///
    /// Where the page goes before it has ended, the report is `FAILURE` with the effect `UNKNOWN`, and the cause is
    /// `CANCELED_BY_PERSON` only if the person closed it. It is `PAGE_NOT_SHOWN` where the library took it down: all
    /// facades share one screen, so the page of one that has something to present on takes the place of another's. The
    /// same cause is reported if there is no window to present on; then a page that another facade has up stays.
    void addCreditCardTDSecure(TDSPaymentCard paymentCard, TDSCardHolder cardHolder);
    /// Removes the stored card whose `id` is given; reports to `onRemoveCard`.
    void removeCard(std::string id);
    /// Charges the stored card `chargedCardId` and tops up the wallet or a prepaid card; reports to `onDeposit`.
    /// `amount` is in whole units of the currency (12.5 is twelve and a half units); anything finer than the smallest
    /// unit is cut off. `BAD_INPUT`, before returning: "invalid amount" for one that is not finite or is too large,
    /// "cannot deposit to TYPE card" for any other type of card. The deposit is written down first and sent at most
    /// once. After any failure with the effect `UNKNOWN`, whatever its type, the card may have been charged: call
    /// `settlePayment` before the person tries again.
    void deposit(std::shared_ptr<const DepositCard> depositCard, double amount, std::string chargedCardId);

    /// Purchases and deposits that were started on this device and are not known to be over, oldest first, including
    /// those that an earlier run of the program left. Read from the store, so it needs no connection.
    std::vector<UnsettledPayment> unsettledPayments() const noexcept;
    /// Finds out what became of one of them, and never pays. Reports like the operation itself: a deposit to
    /// `onDeposit`; a purchase to `onPlaceOrder`, and if it was made and is not over yet, it is followed as
    /// after `placeOrder`.
    ///
    /// `FAILURE` with the cause `NOT_MADE`: nothing was paid, and the payment is struck off the list. `FAILURE` with
    /// the cause `NOT_CERTAIN` and the effect `UNKNOWN`: the outcome cannot be told yet, or at all, and the payment
    /// stays on the list; ask again a few minutes after it was started, or let the person compare the transactions. Any
    /// other failure leaves it as it was. `BAD_INPUT` to `onPlaceOrder`, before returning, for an identifier that names
    /// none of them.
    ///
    /// Do not settle a purchase that another program using the same store is still making.
    void settlePayment(std::string id);
    /// Strikes one of them off the list, whatever became of it. False when there is no such payment, or
    /// no memory to do it.
    bool forgetPayment(const std::string& id);

private:
    friend class AsyncKavio;
    struct State;
    std::shared_ptr<State> mState;
};

}  // namespace kavio
