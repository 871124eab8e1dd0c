#include "session.h"

#include "command_line/columns.h"
#include "host/output.h"
#include "people/interruption.h"
#include "people/terminal.h"

#include <chrono>

namespace kavio::wallet {

namespace {

constexpr std::chrono::milliseconds slice{250};

}  // namespace

Session::Session(Host& host, const Options& options, bool asJson)
    : mHost(host),
      mIsJson(asJson),
      mDelegate(std::make_shared<driver::Reporter>([this](const Report& report) { take(report); })),
      mKavio(mDelegate, options.apiKey, options.environment) {}

Report Session::ask(std::string what, const Operation& operation, WhenClockIsWrong policy) {
    std::optional<Report> last;
    follow(what, operation, [&](const Report& report) { last = report; });
    const bool isRefused = last.value().result->cause == Cause::SIGNATURE_REFUSED;
    if (!isRefused || policy == WhenClockIsWrong::FAIL) return last.value();
    return ask(std::move(what), operation);
}

void Session::follow(std::string what, const Operation& operation, const std::function<void(const Report&)>& onReport) {
    Progress progress{mIsJson ? std::string{} : std::move(what)};
    Interruption::check();
    operation(mKavio);
    for (;;) {
        for (; !mReports.empty(); mReports.pop_front()) {
            progress.clear();
            onReport(mReports.front());
        }
        // The facade is free again as soon as it makes its last report, so nothing is missed.
        if (!mKavio.isBusy()) return;
        Interruption::check();
        progress.show();
        mHost.runUntil([this] { return !mReports.empty(); }, slice);
    }
}

void Session::say(std::string_view sentence) const {
    if (!mIsJson) writeText(stdout, fmt::format("{}\n", sentence));
}

void Session::show(const Table& table, std::string_view whenEmpty) const {
    if (table.isEmpty()) return say(whenEmpty);
    if (!mIsJson) writeText(stdout, table.text(command_line::outputWidth()));
}

void Session::answer(std::string_view question, const driver::Json& value) const {
    if (mIsJson) writeText(stdout, driver::lineOf(driver::answerOf(question, "main", value)) + '\n');
}

void Session::warn(std::string_view sentence) const { writeText(stderr, fmt::format("kavio-wallet: {}\n", sentence)); }

void Session::take(const Report& report) {
    if (mIsJson) writeText(stdout, driver::lineOf(driver::eventOf(report, "main")) + '\n');
    mReports.push_back(report);
}

}  // namespace kavio::wallet
