#include "wallet_process.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace kavio::test {

using namespace ::testing;

using WalletOptions = WalletTest;

TEST_F(WalletOptions, EndWithStatusTwoAndOneLineWhenTheyAreWrong) {
    for (const std::string row : {
             "-> --jsonl",
             "--jsonl --frobnicate -> --frobnicate",
             "--jsonl surplus -> surplus",
             "--jsonl --api-key -> --api-key",
             "--jsonl --environment QA -> QA",
             "--jsonl --connect-to host:99999 -> 99999",
             "--jsonl --ca-file /nonexistent.pem -> /nonexistent.pem",
             "--jsonl status -> --jsonl",
             "status logout -> logout",
             "login 49 -> PHONE",
             "buy 1 --product 5:0 -> 5:0",
             "buy 1 --pay cash -> cash",
             "transactions --before yesterday -> yesterday",
         }) {
        SCOPED_TRACE(row);
        const auto arrow = row.find("-> ");
        const auto wrong = runWallet(words(row.substr(0, arrow)));
        EXPECT_EQ(wrong.status, 2);
        EXPECT_EQ(wrong.output, "");
        EXPECT_THAT(wrong.errors, HasSubstr(row.substr(arrow + 3)));
        EXPECT_EQ(std::ranges::count(wrong.errors, '\n'), 1) << wrong.errors;
    }
}

TEST_F(WalletOptions, StandOnEitherSideOfWhatIsToBeDone) {
    for (const std::string command : {"--jsonl --environment PROD --api-key -k-", "--api-key -k- --jsonl"})
        EXPECT_EQ(run(command, line("storeGet key=api_key")).events().at(0).at("value"), "-k-") << command;
}

TEST_F(WalletOptions, SayWhatTheHostApplicationIs) {
    const auto stored = [&](const std::string& key) {
        return drive({"storeGet key=k"}, key).events().at(0).at("value");
    };
    drive({"storeSet key=k value=a"}, "--kavio-key a");
    EXPECT_EQ(stored("--kavio-key a"), "a");
    EXPECT_EQ(stored("--kavio-key b"), nullptr) << "a suite of its own";
    EXPECT_EQ(stored(""), nullptr);
    const auto build = drive({"getBuild"}).output;
    EXPECT_EQ(drive({"getBuild"}, "--bundle-version 45000").output, build) << "the library has a build of its own";
}

TEST_F(WalletOptions, ExplainThemselves) {
    const auto help = run("--help");
    EXPECT_EQ(help.status, 0);
    for (const auto* word : {"--jsonl", "login", "buy", "Exit status", "--store-dir"})
        EXPECT_THAT(help.output, HasSubstr(word));
    EXPECT_THAT(run("buy --help").output, HasSubstr("--product"));
}

}  // namespace kavio::test
