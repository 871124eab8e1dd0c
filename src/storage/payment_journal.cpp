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

std::optional<std::string> encoded(const JournalEntry& entry) {
    const auto& payment = entry.payment;
    JsonObject stored{{"kind", name(payment.kind)},
                      {"startedAt", DateText::format(payment.startedAt)},
                      {"amount", payment.amount},
                      {"paymentMethodId", payment.paymentMethodId},
                      {"paymentType", static_cast<std::int64_t>(payment.paymentType)},
                      {"service", entry.service},
                      {"owner", entry.owner},
                      {"isSettled", entry.isSettled},
                      {"isTimeKnown", entry.isTimeKnown},
                      {"hasWaited", entry.hasWaited},
                      {"isMachineTold", entry.isMachineTold}};
    setIfPresent(stored, "kavioId", payment.kavioId);
    setIfPresent(stored, "currency", payment.currency);
    setIfPresent(stored, "chargedCardId", payment.chargedCardId);
    setIfPresent(stored, "orderId", payment.orderId);
    if (payment.status) stored.emplace("status", static_cast<std::int64_t>(*payment.status));
    if (entry.endedAt) stored.emplace("endedAt", DateText::format(*entry.endedAt));
    if (entry.askedAt) stored.emplace("askedAt", DateText::format(*entry.askedAt));
    return serialise(stored);
}

std::optional<Date> dateIn(const std::optional<std::string>& text) {
    return text ? DateText::parse(*text) : std::nullopt;
}

/// An entry as its value in the store, all but its identifier, which is in the key. An unknown kind or an unreadable
/// date leaves nothing.
struct StoredEntry {
    std::optional<JournalEntry> entry;

    static StoredEntry decode(const KeyedContainer& in) {
        const std::string kindName = in.required("kind");
        const std::string startedAt = in.required("startedAt");
        const std::int64_t paymentType = in.required("paymentType");
        const std::optional<std::int64_t> status = in.optional("status");
        const auto kind = paymentKind(kindName);
        const auto start = DateText::parse(startedAt);
        if (!kind || !start) return {};
        return {JournalEntry{
            .payment = {.kind = *kind,
                        .startedAt = *start,
                        .kavioId = in.optional("kavioId"),
                        .amount = in.required("amount"),
                        .currency = in.optional("currency"),
                        .paymentMethodId = in.required("paymentMethodId"),
                        .paymentType =
                            PaymentMethod::paymentType(paymentType).value_or(PaymentMethod::PaymentType::UNKNOWN),
                        .chargedCardId = in.optional("chargedCardId"),
                        .orderId = in.optional("orderId"),
                        .status = status ? Order::orderStatus(*status) : std::nullopt},
            .service = in.required("service"),
            .owner = in.required("owner"),
            .isSettled = in.required("isSettled"),
            .isTimeKnown = in.optional("isTimeKnown", true),
            .hasWaited = in.optional("hasWaited", false),
            .endedAt = dateIn(in.optional("endedAt")),
            .askedAt = dateIn(in.optional("askedAt")),
            .isMachineTold = in.optional("isMachineTold", false),
        }};
    }
};

// An entry that another version of the library wrote may not be understood; it stays in the store, unseen.
std::optional<JournalEntry> decoded(std::string_view key, const std::string& text) {
    try {
        auto stored = decodeDocument<StoredEntry>(text);
        if (!stored || !stored->entry) return std::nullopt;
        stored->entry->payment.id = key.substr(keyPrefix.size());
        return stored->entry;
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

std::set<std::string> PaymentJournal::orders(const std::string& service) const {
    std::set<std::string> found;
    for (const auto& entry : entries()) {
        if (entry.service == service && entry.payment.orderId) found.insert(*entry.payment.orderId);
    }
    return found;
}

bool PaymentJournal::areMachinesTold(const std::string& service) const {
    const auto known = entries();
    return std::any_of(known.begin(), known.end(),
                       [&](const JournalEntry& entry) { return entry.isMachineTold && entry.service == service; });
}

bool PaymentJournal::begin(const JournalEntry& entry) {
    const std::lock_guard lock(mMutex);
    auto changes = roomForOne();
    auto text = encoded(entry);
    if (!changes || !text) return false;
    const auto key = keyOf(entry.payment.id);
    changes->insert_or_assign(key, std::move(*text));
    mUnderWay.insert(entry.payment.id);
    if (mStore->write(*changes) && mStore->isKept()) return true;
    mStore->remove(key);
    mUnderWay.erase(entry.payment.id);
    return false;
}

// Removes the oldest settled payments, or else the oldest ones known to be orders. One in doubt is never removed here.
std::optional<StoreChanges> PaymentJournal::roomForOne() const {
    const auto known = entries();
    StoreChanges changes;
    const auto remove = [&](auto mayGo) {
        for (const auto& entry : known) {
            if (known.size() - changes.size() >= mostEntries && mayGo(entry))
                changes.insert_or_assign(keyOf(entry.payment.id), std::nullopt);
        }
    };
    remove([](const JournalEntry& entry) { return entry.isSettled; });
    remove([](const JournalEntry& entry) { return entry.payment.orderId.has_value(); });
    if (known.size() - changes.size() >= mostEntries) return std::nullopt;
    return changes;
}

bool PaymentJournal::isUnderWay(const std::string& id) const {
    const std::lock_guard lock(mMutex);
    return mUnderWay.contains(id);
}

void PaymentJournal::answered(const std::string& id) {
    const std::lock_guard lock(mMutex);
    mUnderWay.erase(id);
}

bool PaymentJournal::write(const JournalEntry& entry) {
    auto text = encoded(entry);
    return text && mStore->set(keyOf(entry.payment.id), std::move(*text)) && mStore->isKept();
}

bool PaymentJournal::update(const std::string& id, const std::function<void(JournalEntry&)>& change) {
    const std::lock_guard lock(mMutex);
    auto known = unsettled(id);
    if (!known) return false;  // the application has forgotten it
    change(*known);
    return write(*known);
}

void PaymentJournal::orderKnown(const std::string& id, const KnownOrder& order) {
    const std::lock_guard lock(mMutex);
    auto known = unsettled(id);
    if (!known) return;
    auto& payment = known->payment;
    known->isSettled = isFinal(order.status);
    if (!known->isSettled && payment.orderId == order.id && payment.status == order.status) return;
    payment.orderId = order.id;
    payment.status = order.status;
    if (order.currency) payment.currency = order.currency;
    known->isMachineTold |= order.target && order.target == payment.kavioId;
    write(*known);
}

void PaymentJournal::orderSeen(const std::string& service, const KnownOrder& order) {
    for (const auto& known : unsettled()) {
        if (known.service == service && known.payment.orderId == order.id) orderKnown(known.payment.id, order);
    }
}

bool PaymentJournal::claim(const std::string& id, const std::string& orderId) {
    const std::lock_guard lock(mMutex);
    auto known = unsettled(id);
    if (!known || orders(known->service).contains(orderId)) return false;
    known->payment.orderId = orderId;
    write(*known);
    return true;
}

void PaymentJournal::depositMade(const std::string& id, const std::optional<std::string>& orderId) {
    const std::lock_guard lock(mMutex);
    auto known = unsettled(id);
    if (!known) return;
    known->isSettled = true;
    known->payment.orderId = orderId;
    write(*known);
}

bool PaymentJournal::notMade(const std::string& id) {
    const std::lock_guard lock(mMutex);
    const auto known = unsettled(id);
    return known && !known->payment.orderId && mStore->remove(keyOf(id));
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
