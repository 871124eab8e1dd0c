// One call of the library fails, or all from one on: an allocation, an open, a read, a write, a sync or a removal of a
// file, by the library itself or by libcurl, OpenSSL, SQLite and ICU. In the suite some numbers are tried; for all of
// them, with a release build:
//   KAVIO_FAILURES=0 build/release/bin/failing_tests --gtest_filter='*FailingMachine*'
// KAVIO_CALL=allocation, or another kind of call, tries only that one, and KAVIO_LASTS=0 or 1 only one or only all from
// one on. With KAVIO_EVERY=8, KAVIO_FIRST=1 to 8 share the numbers out to eight processes: most of the time is spent
// waiting.

#include "failing/application.h"
#include "failing/machine.h"
#include "sandbox/sandbox.h"
#include "support/from_environment.h"

#include <kavio/testing/temporary_folder.h>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <map>
#include <sstream>
#include <utility>

namespace kavio::test {
namespace {

using namespace std::chrono_literals;

/// The address sanitizer ends the program where a thread begins without memory.
#ifdef __SANITIZE_ADDRESS__
constexpr int endWhereAThreadBegins = -1;
#else
constexpr int endWhereAThreadBegins = SIGABRT;
#endif

struct Kind {
    const char* operation;
    const char* orderType = nullptr;  // of the service's order, if there is one
    int unit = 1;                     // of the amount, in the smallest unit
};
std::ostream& operator<<(std::ostream& out, const Kind& kind) { return out << kind.operation; }

struct Trouble {
    Call call;
    bool lasts;
    long number;  // 0 for none
};
std::ostream& operator<<(std::ostream& out, const Trouble& trouble) {
    return out << callNames[static_cast<std::size_t>(trouble.call)] << " " << trouble.number
               << (trouble.lasts ? " and those after it" : "");
}

/// "onLogin SUCCESS DONE NONE none"
struct Words {
    std::string callback, type, effect, cause, payload;
    bool operator==(const Words&) const = default;
};
Words wordsOf(const std::string& text) {
    Words words;
    std::istringstream(text) >> words.callback >> words.type >> words.effect >> words.cause;
    words.payload = text.substr(text.rfind(words.cause) + words.cause.size());
    return words;
}
std::ostream& operator<<(std::ostream& out, const Words& words) {
    return out << words.callback << ' ' << words.type << ' ' << words.effect << ' ' << words.cause << words.payload;
}

/// What a run of the program told.
struct Told {
    int ended = 0;
    std::vector<Words> reports;
    Json atTheEnd;  // of the failing operation; null if the program ended before that
    std::vector<Words> later;
    int setAside = 0;
    long orders = 0;  // that the service has
    bool isOrderOver = false;
};

bool isOver(const std::string& status) { return status != "created" && status != "started" && status != "authorized"; }

class FailingMachine : public ::testing::TestWithParam<Kind> {
protected:
    static constexpr int batch = 40;  // the journal has room for these
    // Two things that decoding keeps for each of two or three threads.
    static constexpr int mostEndsOnce = 6;

    FailingMachine() {
        const Json task = taskOf({Call::ALLOCATION, false, 0}, "login");
        Launcher::get().run(failingApplication, task, [](const Json&) {});
        const auto state = mSandbox->state();
        mCard = state.at("accounts").at(0).at("cards").at(0).at("locator");
    }

    Json taskOf(const Trouble& trouble, const std::string& operation) const {
        return {{"operation", operation},
                {"call", static_cast<int>(trouble.call)},
                {"number", trouble.number},
                {"lasts", trouble.lasts},
                {"amount", mAmount},
                {"card", mCard},
                {"longestSeconds", isStart() ? 30 : 150},
                {"store", mStore.string()},
                {"address", mSandbox->address()},
                {"authority", mSandbox->authorityFile().string()}};
    }
    Told run(const Trouble& trouble) {
        ++mAmount;
        if (GetParam().operation == std::string("login")) mStore = mFolder.path() / std::to_string(mAmount);
        Told told;
        const auto hear = [&](const Json& message) {
            if (message.contains("report"))
                (told.atTheEnd.is_null() ? told.reports : told.later).push_back(wordsOf(message.at("report")));
            else if (message.contains("calls"))
                told.atTheEnd = message;
            else
                told.setAside = message.at("setAside");
        };
        told.ended = Launcher::get().run(failingApplication, taskOf(trouble, GetParam().operation), hear);
        return told;
    }
    void look(Told& told, int amount) const {
        if (GetParam().orderType == nullptr) return;
        const auto state = mSandbox->state();
        for (const auto& order : state.at("accounts").at(0).at("orders")) {
            if (order.at("type") != GetParam().orderType || order.at("amount") != amount * GetParam().unit) continue;
            ++told.orders;
            told.isOrderOver = isOver(order.at("status"));
        }
    }

