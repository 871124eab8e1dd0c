#include "repositories/payment_search.h"

#include "models/ascii_text.h"
#include "models/date_text.h"
#include "models/json/json_value.h"
#include "network/environments.h"
#include "network/session.h"
#include "repositories/repositories.h"
#include "time/reliable_clock.h"
#include "util/shared_instance.h"

#include <kavio/platform/platform.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace kavio {
namespace {

using namespace std::chrono_literals;

/// How far the service's clock and ours may be apart.
constexpr auto clockTolerance = 60s;
/// The system gives up sending what a program has left behind within this time.
constexpr auto retransmissionLimit = 120s;
/// A request leaves this device within 60 seconds, unless it waits for the network.
constexpr auto arrivalLimit = 60s + retransmissionLimit;
/// Nobody waits longer than this for an answer.
constexpr auto answerLimit = 600s;
constexpr std::int64_t pageSize = 100;
constexpr int mostPages = 20;
/// A person who bought the same thing more often than this has to look for themselves.
constexpr std::size_t mostCandidates = 10;

/// After this the payment can no longer arrive. Absent for one that waited in a program which then ended, until it has
/// been asked for.
std::optional<Date> lastArrival(const JournalEntry& entry) {
    if (entry.endedAt) return *entry.endedAt + retransmissionLimit;
    if (!entry.hasWaited) return entry.payment.startedAt + arrivalLimit;
    return entry.askedAt ? std::optional(*entry.askedAt + arrivalLimit) : std::nullopt;
}

/// Whether another program that uses the store may be making the payment: no program has noted how it ended.
bool mayBeMadeElsewhere(const JournalEntry& entry) {
    if (entry.endedAt || entry.payment.orderId) return false;
    const auto last = lastArrival(entry);
    return !last || serverNow() < *last + answerLimit;
}

std::optional<std::string> unlessEmpty(const std::optional<std::string>& text) {
    return text && !text->empty() ? text : std::nullopt;
}

/// The machine of a purchase or the prepaid card of a top-up, as the service's orders name it.
std::optional<std::int64_t> targetOf(const UnsettledPayment& payment) {
    return payment.kavioId ? payment.kavioId : decimalInteger(payment.paymentMethodId);
}

}  // namespace

bool isOfThisSession(const JournalEntry& entry) {
    return entry.service == name(currentApiType()) && entry.owner == sessionOwner();
}

void PaymentSearch::start(JournalEntry entry, Completion<PaymentFinding> completion) {
    std::make_shared<PaymentSearch>(std::move(entry), std::move(completion))->askForPage(std::nullopt);
}

PaymentSearch::PaymentSearch(JournalEntry entry, Completion<PaymentFinding> completion)
    : mActivities(sharedInstance<ActivitiesRepository>()),
      mPurchases(sharedInstance<PurchaseRepository>()),
      mEntry(std::move(entry)),
      mCompletion(std::move(completion)),
      mBegun(Platform::current().clock->uptime()) {}

void PaymentSearch::askForPage(std::optional<Date> before) {
    ++mPages;
    Parameters params{{"limit", pageSize}};
    if (before) params.emplace("beforeAuTime", DateText::format(*before));
    mActivities->activityModels(
        std::move(params),
        [self = shared_from_this()](const APIResult<std::vector<OrderActivityModel>>& page) { self->take(page); });
}

// A service may return fewer than were asked for, in any order. So the list reaches back far enough only if it goes
// back in time and a date shows it, or if a page brings nothing new, which is the end of the list.
void PaymentSearch::take(const APIResult<std::vector<OrderActivityModel>>& page) {
    if (!page) return mCompletion(APIResult<PaymentFinding>::failed(page.failure()));
    const auto known = mSeen.size();
    for (const auto& activity : page.payload().value_or(std::vector<OrderActivityModel>{})) {
        if (!mSeen.emplace(activity.orderId, activity).second) continue;
        const auto created = DateText::parse(activity.createdDateStr);
        if (!created) continue;
        mIsNewestFirst = mIsNewestFirst && (!mOldest || *created <= *mOldest);
        mOldest = mOldest ? std::min(*mOldest, *created) : *created;
    }
    const bool isEnd = page.payload() && mSeen.size() == known;
    mReachesBack = isEnd || (mIsNewestFirst && mOldest && *mOldest < mEntry.payment.startedAt - clockTolerance);
    if (mReachesBack || !page.payload() || !mOldest || mPages == mostPages) return judge();
    askForPage(*mOldest + 1ms);  // others of the same instant may still be missing
}

