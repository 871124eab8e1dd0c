#include "api/state.h"
#include "network/environments.h"
#include "network/session.h"
#include "repositories/payment_search.h"
#include "time/reliable_clock.h"

#include <kavio/platform/platform.h>

#include <utility>

namespace kavio {
namespace {

constexpr const char* notMade = "the payment was not made";
constexpr const char* notCertain = "what became of the payment cannot be told";
constexpr const char* stillUnderWay = "the payment is still under way";
constexpr const char* anotherSession = "the payment belongs to another session";

/// Whether the session's transactions can show the payment.
bool isOfThisSession(const JournalEntry& entry) {
    return entry.service == name(currentApiType()) && entry.owner == sessionOwner();
}

}  // namespace

std::vector<UnsettledPayment> Kavio::unsettledPayments() const {
    std::vector<UnsettledPayment> payments;
    for (auto& entry : PaymentJournal::shared()->unsettled()) payments.push_back(std::move(entry.payment));
    return payments;
}

bool Kavio::forgetPayment(const std::string& id) { return PaymentJournal::shared()->strikeOut(id); }

std::optional<std::string> Kavio::State::writeDown(UnsettledPayment payment) const {
    payment.id = Platform::current().uuid->make();
    payment.startedAt = serverNow();
    const JournalEntry entry{std::move(payment), std::string(name(currentApiType())), sessionOwner()};
    return PaymentJournal::shared()->begin(entry) ? std::optional(entry.payment.id) : std::nullopt;
}

void Kavio::settlePayment(std::string id) {
    const auto entry = PaymentJournal::shared()->unsettled(id);
    if (entry && entry->payment.kind == UnsettledPayment::Kind::DEPOSIT) {
        const auto operation = mState->begin(&KavioDelegate::onDeposit, Purpose::CHANGE);
        if (operation) mState->settle(*operation, *entry, &State::depositFound);
        return;
    }
    const auto operation = mState->begin(&KavioDelegate::onPlaceOrder, Purpose::CHANGE);
    if (!operation) return;
    if (entry) return mState->settle(*operation, *entry, &State::orderFound);
    operation->fail(ResultType::BAD_INPUT, Cause::INVALID_INPUT, "{" + id + "} is invalid payment ID");
}

template <class Asked>
void Kavio::State::settle(const Asked& operation, const JournalEntry& entry,
                          void (State::*found)(const Asked&, const std::string&, const PaymentFinding&)) {
    const auto& payment = entry.payment;
    const auto refuse = [&](const char* why) {
        operation.fail(ResultType::FAILURE, Cause::NOT_CERTAIN, why, Effect::UNKNOWN);
    };
    if (PaymentJournal::shared()->isUnderWay(payment.id)) return refuse(stillUnderWay);
    if (!isOfThisSession(entry)) return refuse(anotherSession);
    if (payment.orderId) {
        return (this->*found)(operation, payment.id, {PaymentFinding::Verdict::MADE, *payment.orderId});
    }
    PaymentSearch::start(
        entry, operation.template then<PaymentFinding>(
                   [found, id = payment.id](State& state, const Asked& asking, const APIResult<PaymentFinding>& reply) {
                       if (!reply) return asking.fail(reply.failure(), Effect::UNKNOWN);
                       const auto& finding = *reply.payload();
                       switch (finding.verdict) {
                           case PaymentFinding::Verdict::MADE:
                               return (state.*found)(asking, id, finding);
                           case PaymentFinding::Verdict::NOT_MADE:
                               PaymentJournal::shared()->strikeOut(id);
                               return asking.fail(ResultType::FAILURE, Cause::NOT_MADE, notMade);
                           case PaymentFinding::Verdict::NOT_CERTAIN:
                               return asking.fail(ResultType::FAILURE, Cause::NOT_CERTAIN, notCertain, Effect::UNKNOWN);
                       }
                   }));
}

void Kavio::State::depositFound(const DepositOperation& operation, const std::string& paymentId,
                                const PaymentFinding& finding) {
    PaymentJournal::shared()->depositMade(paymentId, finding.orderId);
    operation.succeed(finding.endingBalance);
}

}  // namespace kavio
