#pragma once

#include "models/order_activity_model.h"
#include "models/order_model.h"
#include "network/api_result.h"
#include "storage/payment_journal.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kavio {

class ActivitiesRepository;
class PurchaseRepository;

/// What became of a payment whose answer never came.
struct PaymentFinding {
    enum class Verdict { MADE, NOT_MADE, NOT_CERTAIN };

    Verdict verdict = Verdict::NOT_CERTAIN;
    std::string orderId = {};                                  // if it was made
    std::optional<std::int64_t> endingBalance = std::nullopt;  // likewise
};

/// Whether the session's transactions can show the payment.
bool isOfThisSession(const JournalEntry& entry);

/// Looks for a payment among the transactions since it was written down. If only one may fit and it does fit, that is
/// the payment. If none may fit, the list reaches back far enough and what was sent can no longer arrive, the payment
/// was not made. Anything else is uncertain: what the service leaves out of a transaction is never taken as a match.
class PaymentSearch final : public std::enable_shared_from_this<PaymentSearch> {
public:
    /// `completion` runs on the main thread, once.
    static void start(JournalEntry entry, Completion<PaymentFinding> completion);

    PaymentSearch(JournalEntry entry, Completion<PaymentFinding> completion);

private:
    enum class Fit { NO, PERHAPS, YES };

    void askForPage(std::optional<Date> before);
    void take(const APIResult<std::vector<OrderActivityModel>>& page);
    void judge();
    static Fit fitOf(const JournalEntry& entry, const OrderActivityModel& activity);
    static Fit fitOfTime(const JournalEntry& entry, const OrderActivityModel& activity);
    static Fit fitOfText(const std::optional<std::string>& told, const std::string& wanted);
    static Fit fitOfCard(const OrderActivityModel& activity, const std::string& wanted);
    static Fit fitOfType(const OrderActivityModel& activity, OrderType wanted);
    static Fit fitOfDeposit(const UnsettledPayment& payment, const OrderActivityModel& activity);
    static Fit fitOfPurchase(const UnsettledPayment& payment, const OrderActivityModel& activity);
    bool isAwaitedByAnother(const OrderActivityModel& activity) const;
    void askForTargets();
    void takeOrder(const APIResult<OrderModel>& reply);
    void conclude();

    const std::shared_ptr<ActivitiesRepository> mActivities;
    const std::shared_ptr<PurchaseRepository> mPurchases;
    const JournalEntry mEntry;
    const Completion<PaymentFinding> mCompletion;
    const std::chrono::nanoseconds mBegun;  // as the device's uptime
    std::map<std::string, OrderActivityModel> mSeen;
    std::optional<Date> mOldest;
    int mPages = 0;
    bool mIsNewestFirst = true;
    bool mReachesBack = false;
    std::vector<OrderActivityModel> mUndecided;  // may fit; for which machine or card is not known yet
    std::vector<OrderActivityModel> mFitting;
    bool mSomeAreElsewhere = false;  // for another machine or card, if the service means the same by it
    bool mMoreMayFit = false;
};

}  // namespace kavio