void PaymentSearch::judge() {
    const auto ordersOfOthers = PaymentJournal::shared()->orders(mEntry.service);
    for (const auto& [id, activity] : mSeen) {
        const auto fit = ordersOfOthers.contains(id) ? Fit::NO : fitOf(mEntry, activity);
        if (fit == Fit::NO) continue;
        if (fit == Fit::PERHAPS || isAwaitedByAnother(activity)) {
            mMoreMayFit = true;
        } else {
            const bool isTargetKnown = mEntry.payment.kind == UnsettledPayment::Kind::DEPOSIT &&
                                       (mEntry.payment.paymentType != PaymentMethod::PaymentType::PREPAID ||
                                        unlessEmpty(activity.prepaidCardID));
            (isTargetKnown ? mFitting : mUndecided).push_back(activity);
        }
    }
    if (mUndecided.size() > mostCandidates) {
        mMoreMayFit = true;
        mUndecided.clear();
    }
    askForTargets();
}

// Whether the order may be that of a payment whose answer somebody still waits for.
bool PaymentSearch::isAwaitedByAnother(const OrderActivityModel& activity) const {
    const auto journal = PaymentJournal::shared();
    const auto others = journal->unsettled();
    return std::any_of(others.begin(), others.end(), [&](const JournalEntry& other) {
        return other.service == mEntry.service && other.payment.id != mEntry.payment.id &&
               (journal->isUnderWay(other.payment.id) || mayBeMadeElsewhere(other)) &&
               fitOf(other, activity) != Fit::NO;
    });
}

PaymentSearch::Fit PaymentSearch::fitOf(const JournalEntry& entry, const OrderActivityModel& activity) {
    const auto& payment = entry.payment;
    // For a purchase with a prepaid card, the service takes the amount from what was bought.
    const bool isAmountKnown = !payment.kavioId || payment.paymentType != PaymentMethod::PaymentType::PREPAID;
    if (isAmountKnown && activity.amount != payment.amount) return Fit::NO;
    if (payment.currency && activity.currency && payment.currency != activity.currency) return Fit::NO;
    const bool isDeposit = payment.kind == UnsettledPayment::Kind::DEPOSIT;
    return std::min(fitOfTime(entry, activity),
                    isDeposit ? fitOfDeposit(payment, activity) : fitOfPurchase(payment, activity));
}

PaymentSearch::Fit PaymentSearch::fitOfTime(const JournalEntry& entry, const OrderActivityModel& activity) {
    const auto created = DateText::parse(activity.createdDateStr);
    if (!created) return Fit::PERHAPS;
    const auto last = lastArrival(entry);
    if (*created >= entry.payment.startedAt - clockTolerance && (!last || *created <= *last + clockTolerance))
        return Fit::YES;
    return entry.isTimeKnown ? Fit::NO : Fit::PERHAPS;
}

// What the service leaves out of a transaction speaks neither for nor against it.
PaymentSearch::Fit PaymentSearch::fitOfText(const std::optional<std::string>& told, const std::string& wanted) {
    if (!unlessEmpty(told)) return Fit::PERHAPS;
    return told == wanted ? Fit::YES : Fit::NO;
}

PaymentSearch::Fit PaymentSearch::fitOfCard(const OrderActivityModel& activity, const std::string& wanted) {
    return activity.tokenLocatorID == wanted ? Fit::YES : fitOfText(activity.locator, wanted);
}

PaymentSearch::Fit PaymentSearch::fitOfType(const OrderActivityModel& activity, OrderType wanted) {
    if (activity.orderType == OrderType::UNKNOWN) return Fit::PERHAPS;
    return activity.orderType == wanted ? Fit::YES : Fit::NO;
}

