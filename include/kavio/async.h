#pragma once

#include <kavio/export.h>
#include <kavio/kavio.h>

#include <coroutine>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

// Operations as values: each function of `AsyncKavio` returns an `Operation`, which a program awaits in a coroutine,
// gives a callback, or takes a future from.

namespace kavio {

/// The payload of an operation that has none.
struct Nothing {};

/// One report of an operation.
template <class Payload = Nothing>
struct Outcome {
    std::shared_ptr<const KavioResult> result;  ///< never null
    Payload payload{};                          ///< as the delegate's callback gets it

    /// Whether it is a success.
    explicit operator bool() const { return result->type == ResultType::SUCCESS; }
};

/// What an operation has reported so far, and who waits for more. For `Operation` and the library.
template <class Payload>
class Progress {
public:
    /// Returns whether it has what it waits for.
    using Waiter = std::function<bool()>;

    /// Whether nothing more will be reported.
    bool isOver() const { return mIsOver; }
    /// All reports so far, in order.
    const std::vector<Outcome<Payload>>& reports() const { return mReports; }
    /// The next report for `Operation::next`, if there is one.
    bool hasUntaken() const { return mTaken < mReports.size(); }
    /// Takes that report; there must be one.
    const Outcome<Payload>& take() { return mReports[mTaken++]; }

    /// Keeps `waiter` until it has what it waits for.
    void wait(Waiter waiter) {
        if (!waiter()) mWaiters.push_back(std::move(waiter));
    }
    /// Takes note of a report, and calls nobody yet.
    void add(Outcome<Payload> report) { mReports.push_back(std::move(report)); }
    /// No report follows; calls nobody yet.
    void end() noexcept { mIsOver = true; }
    /// Calls those who wait; the last thing that is done. Whoever is called may wait again.
    void tell() {
        for (auto left = mWaiters.size(); left > 0; --left) {
            auto waiter = std::move(mWaiters.front());
            mWaiters.pop_front();
            if (!waiter()) mWaiters.push_back(std::move(waiter));
        }
    }
    /// What is to end with the operation.
    std::shared_ptr<void> kept;

private:
    std::vector<Outcome<Payload>> mReports;
    std::size_t mTaken = 0;
    bool mIsOver = false;
    std::deque<Waiter> mWaiters;
};

/// An operation under way: started by the call that returned it, and not ended by letting go of it. To be used from the
/// main thread, like the wallet; only a future may be waited for elsewhere.
///
/// Whoever waits is called inside the report, on the main thread, and may call the wallet again, or destroy it. If the
/// wallet is released or destroyed first, whatever is under way ends with `FAILURE` and the cause `RELEASED`. What a
/// callback throws is not caught, and others who wait for the same report are then not told of it.
template <class Payload = Nothing>
class Operation {
public:
    /// For the library.
    explicit Operation(std::shared_ptr<Progress<Payload>> progress) : mProgress(std::move(progress)) {}

    /// Whether nothing more will be reported.
    bool isOver() const { return mProgress->isOver(); }
    /// All reports so far, in order.
    const std::vector<Outcome<Payload>>& reports() const { return mProgress->reports(); }

    /// Calls `callback` with the last report, once the operation is over; at once if it is over already.
    void then(std::function<void(const Outcome<Payload>&)> callback) const {
        mProgress->wait([progress = std::weak_ptr(mProgress), called = std::move(callback)] {
            const auto known = progress.lock();
            if (!known->isOver()) return false;
            called(known->reports().back());
            return true;
        });
    }
    /// The same, unless `context` is gone by then.
    template <class Context>
    void then(std::weak_ptr<Context> context, std::function<void(Context&, const Outcome<Payload>&)> callback) const {
        then([weak = std::move(context), called = std::move(callback)](const Outcome<Payload>& last) {
            if (const auto kept = weak.lock()) called(*kept, last);
        });
    }
    /// Calls `callback` with each report, those that were made already first.
    void onReport(std::function<void(const Outcome<Payload>&)> callback) const {
        mProgress->wait(
            [progress = std::weak_ptr(mProgress), called = std::move(callback), told = std::size_t{0}]() mutable {
                const auto known = progress.lock();
                while (told < known->reports().size()) called(Outcome<Payload>(known->reports()[told++]));
                return known->isOver();
            });
    }
    /// The last report. Another thread may wait for it, never the main thread, which makes the report.
    std::future<Outcome<Payload>> future() const {
        const auto promise = std::make_shared<std::promise<Outcome<Payload>>>();
        then([promise](const Outcome<Payload>& last) { promise->set_value(last); });
        return promise->get_future();
    }

