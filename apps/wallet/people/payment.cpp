#include "payment.h"

#include "command_line/translation.h"
#include "people/interruption.h"
#include "wording/text.h"

#include <kavio/order.h>

#include <algorithm>
#include <tuple>
#include <utility>

namespace kavio::wallet {

namespace {

bool holds(const std::vector<UnsettledPayment>& payments, const std::string& id) {
    return std::ranges::find(payments, id, &UnsettledPayment::id) != payments.end();
}

bool isSame(const UnsettledPayment& one, const UnsettledPayment& other) {
    const auto traits = [](const UnsettledPayment& payment) {
        return std::tie(payment.kind, payment.kavioId, payment.amount, payment.paymentMethodId, payment.chargedCardId);
    };
    return traits(one) == traits(other);
}

}  // namespace

Payment::Payment(Session& session, std::string doubt) : mSession(session), mDoubt(std::move(doubt)) {}

void Payment::make(std::string what, UnsettledPayment payment, const Session::Operation& start,
                   const std::function<void(const Report&)>& onReport) {
    const auto startAndNote = [&](Kavio& kavio) {
        mOthers = kavio.unsettledPayments();
        mPayment = std::move(payment);
        start(kavio);
    };
    mSession.follow(std::move(what), startAndNote, [&](const Report& report) {
        const auto* const order = std::get_if<OrderReport>(&report.payload);
        if (order != nullptr && *order) mOrderId = (*order)->id;
        onReport(report);
    });
}

std::string Payment::warning() const {
    const auto payment = writtenDown();
    const auto command = payment ? "settle " + payment->id : "transactions";
    return tr("{}: find out with `kavio-wallet {}` before you pay again.", mDoubt, printable(command));
}

Failure Payment::leave() {
    const auto before = writtenDown();
    mSession.release();
    const auto after = writtenDown();
    const auto& latest = after ? after : before;
    // Given up by the release, that is. A top-up cannot be given up, so it was answered at that moment.
    const bool isGivenUp = before && !after && before->kind == UnsettledPayment::Kind::ORDER;
    const auto orderId = printable(latest && latest->orderId ? *latest->orderId : mOrderId);
    const auto sentence = [&]() -> std::string {
        if (!orderId.empty()) {
            return after ? tr("Order {0} goes on: `kavio-wallet order {0}` shows what becomes of it.", orderId)
                         : tr("Order {0} is over: `kavio-wallet order {0}` shows how it ended.", orderId);
        }
        return mPayment && !isGivenUp ? warning() : tr("Nothing was sent, so nothing was paid.");
    };
    return {ExitStatus::INTERRUPTED, sentence()};
}

std::optional<UnsettledPayment> Payment::writtenDown() const {
    if (!mPayment) return std::nullopt;
    const auto payments = mSession.unsettled();
    const auto found = std::ranges::find_if(
        payments, [&](const auto& payment) { return !holds(mOthers, payment.id) && isSame(payment, *mPayment); });
    return found != payments.end() ? std::optional{*found} : std::nullopt;
}

void pay(Session& session, std::string doubt, const std::function<void(Payment&)>& work) {
    const Interruption listening;
    Payment payment{session, std::move(doubt)};
    try {
        work(payment);
    } catch (const Interrupted&) {
        throw payment.leave();
    }
}

std::string unsettledSentence(const Session& session) {
    const auto count = session.unsettled().size();
    if (count == 0) return {};
    return trn("One payment is not known to be over: see `kavio-wallet unsettled`.",
               "{} payments are not known to be over: see `kavio-wallet unsettled`.", count, count);
}

}  // namespace kavio::wallet
