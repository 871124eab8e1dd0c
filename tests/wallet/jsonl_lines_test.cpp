#include "wallet_process.h"

#include <gmock/gmock.h>

namespace kavio::test {

using namespace ::testing;

using WalletLines = WalletTest;

TEST_F(WalletLines, MayBeOfAnyLengthAndWithAnyEnd) {
    const std::string tooLong(17'000'000, 'x');  // NOLINT(bugprone-string-constructor): meant to be that long
    const std::vector<std::pair<std::string, const char*>> cases{
        {"", "not a JSON object"},
        {R"({"op":"getVersion"})" + std::string(1, '\0'), "NUL"},
        {R"({"op":"getVersion","x":")" + tooLong + "\"}", "too long"},
        {R"({"op":"addCreditCard","card":"4333333333333333)", "not a JSON object"},
    };
    std::string input;
    for (const auto& [text, message] : cases) input += text + '\n' + line("getVersion") + "\r\n";
    input.resize(input.size() - 2);  // the last line may lack its end
    const auto answers = run("--jsonl", input);
    EXPECT_EQ(answers.status, 0);
    EXPECT_THAT(answers.output + answers.errors, Not(HasSubstr("4333")));
    const auto events = answers.events();
    ASSERT_THAT(events, SizeIs(2 * cases.size()));
    for (std::size_t i = 0; i < cases.size(); ++i) {
        EXPECT_THAT(events[2 * i].value("message", ""), HasSubstr(cases[i].second));
        EXPECT_EQ(events[2 * i + 1].at("event"), "return");
    }
}

TEST_F(WalletLines, LeaveOutNothingThatMoneyDependsOn) {
    const std::vector<Json> payments{
        Json::parse(R"({"op":"placeOrder","kavioId":1,"amount":1,
            "paymentMethod":{"id":"0","number":"1","type":"KAVIO"}})"),
        Json::parse(R"({"op":"deposit","amount":1.5,"chargedCardId":"1","depositCard":{"id":"0","number":"1",
            "type":"KAVIO","balance":1,"currency":"EUR","currencyDecimalDigits":2}})"),
        Json::parse(R"({"op":"settlePayment","id":"1"})"),
        Json::parse(R"({"op":"forgetPayment","id":"1"})"),
    };
    Words lines;
    for (const auto& payment : payments) {
        for (const auto& [name, value] : payment.items()) {
            auto without = payment;
            without.erase(name);
            lines.push_back(without.dump());
        }
    }
    const auto events = drive(lines).events();
    EXPECT_THAT(events, SizeIs(lines.size()));
    for (const auto& event : events) EXPECT_THAT(event.value("message", ""), EndsWith(" is missing"));
    EXPECT_THAT(sandbox.requests(), IsEmpty());
}

TEST_F(WalletLines, TakeOnlyIntegersAndTheStoresOwnForms) {
    EXPECT_EQ(drive({"sleep milliseconds=0e5", "sleep milliseconds=-0.0"}).output, "");
    Words wrong{"sleep milliseconds=0.5", "sleep milliseconds=-1", "sleep milliseconds=1e19", "storeSet key=k"};
    for (const std::string form : {"{}", R"({"date":"2024-02-30T00:00:00.000Z"})", R"({"data":"AA"})"})
        wrong.push_back(R"({"op":"storeSet","key":"k","value":)" + form + "}");
    EXPECT_EQ(drive(wrong).summary(), Words(wrong.size(), "error"));
}

using WalletFacades = WalletTest;

namespace {

const std::string login = R"(login countryCode="49" phoneNumber="151234567")";

}  // namespace

TEST_F(WalletFacades, AwaitTheirOwnCallbacksOfTheOperationsOwnKind) {
    // The second login is refused at once, which counts; the first one's outcome is the second callback awaited.
    EXPECT_THAT(drive({login + " await=0", login + " await=2", "isLoggedIn"}).summary(),
                ElementsAre("main onLogin BUSY", "main onLogin SUCCESS", "main onCheckIsUserLogin FAILURE"));
}

TEST_F(WalletFacades, AreSilentOnceTheyOrTheirDelegatesAreGone) {
    for (const std::string end : {"dropDelegate", "release other=true", "create apiKey=other-key environment=TEST"}) {
        const auto run = drive({"create facade=b apiKey=demo-key environment=TEST", login + " await=0", end,
                                login + " facade=b", login + " facade=b"});
        EXPECT_THAT(run.summary(), AllOf(Contains("b onLogin SUCCESS").Times(2), Not(Contains("main onLogin SUCCESS"))))
            << end;
    }
}

TEST_F(WalletFacades, LeaveWorkUnderWayAtTheEndOfInput) {
    sandbox.fault("/account/challenge/", {.delay = std::chrono::minutes{5}});
    const auto run = drive({login + " await=0", "sleep milliseconds=200"});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.summary(), IsEmpty());
}

}  // namespace kavio::test
