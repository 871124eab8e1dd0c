#include "repositories/payment_search.h"

#include "models/date_text.h"
#include "models/json/json_value.h"
#include "repositories/repositories.h"
#include "time/reliable_clock.h"
#include "util/shared_instance.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace kavio {
namespace {

using namespace std::chrono_literals;

/// How far the service's clock and ours may be apart.
constexpr auto clockTolerance = 60s;
/// After this long, a request that has left this device no longer arrives: it was given up after 60 seconds, and the
/// system gives up what a program has left behind within two minutes.
constexpr auto arrivalLimit = 180s;
constexpr std::int64_t pageSize = 100;
constexpr int mostPages = 20;
/// A person who bought the same thing more often than this has to look for themselves.
constexpr std::size_t mostCandidates = 10;

}  // namespace

void PaymentSearch::start(JournalEntry entry, Completion<PaymentFinding> completion) {
    std::make_shared<PaymentSearch>(std::move(entry), std::move(completion))->askForPage(std::nullopt);
}

PaymentSearch::PaymentSearch(JournalEntry entry, Completion<PaymentFinding> completion)
    : mActivities(sharedInstance<ActivitiesRepository>()),
      mPurchases(sharedInstance<PurchaseRepository>()),
      mEntry(std::move(entry)),
      mCompletion(std::move(completion)) {}

void PaymentSearch::askForPage(std::optional<Date> before) {
    ++mPages;
    JsonObject params{{"limit", pageSize}};
    if (before) params.emplace("beforeAuTime", DateText::format(*before));
    mActivities->activityModels(
        std::move(params),
        [self = shared_from_this()](const APIResult<std::vector<OrderActivityModel>>& page) { self->take(page); });
}

// A service may return fewer than were asked for. So only a date shows that the list reaches back far enough, or a page
// with nothing new, which is the end of the list.
void PaymentSearch::take(const APIResult<std::vector<OrderActivityModel>>& page) {
    if (!page) return mCompletion(APIResult<PaymentFinding>::failed(page.failure()));
    const auto known = mSeen.size();
    for (const auto& activity : page.payload().value_or(std::vector<OrderActivityModel>{})) {
        mSeen.emplace(activity.orderId, activity);
        const auto created = DateText::parse(activity.createdDateStr);
        if (created && (!mOldest || *created < *mOldest)) mOldest = created;
    }
    const bool isEnd = page.payload() && mSeen.size() == known;
    mReachesBack = isEnd || (mOldest && *mOldest < mEntry.payment.startedAt - clockTolerance);
    if (mReachesBack || !page.payload() || !mOldest || mPages == mostPages) return judge();
    askForPage(*mOldest + 1ms);  // others of the same instant may still be missing
}

void PaymentSearch::judge() {
    const auto ordersOfOthers = PaymentJournal::shared()->orders();
    for (const auto& [id, activity] : mSeen) {
        const auto fit = ordersOfOthers.contains(id) ? Fit::NO : fitOf(activity);
        if (fit == Fit::PERHAPS) mMoreMayFit = true;
        if (fit != Fit::YES) continue;
        (mEntry.payment.kavioId ? mUndecided : mFitting).push_back(activity);
    }
    if (mUndecided.size() > mostCandidates) {
        mMoreMayFit = true;
        mUndecided.clear();
    }
    askForMachines();
}

PaymentSearch::Fit PaymentSearch::fitOf(const OrderActivityModel& activity) const {
    const auto& payment = mEntry.payment;
    const auto created = DateText::parse(activity.createdDateStr);
    if (created && *created < payment.startedAt - clockTolerance) return Fit::NO;
    // For a purchase with a prepaid card, the service takes the amount from what was bought.
    const bool isAmountKnown = !payment.kavioId || payment.paymentType != PaymentMethod::PaymentType::PREPAID;
    if (isAmountKnown && activity.amount != payment.amount) return Fit::NO;
    if (payment.currency && activity.currency && payment.currency != activity.currency) return Fit::NO;
    const auto way = wayOfPayment(activity);
    return created ? way : std::min(way, Fit::PERHAPS);
}

PaymentSearch::Fit PaymentSearch::wayOfPayment(const OrderActivityModel& activity) const {
    const auto& payment = mEntry.payment;
    const auto same = [](const std::optional<std::string>& told, const std::string& wanted) {
        if (!told) return Fit::PERHAPS;
        return *told == wanted ? Fit::YES : Fit::NO;
    };
    const auto& card = activity.locator ? activity.locator : activity.tokenLocatorID;
    const bool isPrepaid = payment.paymentType == PaymentMethod::PaymentType::PREPAID;
    if (payment.kind == UnsettledPayment::Kind::DEPOSIT) {
        const auto wanted = isPrepaid ? OrderType::PREPAID_DEPOSIT : OrderType::BALANCE_DEPOSIT;
        if (activity.orderType != wanted) return Fit::NO;
        const auto charged = same(card, payment.chargedCardId.value_or(""));
        return isPrepaid ? std::min(charged, same(activity.prepaidCardID, payment.paymentMethodId)) : charged;
    }
    if (activity.orderType != OrderType::VENDING) return Fit::NO;
    switch (activity.paymentSource) {
        case PaymentProcessorType::balance:
            return payment.paymentType == PaymentMethod::PaymentType::KAVIO ? Fit::YES : Fit::NO;
        case PaymentProcessorType::creditCard:
            if (payment.paymentType != PaymentMethod::PaymentType::CREDIT_CARD) return Fit::NO;
            return same(card, payment.paymentMethodId);
        case PaymentProcessorType::prepaidCard:
            return isPrepaid ? same(activity.prepaidCardID, payment.paymentMethodId) : Fit::NO;
        default:
            return Fit::PERHAPS;
    }
}

// A transaction does not name its machine; its order may.
void PaymentSearch::askForMachines() {
    if (mUndecided.empty()) return conclude();
    mPurchases->order(mUndecided.back().orderId, false,
                      [self = shared_from_this()](const APIResult<OrderModel>& reply) { self->takeOrder(reply); });
}

void PaymentSearch::takeOrder(const APIResult<OrderModel>& reply) {
    if (!reply) return mCompletion(APIResult<PaymentFinding>::failed(reply.failure()));
    const auto machine = reply.payload() ? reply.payload()->prepaidDepositCardId : std::nullopt;
    if (!machine) mMoreMayFit = true;
    if (machine == mEntry.payment.kavioId) mFitting.push_back(std::move(mUndecided.back()));
    mUndecided.pop_back();
    askForMachines();
}

void PaymentSearch::conclude() {
    PaymentFinding finding;
    const bool hasSettled = serverNow() - mEntry.payment.startedAt >= arrivalLimit;
    if (mFitting.empty() && !mMoreMayFit && mReachesBack && hasSettled) {
        finding.verdict = PaymentFinding::Verdict::NOT_MADE;
    } else if (mFitting.size() == 1 && !mMoreMayFit) {
        finding = {PaymentFinding::Verdict::MADE, mFitting.front().orderId, mFitting.front().endingBalance};
    }
    mCompletion(APIResult<PaymentFinding>::success(std::move(finding)));
}

}  // namespace kavio
