#include "session.h"

#include "host/output.h"
#include "people/terminal.h"

#include <chrono>

namespace kavio::wallet {

namespace {

constexpr std::chrono::milliseconds slice{250};

}  // namespace

Session::Session(Host& host, const Options& options, bool asJson)
    : mHost(host),
      mIsJson(asJson),
      mDelegate(std::make_shared<Reporter>([this](const Report& report) { take(report); })),
      mKavio(mDelegate, options.apiKey, options.environment) {}

Report Session::ask(std::string what, const Operation& operation) {
    std::optional<Report> last;
    follow(std::move(what), operation, [&](const Report& report) { last = report; });
    return last.value();
}

void Session::follow(std::string what, const Operation& operation, const std::function<void(const Report&)>& onReport) {
    Progress progress{mIsJson ? std::string{} : std::move(what)};
    operation(mKavio);
    for (;;) {
        for (; !mReports.empty(); mReports.pop_front()) {
            progress.clear();
            onReport(mReports.front());
        }
        // The facade is free again as soon as it makes its last report, so nothing is missed.
        if (!isBusy()) return;
        progress.show();
        mHost.runUntil([this] { return !mReports.empty(); }, slice);
    }
}

void Session::say(std::string_view sentence) const {
    if (!mIsJson) writeText(stdout, fmt::format("{}\n", sentence));
}

void Session::show(const Table& table, std::string_view whenEmpty) const {
    if (table.isEmpty()) return say(whenEmpty);
    if (!mIsJson) writeText(stdout, table.text(outputWidth()));
}

void Session::warn(std::string_view sentence) const { writeText(stderr, fmt::format("kavio-wallet: {}\n", sentence)); }

void Session::take(const Report& report) {
    if (mProbe != nullptr) {
        *mProbe = report.result;
        return;
    }
    if (mIsJson) writeText(stdout, lineOf(eventOf(report, "main")) + '\n');
    mReports.push_back(report);
}

bool Session::isBusy() {
    KavioDelegate::Result answer;
    mProbe = &answer;
    mKavio.getOrder({});  // answered at once either way: either busy, or not the identifier of an order
    mProbe = nullptr;
    return answer && answer->type == ResultType::BUSY;
}

}  // namespace kavio::wallet
