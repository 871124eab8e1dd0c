#include "wallet_process.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace kavio::test {

using namespace ::testing;

TEST(WalletOptions, EndWithStatusTwoAndOneLineWhenTheyAreWrong) {
    using Words = std::vector<std::string>;
    struct Case {
        Words arguments;
        const char* complaint;
    };
    for (const auto& c : std::initializer_list<Case>{
             {{}, "--jsonl"},
             {{"--jsonl", "--frobnicate"}, "--frobnicate"},
             {{"--frobnicate", "--jsonl"}, "--frobnicate"},
             {{"--jsonl", "surplus"}, "surplus"},
             {{"--jsonl", "--api-key"}, "--api-key"},
             {{"--jsonl", "--environment", "QA"}, "QA"},
             {{"--jsonl", "--environment", "1"}, "1"},
             {{"--jsonl", "--connect-to", "nowhere"}, "nowhere"},
             {{"--jsonl", "--connect-to", "host:99999"}, "99999"},
             {{"--jsonl", "--ca-file", "/nonexistent.pem"}, "/nonexistent.pem"},
             {{"--jsonl", "status"}, "--jsonl"},
             {{"status", "--frobnicate"}, "--frobnicate"},
             {{"status", "logout"}, "logout"},
             {{"login", "49"}, "PHONE"},
             {{"buy", "1", "--product", "x"}, "x"},
             {{"buy", "1", "--product", "5:0"}, "5:0"},
             {{"buy", "1", "--pay", "cash"}, "cash"},
             {{"machines", "--near", "1"}, "--near"},
             {{"machines", "--code", "1", "--serial", "2"}, "--serial"},
             {{"transactions", "--before", "yesterday"}, "yesterday"},
         }) {
        SCOPED_TRACE(PrintToString(c.arguments));
        const auto run = runWallet(c.arguments);
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.output, "");
        EXPECT_THAT(run.errors, HasSubstr(c.complaint));
        EXPECT_EQ(std::ranges::count(run.errors, '\n'), 1) << run.errors;
    }
}

TEST(WalletOptions, StandOnEitherSideOfWhatIsToBeDone) {
    const TemporaryFolder folder;
    const std::vector<std::string> store{"--store-dir", folder.path(), "--environment", "PROD", "--api-key", "-k-"};
    const std::string ask = R"({"op":"storeGet","key":"api_key"})"
                            "\n"
                            R"({"op":"storeGet","key":"service_name"})"
                            "\n";
    for (const bool isBefore : {true, false}) {
        auto arguments = store;
        arguments.insert(isBefore ? arguments.end() : arguments.begin(), "--jsonl");
        const auto run = runWallet(arguments, ask);
        EXPECT_EQ(run.status, 0);
        ASSERT_THAT(run.events(), SizeIs(2));
        EXPECT_EQ(run.events()[0].at("value"), "-k-");
    }
}

TEST(WalletOptions, ExplainThemselves) {
    const auto help = runWallet({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const auto* word : {"--jsonl", "login", "buy", "Exit status", "--store-dir"}) {
        EXPECT_THAT(help.output, HasSubstr(word));
    }
    EXPECT_THAT(runWallet({"buy", "--help"}).output, HasSubstr("--product"));
}

}  // namespace kavio::test
