#include "storage/payment_journal.h"

#include "models/date_text.h"
#include "models/json/decoding_error.h"
#include "models/json/document.h"
#include "models/json/json_value.h"
#include "models/json/keyed_container.h"
#include "models/unsettled_payment.h"
#include "storage/suites.h"
#include "util/shared_instance.h"

#include <algorithm>

namespace kavio {
namespace {

constexpr std::string_view keyPrefix = "payment/";

std::string keyOf(const std::string& id) { return std::string(keyPrefix) + id; }

/// An entry as its value in the store.
struct StoredPayment {
    std::string kind;
    std::string startedAt;
    std::optional<std::int64_t> kavioId;
    std::int64_t amount = 0;
    std::optional<std::string> currency;
    std::string paymentMethodId;
    std::int64_t paymentType = 0;
    std::optional<std::string> chargedCardId;
    std::optional<std::string> orderId;
    std::optional<std::int64_t> status;
    std::string service;
    std::string owner;
    bool isSettled = false;

    static StoredPayment decode(const KeyedContainer& in) {
        return {
            .kind = in.required("kind"),
            .startedAt = in.required("startedAt"),
            .kavioId = in.optional("kavioId"),
            .amount = in.required("amount"),
            .currency = in.optional("currency"),
            .paymentMethodId = in.required("paymentMethodId"),
            .paymentType = in.required("paymentType"),
            .chargedCardId = in.optional("chargedCardId"),
            .orderId = in.optional("orderId"),
            .status = in.optional("status"),
            .service = in.required("service"),
            .owner = in.required("owner"),
            .isSettled = in.required("isSettled"),
        };
    }
};

std::string encoded(const JournalEntry& entry) {
    const auto& payment = entry.payment;
    JsonObject stored{{"kind", name(payment.kind)},
                      {"startedAt", DateText::format(payment.startedAt)},
                      {"amount", payment.amount},
                      {"paymentMethodId", payment.paymentMethodId},
                      {"paymentType", static_cast<std::int64_t>(payment.paymentType)},
                      {"service", entry.service},
                      {"owner", entry.owner},
                      {"isSettled", entry.isSettled}};
    setIfPresent(stored, "kavioId", payment.kavioId);
    setIfPresent(stored, "currency", payment.currency);
    setIfPresent(stored, "chargedCardId", payment.chargedCardId);
    setIfPresent(stored, "orderId", payment.orderId);
    if (payment.status) stored.emplace("status", static_cast<std::int64_t>(*payment.status));
    return serialise(stored).value_or("");
}

// An entry that another version of the library wrote may not be understood; it stays in the store, unseen.
std::optional<JournalEntry> decoded(std::string_view key, const std::string& text) {
    try {
        const auto stored = decodeDocument<StoredPayment>(text);
        const auto startedAt = stored ? DateText::parse(stored->startedAt) : std::nullopt;
        const auto kind = stored ? paymentKind(stored->kind) : std::nullopt;
        if (!startedAt || !kind) return std::nullopt;
        return JournalEntry{.payment = {.id = std::string(key.substr(keyPrefix.size())),
                                        .kind = *kind,
                                        .startedAt = *startedAt,
                                        .kavioId = stored->kavioId,
                                        .amount = stored->amount,
                                        .currency = stored->currency,
                                        .paymentMethodId = stored->paymentMethodId,
                                        .paymentType = PaymentMethod::paymentType(stored->paymentType)
                                                           .value_or(PaymentMethod::PaymentType::UNKNOWN),
                                        .chargedCardId = stored->chargedCardId,
                                        .orderId = stored->orderId,
                                        .status = stored->status ? Order::orderStatus(*stored->status) : std::nullopt},
                            .service = stored->service,
                            .owner = stored->owner,
                            .isSettled = stored->isSettled};
    } catch (const DecodingError&) {
        return std::nullopt;
    }
}

}  // namespace

std::shared_ptr<PaymentJournal> PaymentJournal::shared() { return sharedInstance<PaymentJournal>(); }

PaymentJournal::PaymentJournal() : mStore(recordsSuite()) {}

std::vector<JournalEntry> PaymentJournal::entries() const {
    std::vector<JournalEntry> found;
    for (const auto& key : mStore->keys()) {
        if (!key.starts_with(keyPrefix)) continue;
        const auto text = mStore->string(key);
        if (auto entry = text ? decoded(key, *text) : std::nullopt) found.push_back(*std::move(entry));
    }
    std::stable_sort(found.begin(), found.end(),
                     [](const auto& a, const auto& b) { return a.payment.startedAt < b.payment.startedAt; });
    return found;
}

std::vector<JournalEntry> PaymentJournal::unsettled() const {
    auto found = entries();
    std::erase_if(found, [](const JournalEntry& entry) { return entry.isSettled; });
    return found;
}

std::optional<JournalEntry> PaymentJournal::unsettled(const std::string& id) const {
    const auto text = mStore->string(keyOf(id));
    auto found = text ? decoded(keyOf(id), *text) : std::nullopt;
    return found && !found->isSettled ? found : std::nullopt;
}

std::set<std::string> PaymentJournal::orders() const {
    std::set<std::string> found;
    for (const auto& entry : entries()) {
        if (entry.payment.orderId) found.insert(*entry.payment.orderId);
    }
    return found;
}

bool PaymentJournal::begin(const JournalEntry& entry) {
    const std::lock_guard lock(mMutex);
    if (!makeRoom()) return false;
    const auto key = keyOf(entry.payment.id);
    if (!mStore->set(key, encoded(entry)) || !mStore->isKept()) {
        mStore->remove(key);
        return false;
    }
    mUnderWay.insert(entry.payment.id);
    return true;
}

// Removes the oldest settled payment, or else the oldest one known to be an order. One in doubt is never removed here.
bool PaymentJournal::makeRoom() {
    const auto known = entries();
    if (known.size() < mostEntries) return true;
    auto gone = std::find_if(known.begin(), known.end(), [](const JournalEntry& entry) { return entry.isSettled; });
    if (gone == known.end()) {
        gone = std::find_if(known.begin(), known.end(),
                            [](const JournalEntry& entry) { return entry.payment.orderId.has_value(); });
    }
    if (gone == known.end()) return false;
    mStore->remove(keyOf(gone->payment.id));
    return true;
}

bool PaymentJournal::isUnderWay(const std::string& id) const {
    const std::lock_guard lock(mMutex);
    return mUnderWay.contains(id);
}

void PaymentJournal::answered(const std::string& id) {
    const std::lock_guard lock(mMutex);
    mUnderWay.erase(id);
}

void PaymentJournal::write(const JournalEntry& entry) { mStore->set(keyOf(entry.payment.id), encoded(entry)); }

void PaymentJournal::orderKnown(const std::string& id, const KnownOrder& order) {
    const std::lock_guard lock(mMutex);
    auto known = unsettled(id);
    if (!known) return;  // the application has forgotten it
    auto& payment = known->payment;
    known->isSettled = isFinal(order.status);
    if (!known->isSettled && payment.orderId == order.id && payment.status == order.status) return;
    payment.orderId = order.id;
    payment.status = order.status;
    if (order.currency) payment.currency = order.currency;
    write(*known);
}

void PaymentJournal::orderSeen(const KnownOrder& order) {
    for (const auto& known : unsettled()) {
        if (known.payment.orderId == order.id) orderKnown(known.payment.id, order);
    }
}

void PaymentJournal::depositMade(const std::string& id, const std::optional<std::string>& orderId) {
    const std::lock_guard lock(mMutex);
    auto known = unsettled(id);
    if (!known) return;
    known->isSettled = true;
    known->payment.orderId = orderId;
    write(*known);
}

bool PaymentJournal::strikeOut(const std::string& id) {
    const std::lock_guard lock(mMutex);
    auto known = unsettled(id);
    if (!known) return false;
    known->isSettled = true;
    if (known->payment.orderId) {
        write(*known);
    } else {
        mStore->remove(keyOf(id));
    }
    return true;
}

}  // namespace kavio
