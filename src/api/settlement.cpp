#include "api/state.h"
#include "repositories/payment_search.h"

#include <kavio/platform/platform.h>

#include <utility>

namespace kavio {
namespace {

constexpr const char* notMade = "the payment was not made";
constexpr const char* notCertain = "what became of the payment cannot be told";
constexpr const char* stillUnderWay = "the payment is still under way";
constexpr const char* anotherSession = "the payment belongs to another session";

}  // namespace

std::vector<UnsettledPayment> Kavio::unsettledPayments() const noexcept {
    std::vector<UnsettledPayment> payments;
    for (auto& entry : PaymentJournal::shared()->unsettled()) payments.push_back(std::move(entry.payment));
    return payments;
}

bool Kavio::forgetPayment(const std::string& id) {
    bool isForgotten = false;
    contained([&] { isForgotten = PaymentJournal::shared()->strikeOut(id); });
    return isForgotten;
}

void Kavio::settlePayment(std::string id) {
    std::optional<JournalEntry> entry;
    try {
        entry = PaymentJournal::shared()->unsettled(id);
    } catch (const std::bad_alloc&) {
        return mState->perform(&KavioDelegate::onPlaceOrder, Purpose::CHANGE,
                               [](const State::OrderOperation&) { throw std::bad_alloc(); });
    }
    if (entry && entry->payment.kind == UnsettledPayment::Kind::DEPOSIT) {
        return mState->perform(&KavioDelegate::onDeposit, Purpose::CHANGE, [&](const State::DepositOperation& asked) {
            mState->settle(asked, *entry, &State::depositFound);
        });
    }
    mState->perform(&KavioDelegate::onPlaceOrder, Purpose::CHANGE, [&](const State::OrderOperation& asked) {
        if (entry) return mState->settle(asked, *entry, &State::orderFound);
        asked.fail(ResultType::BAD_INPUT, Cause::INVALID_INPUT, "{" + id + "} is invalid payment ID");
    });
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
                               if (!PaymentJournal::shared()->claim(id, finding.orderId)) break;
                               return (state.*found)(asking, id, finding);
                           case PaymentFinding::Verdict::NOT_MADE:
                               if (!PaymentJournal::shared()->notMade(id)) break;
                               return asking.fail(ResultType::FAILURE, Cause::NOT_MADE, notMade);
                           case PaymentFinding::Verdict::NOT_CERTAIN:
                               break;
                       }
                       asking.fail(ResultType::FAILURE, Cause::NOT_CERTAIN, notCertain, Effect::UNKNOWN);
                   }));
}

void Kavio::State::depositFound(const DepositOperation& operation, const std::string& paymentId,
                                const PaymentFinding& finding) {
    PaymentJournal::shared()->depositMade(paymentId, finding.orderId);
    operation.succeed(finding.endingBalance);
}

}  // namespace kavio
