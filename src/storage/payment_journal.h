#pragma once

#include <kavio/order.h>
#include <kavio/platform/key_value_store.h>
#include <kavio/unsettled_payment.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kavio {

/// A payment as it is written down: what the application sees of it, and who made it.
struct JournalEntry {
    UnsettledPayment payment;
    /// The service that it was meant for, and who was signed in there; the latter is empty if not known.
    std::string service;
    std::string owner;
    /// Nothing about it is in doubt any more. It is kept for a while so that its order is not taken for
    /// another payment's.
    bool isSettled = false;
    /// Whether `startedAt` is really by the service's clock, and not by the device's in its place.
    bool isTimeKnown = true;
    /// It had to wait for the network; so it may have left at any later time, for as long as the program ran.
    bool hasWaited = false;
    /// When the request ended without a clear answer.
    std::optional<Date> endedAt = std::nullopt;
    /// When it was first asked what became of it.
    std::optional<Date> askedAt = std::nullopt;
    /// Its order named its machine as the purchase had.
    bool isMachineTold = false;
};

/// What the service has said about an order.
struct KnownOrder {
    std::string id;
    Order::Status status;
    std::optional<std::string> currency;
    /// The machine of a purchase, the prepaid card of a top-up.
    std::optional<std::int64_t> target;
};

/// The payments made on this device, each written to disk before it can leave. Safe from any thread.
class PaymentJournal {
public:
    static constexpr std::size_t mostEntries = 100;

    static std::shared_ptr<PaymentJournal> shared();
    PaymentJournal();

    /// Those that are not known to be over, oldest first.
    std::vector<JournalEntry> unsettled() const;
    std::optional<JournalEntry> unsettled(const std::string& id) const;
    /// The orders of all payments with that service, settled ones included.
    std::set<std::string> orders(const std::string& service) const;
    /// Whether that service is known to name the machine of an order as purchases do.
    bool areMachinesTold(const std::string& service) const;

    /// Writes down a payment that is about to be sent; it counts as under way until `answered`. If false, it could not
    /// be written durably, or the journal is full of payments in doubt, and it must not be sent.
    bool begin(const JournalEntry& entry);
    /// Whether this process is waiting for the answer to the payment.
    bool isUnderWay(const std::string& id) const;
    /// The request has ended, one way or another.
    void answered(const std::string& id);
    /// Writes a change of an unsettled payment. False when there is no such payment, or it could not be written.
    bool update(const std::string& id, const std::function<void(JournalEntry&)>& change);

    /// The purchase is this order; it is settled when the order is final.
    void orderKnown(const std::string& id, const KnownOrder& order);
    /// The service has reported an order; updates whichever purchase it belongs to.
    void orderSeen(const std::string& service, const KnownOrder& order);
    /// Makes the order that of the payment, unless it is already that of another one: then false.
    bool claim(const std::string& id, const std::string& orderId);
    /// The deposit was made; `orderId` is its order where known.
    void depositMade(const std::string& id, const std::optional<std::string>& orderId);
    /// The payment was not made. False when it is over or has an order, which somebody else has found meanwhile.
    bool notMade(const std::string& id);
    /// The payment was not made, or is to be forgotten. False when nothing unsettled has that identifier.
    bool strikeOut(const std::string& id);

private:
    std::vector<JournalEntry> entries() const;
    bool write(const JournalEntry& entry);
    /// The changes that make room for one more; absent when there is none.
    std::optional<StoreChanges> roomForOne() const;

    const std::shared_ptr<KeyValueStore> mStore;
    // Guards the set below, and each change of an entry from its read to its write. Recursive, because the store may
    // report damage to the host in between, and the host may then ask for the payments.
    mutable std::recursive_mutex mMutex;
    std::set<std::string> mUnderWay;
};

}  // namespace kavio
