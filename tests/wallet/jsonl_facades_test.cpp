#include "wallet_process.h"

#include <gmock/gmock.h>

namespace kavio::test {

using namespace ::testing;

namespace {

const std::string createB = R"({"op":"create","facade":"b","apiKey":"demo-key","environment":"TEST"})";
const std::string loginB = R"({"op":"login","facade":"b","countryCode":"49","phoneNumber":"157000"})";

std::string login(const std::string& more = {}) {
    return R"({"op":"login","countryCode":"49","phoneNumber":"151234567")" + more + "}";
}

}  // namespace

using WalletFacades = WalletTest;

TEST_F(WalletFacades, ReportEachOnItsOwn) {
    const auto run = drive({createB, login(R"(,"await":0)"), loginB,
                            R"({"op":"verify","otp":"1","country":"DE",)"
                            R"("countryCode":"49","phoneNumber":"1","await":0})",
                            R"({"op":"sleep","milliseconds":3000})"});
    const auto summary = run.summary();
    EXPECT_THAT(summary, UnorderedElementsAre("b return create", "main onLogin SUCCESS", "b onLogin SUCCESS",
                                              AnyOf("main onVerify BUSY", "main onVerify BAD_INPUT")));
}

TEST_F(WalletFacades, AwaitTheirOwnCallbacksOfTheOperationsOwnKind) {
    sandbox::Fault slow;
    slow.delay = std::chrono::milliseconds{300};
    sandbox.fault("/account/challenge/", slow);
    // The second login is refused at once, which counts; the first one's outcome is the second callback awaited.
    const auto run = drive({login(R"(,"await":0)"), login(R"(,"await":2)"), R"({"op":"isLoggedIn"})"});
    EXPECT_THAT(run.summary(),
                ElementsAre("main onLogin BUSY", "main onLogin SUCCESS", "main onCheckIsUserLogin FAILURE"));
}

TEST_F(WalletFacades, GiveUpWaitingAfterTheTimeout) {
    const auto run = drive({
        R"({"op":"isLoggedIn","await":2,"timeoutMs":50})",
        R"({"op":"release","await":1,"timeoutMs":1})",
        R"({"op":"isLoggedIn","timeoutMs":0})",
    });
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.summary(), ElementsAre("main onCheckIsUserLogin FAILURE", "main timeout isLoggedIn",
                                           "main timeout release", "main timeout isLoggedIn"));
}

TEST_F(WalletFacades, AreSilentOnceTheyOrTheirDelegatesAreGone) {
    for (const auto* end : {"destroy", "dropDelegate", "release"}) {
        SCOPED_TRACE(end);
        const auto run = drive({createB, login(R"(,"await":0)"), std::string{R"({"op":")"} + end + "\"}",
                                R"({"op":"isLoggedIn","facade":"b"})", R"({"op":"sleep","milliseconds":500})"});
        EXPECT_THAT(run.summary(), ElementsAre("b return create", "b onCheckIsUserLogin FAILURE"));
    }
}

TEST_F(WalletFacades, AreReplacedByOneOfTheSameName) {
    const auto run = drive({
        R"({"op":"destroy"})",
        R"({"op":"isLoggedIn"})",
        R"({"op":"create","apiKey":"demo-key","environment":"TEST"})",
        R"({"op":"isLoggedIn"})",
        R"({"op":"create","apiKey":"other-key","environment":"TEST"})",
        R"({"op":"isLoggedIn"})",
        R"({"op":"storeGet","key":"api_key"})",
    });
    EXPECT_THAT(run.summary(),
                ElementsAre("error", "main return create", "main onCheckIsUserLogin FAILURE", "main return create",
                            "main onCheckIsUserLogin FAILURE", "- return storeGet"));
    EXPECT_EQ(run.events().back().at("value"), "other-key");
}

TEST_F(WalletFacades, LeaveWorkUnderWayAtTheEndOfInput) {
    sandbox::Fault slow;
    slow.delay = std::chrono::minutes{5};
    sandbox.fault("/account/challenge/", slow);
    const auto run = drive({login(R"(,"await":0)"), R"({"op":"sleep","milliseconds":200})"});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.summary(), IsEmpty());
}

}  // namespace kavio::test