    bool isStart() const { return GetParam().operation == std::string("start"); }
    bool isEndedByALibrary(const Told& told, const Trouble& trouble) const;
    void expectSound(const Told& told, const Trouble& trouble) const;
    void expectTrue(const Told& told) const;
    void expectSoundNextTime();
    void settle(const std::map<int, Told>& runs);
    void tryAll(Call call, bool lasts, long count);

    std::chrono::seconds mElapsed{0};
    std::unique_ptr<sandbox::Sandbox> mSandbox = [] {
        Launcher::get();  // before the threads of the sandbox
        return std::make_unique<sandbox::Sandbox>(
            sandbox::Options{.orderStep = 10ms, .tokenLifetime = std::chrono::hours{24 * 365}});
    }();
    const TemporaryFolder mFolder;
    std::filesystem::path mStore = mFolder.path() / "store";
    std::string mCard;
    int mAmount = 10000;  // more than the orders that the account comes with
};

/// The JSON library asks for memory to destroy what is nested in a reply, and the C library to note that something of a
/// thread is to be destroyed with it. Without, they end the program. libcurl 7.88 frees the name of a host twice where
/// it cannot keep a TLS session. At the start, ICU uses what it has not got, or waits for
/// itself.
bool FailingMachine::isEndedByALibrary(const Told& told, const Trouble& trouble) const {
    if (trouble.call != Call::ALLOCATION) return false;
    if (isStart() && trouble.lasts && told.ended == endWhereAThreadBegins) return true;
    return told.ended == SIGABRT || (isStart() && (told.ended == SIGSEGV || told.ended == SIGALRM));
}

/// Whether the program goes on, and every operation has one end.
void FailingMachine::expectSound(const Told& told, const Trouble& trouble) const {
    if (isEndedByALibrary(told, trouble)) return;
    ASSERT_EQ(told.ended, 0);
    ASSERT_FALSE(told.atTheEnd.is_null());
    if (told.atTheEnd.contains("cannotStart")) return;
    EXPECT_EQ(told.setAside, 0) << "a sound store was set aside";
    EXPECT_EQ(told.atTheEnd.at("thrown"), "nothing");
    EXPECT_TRUE(told.atTheEnd.at("isOver")) << "busy for ever";
    ASSERT_FALSE(told.reports.empty()) << "nothing was reported";
    for (const auto& report : told.reports) {
        EXPECT_EQ(std::count(told.reports.begin(), told.reports.end(), report), 1) << report << " twice";
        EXPECT_TRUE(report == told.reports.back() || report.type == "SUCCESS") << "something follows " << report;
    }
    // What OpenSSL has had no memory for when it began is missing until the process ends.
    if (isStart() && trouble.call == Call::ALLOCATION) return;
    // A store that cannot be used in the whole of that time is not looked at again before the next run.
    const bool isUnusable = told.atTheEnd.at("unusable") != 0;
    EXPECT_TRUE(!isUnusable || trouble.lasts);
    ASSERT_FALSE(told.later.empty());
    EXPECT_TRUE(isUnusable || told.later.back().type == "SUCCESS") << told.later.back();
}

/// Whether what was reported is what the service has.
void FailingMachine::expectTrue(const Told& told) const {
    EXPECT_LE(told.orders, 1) << "paid twice";
    for (const auto& report : told.reports) {
        if (told.atTheEnd.is_null() || told.atTheEnd.value("unusable", 0) == 0) {
            EXPECT_NE(report.cause, "NO_SESSION");
        }
        if (GetParam().orderType == nullptr) continue;
        const auto& effect = report.effect;
        EXPECT_TRUE(effect == "UNKNOWN" || told.orders == (effect == "DONE" ? 1 : 0)) << report;
    }
}

void FailingMachine::expectSoundNextTime() {
    Launcher::get().run(laterApplication, taskOf({}, ""), [&](const Json& message) {
        if (message.contains("session")) {
            EXPECT_EQ(message.at("session"), "NONE NONE");
        }
    });
}

/// What is in doubt is on the list, and is settled as the service has it.
void FailingMachine::settle(const std::map<int, Told>& runs) {
    if (GetParam().orderType == nullptr) return;
    mElapsed += 200s;  // nothing can arrive any more
    mSandbox->setClockOffset(mElapsed);
    std::map<int, std::string> settled;
    Launcher::get().run(laterApplication, taskOf({}, ""), [&](const Json& message) {
        if (message.contains("settled"))
            settled[message.at("settled").get<int>() / GetParam().unit] = message.at("outcome");
        if (message.contains("left")) {
            EXPECT_EQ(message.at("left"), 0);
            EXPECT_EQ(message.at("setAside"), 0);
            EXPECT_EQ(message.at("unusable"), 0);
        }
    });
    for (const auto& [amount, told] : runs) {
        SCOPED_TRACE(amount);
        const auto found = settled.find(amount);
        if (found != settled.end()) {
            EXPECT_EQ(found->second, told.orders == 1 ? "DONE NONE" : "NONE NOT_MADE");
            continue;
        }
        const bool isCertain =
            told.orders == 0 || told.isOrderOver || (!told.reports.empty() && told.reports.back().effect == "DONE");
        EXPECT_TRUE(isCertain) << "gone although it was not certain";
    }
}

/// `count` is about how many calls there are: that depends on what is in the store, and on which thread is quicker.
void FailingMachine::tryAll(Call call, bool lasts, long count) {
    const long tries = fromEnvironment("KAVIO_FAILURES", 3);
    const long step = tries == 0 ? fromEnvironment("KAVIO_EVERY", 1) : std::max(count / tries, 1L);
    const long first = tries == 0 ? fromEnvironment("KAVIO_FIRST", 1) : 1 + (step - 1) / 2;
    std::map<int, Told> runs;
    std::map<std::string, int> ends;
    long failing = 0;
    for (long number = first, idle = 0; idle < 3 && (tries == 0 || number <= count); number += step) {
        const Trouble trouble{call, lasts, number};
        auto told = run(trouble);
        look(told, mAmount);
        SCOPED_TRACE(testing::Message() << trouble << ", amount " << mAmount << ", told "
                                        << testing::PrintToString(told.reports) << ' ' << told.atTheEnd.dump());
        expectSound(told, trouble);
        expectTrue(told);
        if (GetParam().orderType == nullptr && told.ended == 0) expectSoundNextTime();
        const bool hasFailed = told.atTheEnd.is_null() || told.atTheEnd.at("failures") > 0;
        idle = hasFailed ? 0 : idle + 1;
        failing += hasFailed ? 1 : 0;
        const auto& end = told.reports.empty() ? Words{} : told.reports.back();
        if (told.ended != 0)
            ++ends["the program ended"];
        else if (told.atTheEnd.contains("cannotStart"))
            ++ends["the program cannot start"];
        else if (hasFailed)
            ++ends[fmt::format("{} {} {}", end.callback, end.effect, end.cause)];
        runs.emplace(mAmount, std::move(told));
        if (runs.size() >= batch) settle(std::exchange(runs, {}));
    }
    settle(runs);
    if (!lasts && !isStart()) {
        EXPECT_LE(ends["the program ended"], mostEndsOnce);
    }
    std::erase_if(ends, [](const auto& end) { return end.second == 0; });
    for (const auto& [end, times] : ends)
        fmt::print("{}: {} {}: {} of {}: {}\n", GetParam().operation, callNames[static_cast<std::size_t>(call)],
                   lasts ? "from then on" : "once", times, failing, end);
}

TEST_P(FailingMachine, LosesNothing) {
    const auto clean = run({Call::ALLOCATION, false, 0});
    ASSERT_EQ(clean.ended, 0);
    const auto calls = clean.atTheEnd.at("calls");
    fmt::print("{}: {}\n", GetParam().operation, calls.dump());
    const char* only = std::getenv("KAVIO_CALL");
    for (std::size_t call = 0; call < callNames.size(); ++call) {
        if (only != nullptr && callNames[call] != only) continue;
        for (const bool lasts : {false, true})
            if (fromEnvironment("KAVIO_LASTS", lasts) == lasts) tryAll(Call(call), lasts, calls.at(call));
    }
}

INSTANTIATE_TEST_SUITE_P(In, FailingMachine,
                         ::testing::Values(Kind{"start"}, Kind{"login"}, Kind{"purchase", "vending"},
                                           Kind{"deposit", "balanceDeposit", 100}),
                         [](const auto& kind) { return std::string(kind.param.operation); });

}  // namespace
}  // namespace kavio::test