    /// `co_await operation` is the last report, once the operation is over. In any coroutine, which may be destroyed
    /// while it waits.
    auto operator co_await() const { return Last(mProgress); }
    /// `co_await operation.next()` is the next report that was not taken yet, or none once there are no more.
    auto next() const { return Next(mProgress); }

private:
    /// Resumes a coroutine, unless that is gone, in which case so is this.
    class Awaiting {
    public:
        explicit Awaiting(std::shared_ptr<Progress<Payload>> progress) : mProgress(std::move(progress)) {}

    protected:
        template <class Ready>
        void resumeWhen(Ready ready, std::coroutine_handle<> waiting) {
            mWaiting = std::make_shared<std::coroutine_handle<>>(waiting);
            mProgress->wait([ready, progress = std::weak_ptr(mProgress), weak = std::weak_ptr(mWaiting)] {
                const auto handle = weak.lock();
                if (!handle) return true;
                if (!ready(*progress.lock())) return false;
                handle->resume();
                return true;
            });
        }
        Progress<Payload>& progress() const { return *mProgress; }

    private:
        std::shared_ptr<Progress<Payload>> mProgress;
        std::shared_ptr<std::coroutine_handle<>> mWaiting;
    };

    class Last : public Awaiting {
    public:
        using Awaiting::Awaiting;
        bool await_ready() const { return isReady(this->progress()); }
        void await_suspend(std::coroutine_handle<> waiting) { this->resumeWhen(isReady, waiting); }
        Outcome<Payload> await_resume() const { return this->progress().reports().back(); }

    private:
        static bool isReady(const Progress<Payload>& progress) { return progress.isOver(); }
    };

    class Next : public Awaiting {
    public:
        using Awaiting::Awaiting;
        bool await_ready() const { return isReady(this->progress()); }
        void await_suspend(std::coroutine_handle<> waiting) { this->resumeWhen(isReady, waiting); }
        std::optional<Outcome<Payload>> await_resume() const {
            if (!this->progress().hasUntaken()) return std::nullopt;
            return this->progress().take();
        }

    private:
        static bool isReady(const Progress<Payload>& progress) { return progress.hasUntaken() || progress.isOver(); }
    };

    std::shared_ptr<Progress<Payload>> mProgress;
};

/// What became of a payment that was in doubt: the order of a purchase, or the balance after a deposit.
struct Settlement {
    std::shared_ptr<const Order> order;   ///< null for a deposit
    std::optional<std::int64_t> balance;  ///< in the currency's smallest unit; absent for a purchase
};

/// A wallet whose operations are values; each of them is what `Kavio` says of the function of its name. Use it from the
/// main thread.
class KAVIO_API AsyncKavio {
public:
    /// A delegate hears every report as well, just before whoever waits for the operation.
    AsyncKavio(std::string apiKey, Kavio::EnvironmentType environment, std::weak_ptr<KavioDelegate> delegate = {});
    /// Ends what is under way, as `release` does.
    ~AsyncKavio();
    AsyncKavio(const AsyncKavio&) = delete;
    AsyncKavio& operator=(const AsyncKavio&) = delete;

    /// For everything else. What is started there reports to the delegate alone.
    Kavio& kavio() { return *mKavio; }
    /// As `Kavio::release`; whatever is under way ends with the cause `RELEASED`.
    void release();

