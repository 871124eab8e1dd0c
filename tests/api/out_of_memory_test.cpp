#include "memory.h"
#include "support/sample_replies.h"
#include "support/world.h"
#include "tdsecure/td_secure_scene_controller.h"

#include <kavio/testing/boundary.h>
#include <kavio/testing/screen.h>

#include <gmock/gmock.h>

#include <cstdio>
#include <functional>

namespace kavio::test {
namespace {

using std::chrono::seconds;

using Step = std::function<void(World&)>;

/// An operation with what follows it, up to its end when nothing fails.
struct Course {
    const char* name;
    std::vector<Step> steps;
    bool isFollowed = false;  // with a report for each change
};

template <class Call>
Step inside(Call call) {
    return [call](World& world) {
        const InLibrary entered;
        call(world.kavio());
    };
}

/// The reply to the oldest request, if there is one, and what comes of it within a second.
Step reply(const std::string& text) {
    return [text](World& world) {
        const auto asked = world.paths();
        if (world.device().network().open(Network::Session::ORDINARY) > 0 && asked.back().starts_with("/time")) {
            world.answer({200, replies::time("2024")});
        }
        world.device().network().answer(200, text);
        world.run();
        if (world.kavio().isBusy()) world.advance(seconds(1));
    };
}

const auto card = std::make_shared<const PaymentMethod>("L1", "4242", PaymentMethod::PaymentType::CREDIT_CARD);
const auto wallet = std::make_shared<const DepositCard>("0", "", PaymentMethod::PaymentType::KAVIO, 0, "EUR", 2);
const auto plainCard = std::make_shared<const Card>(
    Card{.pan = "4111111111111111", .month = "12", .year = "2039", .cvv = "123", .email = "a@b.example"});
const auto windows = std::make_shared<Screen>();
const std::optional<std::string> loopback = "http://127.0.0.1/?z2=0";

const Step expireTime = [](World& world) { world.store().remove(keys::serverExpiredTime); };
const Step buy = inside([](Kavio& kavio) { kavio.placeOrder(1234, card, 150, {}); });

const Step enrol = inside([](Kavio& kavio) {
    kavio.addCreditCardTDSecure({.number = "4111", .month = 7, .year = 2039, .securityCode = 12},
                                {.name = "Jo", .email = "jo@a.example"});
});
const auto* challengePage = R"({"type":3,"url":"https://acs.example/c","id":"I"})";
const auto* fingerprintPage = R"({"type":2,"page":"https://acs.example/f","id":"I"})";
const Step useWindows = [](World&) { Platform::current().windows = windows; };
const Step redirect = inside([](Kavio&) { windows->navigate(loopback); });
// Of another facade, which shares the screen.
std::unique_ptr<Kavio> neighbour;
template <class Call>
Step insideNeighbour(Call call) {
    return [call](World&) {
        const InLibrary entered;
        call(*neighbour);
    };
}
const Step makeNeighbour = [](World&) {
    const OutsideLibrary made;
    neighbour = std::make_unique<Kavio>(std::weak_ptr<KavioDelegate>(), "key", Kavio::EnvironmentType::TEST);
};
const Step destroyNeighbour = [](World&) { neighbour.reset(); };
const Step releaseNeighbour = insideNeighbour([](Kavio& kavio) { kavio.release(&kavio); });
const Step enrolNeighbour = insideNeighbour([](Kavio& kavio) {
    kavio.addCreditCardTDSecure({.number = "4111", .month = 7, .year = 2039, .securityCode = 12},
                                {.name = "Jo", .email = "jo@a.example"});
});
// Once more where there was no memory for it.
const Step close = [](World&) {
    {
        const InLibrary entered;
        windows->pressClose();
    }
    windows->pressClose();
};

const std::vector<Course> courses{
    {"login", {inside([](Kavio& kavio) { kavio.login("49", "1511234567"); }), reply(replies::challenge)}},
    {"account",
     {inside([](Kavio& kavio) { kavio.getPaymentMethods(); }), reply(replies::account), reply(replies::prepaids)}},
    {"products", {inside([](Kavio& kavio) { kavio.getMachineProducts(7); }), reply("[]")}},
    {"transactions", {inside([](Kavio& kavio) { kavio.getTransactions(nullptr); }), reply("[]")}},
    {"card", {inside([](Kavio& kavio) { kavio.addCreditCard(plainCard); }), reply("{}")}},
    {"deposit",
     {inside([](Kavio& kavio) { kavio.deposit(wallet, 12.5, "L1"); }), reply(R"({"deposit":{"balance":77}})")}},
    {"purchase",
     {buy, reply(replies::order("created")), reply(replies::order("authorized")), reply(replies::order("completed"))},
     true},
    {"purchase that asks for the time",
     {expireTime, buy, reply(replies::order("created")), reply(replies::order("completed"))},
     true},
    {"logout", {inside([](Kavio& kavio) { kavio.logout(); }), reply("{}")}},
    {"enrolment, closed", {useWindows, enrol, reply(challengePage), close}},
    {"enrolment, replaced",
     {makeNeighbour, useWindows, enrol, reply(challengePage), enrolNeighbour, reply(challengePage), close, close,
      destroyNeighbour}},
    {"enrolment, taken down",
     {makeNeighbour, useWindows, enrol, reply(challengePage), releaseNeighbour, releaseNeighbour, close,
      destroyNeighbour}},
    {"enrolment",
     {useWindows, enrol, reply(fingerprintPage), reply("<html>"), redirect,
      reply(R"({"result":2,"url":"https://acs.example/c"})"), redirect,
      reply(R"({"result":3,"locator":"L","url":"U","message":"M"})"), close}},
};

// Whichever allocation of an operation fails: there is one end, nothing is thrown, and the next operation works.
TEST(OutOfMemory, OnceEndsAnOperationInOneReport) {
    for (const auto& course : courses) {
        SCOPED_TRACE(course.name);
        long points = 0;
        for (bool hasFailed = true; hasFailed;) {
            SCOPED_TRACE(++points);
            World world;
            failAllocation(points);
            for (const auto& step : course.steps) {
                step(world);
                world.run();
            }
            // A poll whose reply is not understood for want of memory is followed by another one.
            if (course.isFollowed && world.kavio().isBusy()) reply(replies::order("completed"))(world);
            hasFailed = stopFailing();

            ASSERT_FALSE(world.kavio().isBusy());
            EXPECT_FALSE(windows->hasScene());
            const auto reports = world.outcomes();
            ASSERT_FALSE(reports.empty());
            const auto failures = std::count_if(reports.begin(), reports.end(), [](const auto& outcome) {
                return outcome.ends_with(" OUT_OF_MEMORY");
            });
            EXPECT_LE(failures, reports.back().ends_with(" OUT_OF_MEMORY") ? 1 : 0) << "nothing follows it";
            EXPECT_LE(reports.size(), course.isFollowed ? 3U : 1U);
            if (reports.back().starts_with("UNKNOWN ") && !world.sentInBackground().empty()) {
                EXPECT_EQ(world.kavio().unsettledPayments().size(), 1U);
            }

            world.setFreshTime();
            world.kavio().getOrder("77");
            world.answer({200, replies::order("completed")});
            EXPECT_EQ(world.outcomes().back(), "NONE NONE");
        }
        EXPECT_GT(points, 10) << "or else nothing was tried";
        std::printf("%s: %ld\n", course.name, points - 1);
    }
}

TEST(OutOfMemory, LeavesNoUseOfTheSharedSceneBehindInAConstructor) {
    long points = 0;
    for (bool hasFailed = true; hasFailed;) {
        SCOPED_TRACE(++points);
        World world;
        failAllocation(points);
        try {
            const InLibrary entered;
            Kavio other(std::weak_ptr<KavioDelegate>(), "another key", Kavio::EnvironmentType::PROD);
            other.release(&other);
        } catch (const std::bad_alloc&) {  // NOLINT(bugprone-empty-catch): either way is fine
        }
        hasFailed = stopFailing();
        const auto used = TDSecureSceneController::takeUse();
        used->release(nullptr);
        world.kavio().release(&world.kavio());
        EXPECT_NE(TDSecureSceneController::takeUse(), used) << "the world's own use was the last";
    }
    EXPECT_GT(points, 10) << "or else nothing was tried";
}

}  // namespace
}  // namespace kavio::test
