#pragma once

#include "host/host.h"
#include "host/options.h"
#include "json/reporter.h"
#include "people/failure.h"
#include "people/table.h"

#include <fmt/format.h>

#include <deque>
#include <functional>
#include <string>
#include <utility>

namespace kavio::wallet {

/// The wallet for a command: one facade, one operation at a time, and what is shown of it.
class Session {
public:
    using Operation = std::function<void(Kavio&)>;

    /// With `asJson`, every report is written as a JSON line, and nothing else is shown.
    Session(Host& host, const Options& options, bool asJson);

    /// Starts an operation and waits for the report that ends it, showing `what` meanwhile.
    Report ask(std::string what, const Operation& operation);
    /// Starts an operation that may report more than once, passes on each report, and waits until it is over.
    void follow(std::string what, const Operation& operation, const std::function<void(const Report&)>& onReport);

    /// The payload that the operation succeeded with; throws `Failure` for any other result.
    template <class T>
    T fetch(std::string what, const Operation& operation) {
        const auto report = ask(std::move(what), operation);
        if (report.result->type != ResultType::SUCCESS) throw failureOf(*report.result);
        return std::get<T>(report.payload);
    }
    /// For an operation that reports only its result.
    void perform(std::string what, const Operation& operation) { fetch<std::monostate>(std::move(what), operation); }
    /// A list that the service left out is empty.
    template <class List>
    List list(std::string what, const Operation& operation) {
        return fetch<std::optional<List>>(std::move(what), operation).value_or(List{});
    }

    void say(std::string_view sentence) const;
    /// Says `whenEmpty` instead of showing a table without rows.
    void show(const Table& table, std::string_view whenEmpty) const;
    /// For problems beside the command's own outcome.
    void warn(std::string_view sentence) const;

private:
    void take(const Report& report);
    /// Whether an operation is under way.
    bool isBusy();

    Host& mHost;
    const bool mIsJson;
    std::deque<Report> mReports;
    /// Set while `isBusy` asks; receives the answer.
    KavioDelegate::Result* mProbe = nullptr;
    std::shared_ptr<Reporter> mDelegate;
    Kavio mKavio;
};

}  // namespace kavio::wallet