    ///@{
    /// As the function of its name in `Kavio`, with the payload of the callback that this reports to.
    Operation<> isLoggedIn();
    Operation<> login(std::string countryCode, std::string phoneNumber);
    Operation<> verify(std::string otp, std::string country, std::string countryCode, std::string phoneNumber);
    Operation<> logout();

    Operation<std::optional<PaymentMethods>> getPaymentMethods();
    Operation<std::optional<Machines>> getMachines(std::shared_ptr<const MachineFilter> filter);
    Operation<std::optional<Products>> getMachineProducts(std::int64_t machineId);
    Operation<std::optional<Orders>> getTransactions(std::shared_ptr<const TransactionFilter> filter);
    Operation<std::shared_ptr<const Order>> getOrder(std::string orderId);
    ///@}

    /// Reports once when the order is placed and once at each change of its status, and is over when the order is, or
    /// is not followed any further. A change after `TIMEOUT` reaches only the delegate.
    ///
    /// Requesting `stop`, on any thread, gives up a purchase that has not left the device yet: `FAILURE` with the cause
    /// `CANCELED_BY_PERSON` and the effect `NONE`. One that may have left goes on.
    Operation<std::shared_ptr<const Order>> placeOrder(
        std::int64_t kavioId, std::shared_ptr<const PaymentMethod> paymentMethod, std::int64_t amount,
        std::optional<std::vector<std::shared_ptr<const RemoteVendProduct>>> products, std::stop_token stop = {});

    ///@{
    /// As the function of its name in `Kavio`, with the payload of the callback that this reports to.
    Operation<std::shared_ptr<const CreditCard>> addCreditCard(std::shared_ptr<const Card> card);
    Operation<std::shared_ptr<const CreditCard>> addCreditCardTDSecure(TDSPaymentCard paymentCard,
                                                                       TDSCardHolder cardHolder);
    Operation<> removeCard(std::string id);
    Operation<std::optional<std::int64_t>> deposit(std::shared_ptr<const DepositCard> depositCard, double amount,
                                                   std::string chargedCardId);
    ///@}
    /// A purchase that was made is followed as after `placeOrder`.
    Operation<Settlement> settlePayment(std::string id);

private:
    template <class Payload, class... Parameters>
    Operation<Payload> start(void (Kavio::*call)(Parameters...), std::type_identity_t<Parameters>... arguments);
    template <class Payload, class... Parameters>
    Operation<Payload> start(const std::shared_ptr<Progress<Payload>>& progress, void (Kavio::*call)(Parameters...),
                             std::type_identity_t<Parameters>... arguments);

    const std::unique_ptr<Kavio> mKavio;
};

/// A coroutine for programs that have no coroutine type of their own: it starts at once, and ends with this object.
/// What it throws leaves the report that it waited for, as from a callback.
class Task {
public:
    /// What the compiler asks of a coroutine's type.
    struct promise_type {
        ///@{
        /// The coroutine starts at once, keeps its frame until the `Task` ends, and lets exceptions out.
        Task get_return_object() { return Task(std::coroutine_handle<promise_type>::from_promise(*this)); }
        std::suspend_never initial_suspend() noexcept { return {}; }
        std::suspend_always final_suspend() noexcept { return {}; }
        void return_void() {}
        void unhandled_exception() { throw; }
        ///@}
    };

    /// Takes the coroutine over.
    Task(Task&& other) noexcept : mCoroutine(std::exchange(other.mCoroutine, nullptr)) {}
    Task(const Task&) = delete;
    Task& operator=(const Task&) = delete;
    /// Ends the coroutine, even where it waits.
    ~Task() {
        if (mCoroutine) mCoroutine.destroy();
    }

    /// Whether the coroutine has run to its end.
    bool isDone() const { return mCoroutine.done(); }

private:
    explicit Task(std::coroutine_handle<promise_type> coroutine) : mCoroutine(coroutine) {}

    std::coroutine_handle<promise_type> mCoroutine;
};

}  // namespace kavio
