#pragma once

#include <kavio/order.h>
#include <kavio/platform/key_value_store.h>
#include <kavio/unsettled_payment.h>

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
};

/// What the service has said about an order.
struct KnownOrder {
    std::string id;
    Order::Status status;
    std::optional<std::string> currency;
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
    /// The orders of all payments here, settled ones included.
    std::set<std::string> orders() const;

    /// Writes down a payment that is about to be sent; it counts as under way until `answered`. If false, it could not
    /// be written durably, or the journal is full of payments in doubt, and it must not be sent.
    bool begin(const JournalEntry& entry);
    /// Whether this process is waiting for the answer to the payment.
    bool isUnderWay(const std::string& id) const;
    /// The request has ended, one way or another.
    void answered(const std::string& id);

    /// The purchase is this order; it is settled when the order is final.
    void orderKnown(const std::string& id, const KnownOrder& order);
    /// The service has reported an order; updates whichever purchase it belongs to.
    void orderSeen(const KnownOrder& order);
    /// The deposit was made; `orderId` is its order where known.
    void depositMade(const std::string& id, const std::optional<std::string>& orderId);
    /// The payment was not made, or is to be forgotten. False when nothing unsettled has that identifier.
    bool strikeOut(const std::string& id);

private:
    std::vector<JournalEntry> entries() const;
    void write(const JournalEntry& entry);
    bool makeRoom();

    const std::shared_ptr<KeyValueStore> mStore;
    // Guards the set below, and each change of an entry from its read to its write. Recursive, because the store may
    // report damage to the host in between, and the host may then ask for the payments.
    mutable std::recursive_mutex mMutex;
    std::set<std::string> mUnderWay;
};

}  // namespace kavio
