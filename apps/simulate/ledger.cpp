#include "ledger.h"

namespace kavio::simulate {
namespace {

[[noreturn]] void broken(const char* rule, const std::string& what) { throw Violation(rule, what); }

std::string described(Callback callback, const KavioResult& result) {
    return "callback " + std::to_string(int(callback)) + ", " + std::string(name(result.type)) + " " +
           std::string(name(result.effect)) + " " + std::string(name(result.cause)) + " \"" +
           result.message.value_or("") + "\"";
}

}  // namespace

void Ledger::onGetPaymentMethods(Result result, std::optional<PaymentMethods> list) {
    if (list) methods = *list;
    heard(Callback::METHODS, *result);
}

void Ledger::heard(Callback callback, const KavioResult& result, const Order* order) {
    const auto what = described(callback, result);
    if (mListen) mListen(what);
    if (mIsSilent) broken("silent after its end", what);
    if (!mTime.isMain()) broken("on the main thread", what);
    if (mOperations.empty()) broken("reported once", what + " for nothing");
    auto& operation = mOperations.back();
    const bool isBusy = result.type == ResultType::BUSY;
    if (isBusy != (operation.mustBeBusy && operation.isCalling)) broken("BUSY if and only if busy", what);
    if (operation.callback != callback || operation.isOver) broken("reported once", what);
    mLastCause = result.cause;
    ++operation.reports;
    if (isBusy) return;
    if (callback == Callback::LOGOUT && result.type == ResultType::SUCCESS && onLoggedOut) onLoggedOut();
    notePayment(operation, result);
    if (callback == Callback::PLACE_ORDER) return heardOrder(operation, result, order);
    if (mKavio->isBusy()) broken("idle when it reports", what);
    operation.isOver = true;
}

void Ledger::heardOrder(Operation& operation, const KavioResult& result, const Order* order) {
    const auto what = described(operation.callback, result);
    if (order != nullptr) lastOrder = order->id;
    const auto status = order == nullptr ? std::nullopt : std::optional(order->status);
    if (operation.reports > 1 && result.type == ResultType::SUCCESS && status == operation.status)
        broken("each change once", what);
    if (operation.reports > 1 && result.type != ResultType::SUCCESS && result.type != ResultType::TIMEOUT)
        broken("a placed order does not fail", what);
    if (operation.hasTimedOut && result.type == ResultType::TIMEOUT) broken("reported once", what);
    operation.hasTimedOut = operation.hasTimedOut || result.type == ResultType::TIMEOUT;
    operation.status = status;
    if (result.type != ResultType::SUCCESS && !operation.hasTimedOut) {
        if (mKavio->isBusy()) broken("idle when it reports", what);
        operation.isOver = true;
    }
}

void Ledger::notePayment(Operation& operation, const KavioResult& result) {
    if (!operation.payment || result.cause == Cause::NOT_CERTAIN) return;
    auto& payment = mPayments[*operation.payment];
    // Settling a payment fails without saying anything about it, unless it says NOT_MADE.
    const bool isSettling = operation.isSettling && operation.reports == 1;
    if (isSettling && result.effect == Effect::NONE && result.cause != Cause::NOT_MADE) return;
    if (isSettling && result.effect == Effect::UNKNOWN) return;
    payment.told = result.effect;
}

void Ledger::returned() {
    auto& operation = mOperations.back();
    operation.isCalling = false;
    if (mIsSilent || !operation.mustBeBusy) return;
    if (operation.reports != 1) broken("BUSY if and only if busy", "a call while busy was not refused at once");
    mOperations.pop_back();
}

void Ledger::check() {
    if (mIsSilent || mOperations.empty() || mKavio == nullptr) return;
    auto& operation = mOperations.back();
    const bool isBusy = mKavio->isBusy();
    if (operation.isOver && isBusy)
        broken("idle after its last report", "callback " + std::to_string(int(operation.callback)));
    if (operation.reports == 0 && !isBusy)
        broken("busy until it reports", "callback " + std::to_string(int(operation.callback)));
    if (operation.reports > 0 && !isBusy) operation.isOver = true;
}

void Ledger::checkEnd() const {
    if (mIsSilent) return;
    for (const auto& operation : mOperations)
        if (operation.reports == 0)
            broken("reported once", "callback " + std::to_string(int(operation.callback)) + " was never called");
    if (mKavio != nullptr && mKavio->isBusy()) broken("comes to an end", "still busy");
}

std::vector<std::size_t> Ledger::silence() {
    std::vector<std::size_t> waiting;
    for (const auto& operation : mOperations)
        if (!mIsSilent && operation.payment && operation.reports == 0) {
            auto& payment = mPayments[*operation.payment];
            payment.isSettledUnheard = payment.isSettledUnheard || operation.isSettling;
            waiting.push_back(*operation.payment);
        }
    mIsSilent = true;
    return waiting;
}

}  // namespace kavio::simulate
