#include "wallet_process.h"

#include <gmock/gmock.h>

namespace kavio::test {

using namespace ::testing;

using WalletFacades = WalletTest;

namespace {

const std::string createB = "create facade=b apiKey=demo-key environment=TEST";
const std::string login = R"(login countryCode="49" phoneNumber="151234567")";

}  // namespace

TEST_F(WalletFacades, AwaitTheirOwnCallbacksOfTheOperationsOwnKind) {
    sandbox.fault("/account/challenge/", {.delay = std::chrono::milliseconds{300}});
    // The second login is refused at once, which counts; the first one's outcome is the second callback awaited.
    EXPECT_THAT(drive({login + " await=0", login + " await=2", "isLoggedIn"}).summary(),
                ElementsAre("main onLogin BUSY", "main onLogin SUCCESS", "main onCheckIsUserLogin FAILURE"));
}

TEST_F(WalletFacades, GiveUpWaitingAfterTheTimeout) {
    const auto run =
        drive({"isLoggedIn await=2 timeoutMs=50", "release await=1 timeoutMs=1", "isLoggedIn timeoutMs=0"});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.summary(), ElementsAre("main onCheckIsUserLogin FAILURE", "main timeout isLoggedIn",
                                           "main timeout release", "main timeout isLoggedIn"));
}

TEST_F(WalletFacades, AreSilentOnceTheyOrTheirDelegatesAreGone) {
    for (const std::string end : {"destroy", "dropDelegate", "release", "release other=true"}) {
        const auto run = drive({createB, login + " await=0", end, "isLoggedIn facade=b", "sleep milliseconds=500"});
        EXPECT_THAT(run.summary(), ElementsAre("b return create", "b onCheckIsUserLogin FAILURE")) << end;
    }
}

TEST_F(WalletFacades, AreReplacedByOneOfTheSameName) {
    const auto run = drive({"destroy", "isLoggedIn", "create apiKey=demo-key environment=TEST", "isLoggedIn",
                            "create apiKey=other-key environment=TEST", "isLoggedIn", "storeGet key=api_key"});
    EXPECT_THAT(run.summary(),
                ElementsAre("error", "main return create", "main onCheckIsUserLogin FAILURE", "main return create",
                            "main onCheckIsUserLogin FAILURE", "- return storeGet"));
    EXPECT_EQ(run.events().back().at("value"), "other-key");
}

TEST_F(WalletFacades, AreMissingUntilTheyAreCreated) {
    const auto run = drive({"getVersion", "create apiKey=k environment=3", "create apiKey=k environment=-1",
                            "create apiKey=k environment=QA", "create apiKey=k environment=2.0",
                            "create apiKey=k environment=TESTS facade=b", "storeGet key=service_name", "destroy",
                            "getVersion", "getVersion facade=b"},
                           "--no-facade");
    EXPECT_THAT(run.summary(),
                ElementsAre("error", "main return create", "main return create", "error", "main return create",
                            "b return create", "- return storeGet", "error", "b return getVersion"));
    const auto events = run.events();
    EXPECT_EQ(events[1].at("value"), false);
    EXPECT_EQ(events[4].at("value"), true);
    EXPECT_EQ(events[6].at("value"), "ApiQA2Stable");
}

TEST_F(WalletFacades, LeaveWorkUnderWayAtTheEndOfInput) {
    sandbox.fault("/account/challenge/", {.delay = std::chrono::minutes{5}});
    const auto run = drive({login + " await=0", "sleep milliseconds=200"});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.summary(), IsEmpty());
}

}  // namespace kavio::test