// Only what was completed has charged the card.
PaymentSearch::Fit PaymentSearch::fitOfDeposit(const UnsettledPayment& payment, const OrderActivityModel& activity) {
    const auto status = publicStatus(activity.orderStatus);
    if (activity.autoTopup || (isFinal(status) && status != Order::Status::COMPLETED)) return Fit::NO;
    const auto charge = std::min(fitOfCard(activity, payment.chargedCardId.value_or("")),
                                 status == Order::Status::COMPLETED ? Fit::YES : Fit::PERHAPS);
    if (payment.paymentType != PaymentMethod::PaymentType::PREPAID)
        return std::min(charge, fitOfType(activity, OrderType::BALANCE_DEPOSIT));
    // Its order may name the prepaid card where the transaction does not.
    const auto card = fitOfText(activity.prepaidCardID, payment.paymentMethodId);
    return std::min({charge, fitOfType(activity, OrderType::PREPAID_DEPOSIT), card == Fit::PERHAPS ? Fit::YES : card});
}

PaymentSearch::Fit PaymentSearch::fitOfPurchase(const UnsettledPayment& payment, const OrderActivityModel& activity) {
    const auto paidBy = [&](PaymentMethod::PaymentType type, Fit instrument) {
        if (payment.paymentType != type) return Fit::NO;
        return std::min(instrument, fitOfType(activity, OrderType::VENDING));
    };
    switch (activity.paymentSource) {
        case PaymentProcessorType::balance:
            return paidBy(PaymentMethod::PaymentType::KAVIO, Fit::YES);
        case PaymentProcessorType::creditCard:
            return paidBy(PaymentMethod::PaymentType::CREDIT_CARD, fitOfCard(activity, payment.paymentMethodId));
        case PaymentProcessorType::prepaidCard:
            return paidBy(PaymentMethod::PaymentType::PREPAID,
                          fitOfText(activity.prepaidCardID, payment.paymentMethodId));
        default:
            return std::min(Fit::PERHAPS, fitOfType(activity, OrderType::VENDING));
    }
}

// A transaction does not name its machine, nor always its prepaid card; its order may.
void PaymentSearch::askForTargets() {
    if (mUndecided.empty()) return conclude();
    mPurchases->order(mUndecided.back().orderId, false,
                      [self = shared_from_this()](const APIResult<OrderModel>& reply) { self->takeOrder(reply); });
}

void PaymentSearch::takeOrder(const APIResult<OrderModel>& reply) {
    if (!reply) return mCompletion(APIResult<PaymentFinding>::failed(reply.failure()));
    const auto told = reply.payload() ? reply.payload()->prepaidDepositCardId : std::nullopt;
    const bool isDeposit = mEntry.payment.kind == UnsettledPayment::Kind::DEPOSIT;
    if (!told || (isDeposit && told != targetOf(mEntry.payment))) mMoreMayFit = true;
    if (told && told == targetOf(mEntry.payment)) {
        mFitting.push_back(std::move(mUndecided.back()));
    } else if (told) {
        mSomeAreElsewhere = true;
    }
    mUndecided.pop_back();
    askForTargets();
}

// Another target counts as such only once the service is known to mean the same by it.
void PaymentSearch::conclude() {
    const auto journal = PaymentJournal::shared();
    if (mSomeAreElsewhere && mFitting.empty() && !journal->areMachinesTold(mEntry.service)) mMoreMayFit = true;
    PaymentFinding finding;
    const auto last = lastArrival(mEntry);
    // The search began then by the service's clock, which may have become known only since.
    const auto begun = serverNow() - (Platform::current().clock->uptime() - mBegun);
    if (!last && isServerTimeKnown())
        journal->update(mEntry.payment.id, [&](JournalEntry& entry) { entry.askedAt = begun; });
    const bool isOver = mEntry.isTimeKnown && isServerTimeKnown() && last && begun >= *last;
    // Another person's transactions tell nothing.
    const bool isWhole = mReachesBack && !mMoreMayFit && isOfThisSession(mEntry);
    if (isWhole && mFitting.empty() && isOver) finding.verdict = PaymentFinding::Verdict::NOT_MADE;
    if (isWhole && mFitting.size() == 1)
        finding = {PaymentFinding::Verdict::MADE, mFitting.front().orderId, mFitting.front().endingBalance};
    mCompletion(APIResult<PaymentFinding>::success(std::move(finding)));
}

}  // namespace kavio
