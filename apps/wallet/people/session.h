#pragma once

#include "driver/reporter.h"
#include "host/host.h"
#include "host/options.h"
#include "people/failure.h"
#include "people/table.h"

#include <fmt/format.h>

#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace kavio::wallet {

using driver::CardReport;
using driver::OrderReport;
using driver::Report;

/// Whether an operation that the service refused because of the clock is started once more: the library then asks for
/// the time first. For operations that only ask, and for those that do no harm when done twice.
enum class WhenClockIsWrong { FAIL, TRY_AGAIN };

/// The wallet for a command: one facade, one operation at a time, and what is shown of it.
class Session {
public:
    using Operation = std::function<void(Kavio&)>;

    /// With `asJson`, every report is written as a JSON line, and nothing else is shown.
    Session(Host& host, const Options& options, bool asJson);

    /// Starts an operation and waits for the report that ends it, showing `what` meanwhile.
    Report ask(std::string what, const Operation& operation, WhenClockIsWrong policy = WhenClockIsWrong::FAIL);
    /// Starts an operation that may report more than once, passes on each report, and waits until it is over. Like all
    /// others here that wait, throws `Interrupted` while an `Interruption` listens.
    void follow(std::string what, const Operation& operation, const std::function<void(const Report&)>& onReport);

    /// The payload that the operation succeeded with; throws `Failure` for any other result.
    template <class T>
    T fetch(std::string what, const Operation& operation, WhenClockIsWrong policy = WhenClockIsWrong::FAIL) {
        const auto report = ask(std::move(what), operation, policy);
        if (report.result->type != ResultType::SUCCESS) throw failureOf(*report.result);
        return std::get<T>(report.payload);
    }
    /// For an operation that reports only its result.
    void perform(std::string what, const Operation& operation, WhenClockIsWrong policy = WhenClockIsWrong::FAIL) {
        fetch<std::monostate>(std::move(what), operation, policy);
    }
    /// Asks for a list. One that the service left out is empty.
    template <class List>
    List list(std::string what, const Operation& operation) {
        return fetch<std::optional<List>>(std::move(what), operation, WhenClockIsWrong::TRY_AGAIN).value_or(List{});
    }

    std::vector<UnsettledPayment> unsettled() const { return mKavio.unsettledPayments(); }
    bool forget(const std::string& paymentId) { return mKavio.forgetPayment(paymentId); }
    /// Gives up what is under way: what has not been sent yet never will be, and nothing more is reported.
    void release() { mKavio.release(&mKavio); }

    void say(std::string_view sentence) const;
    /// Says `whenEmpty` instead of showing a table without rows.
    void show(const Table& table, std::string_view whenEmpty) const;
    /// For programs only: the answer to a question that no callback answers.
    void answer(std::string_view question, const driver::Json& value) const;
    /// For problems other than the command's own outcome.
    void warn(std::string_view sentence) const;

private:
    void take(const Report& report);

    Host& mHost;
    const bool mIsJson;
    std::deque<Report> mReports;
    std::shared_ptr<driver::Reporter> mDelegate;
    Kavio mKavio;
};

}  // namespace kavio::wallet
