// A program that makes one facade after the other and never ends. In the suite it is a short one; for the whole of it,
// with a release build, and without the C library's caches of freed blocks, which it counts as heap in use:
//   GLIBC_TUNABLES=glibc.malloc.tcache_count=0 KAVIO_SOAK=50000 build/release/bin/failing_tests --gtest_filter='Soak*'

#include "failing/application.h"
#include "failing/machine.h"
#include "sandbox/sandbox.h"
#include "support/from_environment.h"

#include <kavio/testing/eventually.h>
#include <kavio/testing/temporary_folder.h>

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <vector>

namespace kavio::test {
namespace {

using namespace std::chrono_literals;

long entriesOf(const char* folder) {
    return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
}

/// What the process takes of the machine.
Json usage() {
    long whole = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> whole >> resident;
    return {{"resident", resident * ::sysconf(_SC_PAGESIZE) / 1024},
            {"heap", bytesInUse() / 1024},
            {"descriptors", entriesOf("/proc/self/fd")},
            {"threads", entriesOf("/proc/self/task")}};
}

/// Five operations for every two facades, each with a few ways to end.
void soak(const Json& task, const Tell& tell) {
    Application application(task);
    application.start();
    auto& heard = *application.delegate;
    std::map<std::string, int> outcomes;
    const auto perform = [&](const auto& operation) {
        application.call(operation);
        application.runUntilIdle(patience);
        ++outcomes[heard.outcomes.empty() ? "none" : heard.outcomes.back()];
        heard.forget();
    };
    const auto logIn = [&] {
        perform([](Kavio& kavio) { kavio.login("49", "151234567"); });
        perform([](Kavio& kavio) { kavio.verify("123456", "DE", "49", "151234567"); });
    };
    logIn();
    const auto wallet = std::make_shared<const DepositCard>("0", "", PaymentMethod::PaymentType::KAVIO, 0, "EUR", 2);
    perform([](Kavio& kavio) { kavio.getPaymentMethods(); });
    std::string card;
    for (const auto& method : heard.paymentMethods) {
        if (method->type == PaymentMethod::PaymentType::CREDIT_CARD) card = method->id;
    }
    const std::array<std::function<void()>, 10> turns{
        [&] { perform([](Kavio& kavio) { kavio.getPaymentMethods(); }); },
        [&] { perform([](Kavio& kavio) { kavio.getMachineProducts(2001); }); },
        [&] { perform([](Kavio& kavio) { kavio.isLoggedIn(); }); },
        [&] { perform([](Kavio& kavio) { kavio.getMachines(nullptr); }); },
        [&] { perform([&](Kavio& kavio) { kavio.placeOrder(42100107, wallet, 1, {}); }); },
        [&] { perform([](Kavio& kavio) { kavio.getOrder("7"); }); },
        [&] { perform([&](Kavio& kavio) { kavio.deposit(wallet, 1, card); }); },
        [&] { perform([](Kavio& kavio) { kavio.removeCard("none"); }); },
        [&] { perform([](Kavio& kavio) { kavio.logout(); }); },
        [&] { logIn(); },
    };
    const int operations = task.at("operations");
    const int part = std::max(operations / 10, 1);
    int facades = 1;
    for (int done = 0; done < operations; ++done) {
        turns[static_cast<std::size_t>(done) % turns.size()]();
        if (done % 5 == 1 || done % 5 == 4) {
            // Some go in the middle of an operation.
            if (done % 3 == 0) application.call([](Kavio& kavio) { kavio.getPaymentMethods(); });
            if (done % 2 == 0) application.kavio->release(application.kavio.get());
            application.kavio.reset();
            application.start();
            heard.forget();
            ++facades;
        }
        if ((done + 1) % part == 0) {
            auto figures = usage();
            figures["operations"] = done + 1;
            figures["facades"] = facades;
            tell(figures);
        }
    }
    tell({{"outcomes", outcomes}});
}

TEST(Soak, StaysFlat) {
    auto& launcher = Launcher::get();
    sandbox::Sandbox sandbox{{.orderStep = 1ms, .tokenLifetime = std::chrono::hours{24 * 365}}};
    const TemporaryFolder folder;
    const Json task{{"store", folder.path().string()},
                    {"address", sandbox.address()},
                    {"authority", sandbox.authorityFile().string()},
                    {"operations", fromEnvironment("KAVIO_SOAK", 1000)}};
    std::vector<Json> figures;
    Json outcomes;
    const int ended = launcher.run(soak, task, [&](const Json& message) {
        if (message.contains("outcomes")) {
            outcomes = message.at("outcomes");
            return;
        }
        sandbox.clearRequests();  // its own memory is not the point, but the machine's is limited
        figures.push_back(message);
        fmt::print("{:6} operations, {:6} facades: {:6} kB resident, {:5} kB of heap, {:2} descriptors, {:2} threads\n",
                   message.at("operations").get<int>(), message.at("facades").get<int>(),
                   message.at("resident").get<int>(), message.at("heap").get<int>(),
                   message.at("descriptors").get<int>(), message.at("threads").get<int>());
    });
    ASSERT_EQ(ended, 0);
    ASSERT_EQ(figures.size(), 10U);
    for (const auto& [outcome, count] : outcomes.items()) fmt::print("{:6} {}\n", count.get<int>(), outcome);
    const auto& early = figures.at(1);
    const auto& last = figures.back();
    EXPECT_LE(last.at("descriptors"), early.at("descriptors").get<int>() + 2);
    EXPECT_LE(last.at("threads"), early.at("threads"));
    // The least of three, as an open connection takes some.
    const auto leastHeap = [&](std::size_t first) {
        const auto heap = [&](std::size_t at) { return figures.at(at).at("heap").get<int>(); };
        return std::min({heap(first), heap(first + 1), heap(first + 2)});
    };
    EXPECT_LE(leastHeap(7), leastHeap(0) + 100);
}

}  // namespace
}  // namespace kavio::test
