#include "wallet_process.h"

#include <gmock/gmock.h>

namespace kavio::test {

using namespace ::testing;

namespace {

/// Without a service: nothing of these tests is to reach one.
Outcome driveAlone(const TemporaryFolder& store, const std::string& input, std::vector<std::string> more = {}) {
    std::vector<std::string> arguments{"--jsonl", "--store-dir", store.path(), "--connect-to", "127.0.0.1:1"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return runWallet(arguments, input);
}

}  // namespace

TEST(WalletLines, AnswerWhatIsNoOperationWithAnErrorAndGoOn) {
    struct Case {
        const char* name;
        std::string line;
        const char* message;
    };
    const std::vector<Case> cases{
        {"empty", "", "no JSON object"},
        {"not JSON", "hello", "no JSON object"},
        {"cut short", R"({"op":"getVersion")", "no JSON object"},
        {"two objects", R"({"op":"getVersion"}{})", "no JSON object"},
        {"a list", R"(["getVersion"])", "no JSON object"},
        {"a text", R"("getVersion")", "no JSON object"},
        {"no op", "{}", "\"op\" is missing"},
        {"null op", R"({"op":null})", "\"op\" is missing"},
        {"a number as op", R"({"op":1})", "\"op\" must be a text"},
        {"unknown op", R"({"op":"getversion"})", "\"getversion\" is no operation"},
        {"unknown facade", R"({"op":"getVersion","facade":"other"})", "no facade \"other\""},
        {"facade no text", R"({"op":"getVersion","facade":1})", "\"facade\" must be a text"},
        {"await no integer", R"({"op":"getVersion","await":1.5})", "\"await\""},
        {"await negative", R"({"op":"getVersion","await":-1})", "\"await\""},
        {"await out of range", R"({"op":"getVersion","await":99999999999999999999})", "\"await\""},
        {"number out of range", R"({"op":"getVersion","await":1e999})", "out of range"},
        {"timeout no integer", R"({"op":"getVersion","timeoutMs":"1"})", "\"timeoutMs\""},
        {"bytes that are no UTF-8", "{\"op\":\"getVersion\",\"x\":\"\xff\xfe\"}", "no JSON object"},
        {"a zero byte", std::string("{\"op\":\"get\0Version\"}", 19), "no JSON object"},
        {"nested deeply", R"({"op":"getVersion","x":)" + std::string(1'000'000, '['), "nested"},
        {"too long", R"({"op":"getVersion","x":")" + std::string(17'000'000, 'x') + "\"}", "too long"},
    };
    std::string input;
    for (const auto& c : cases) input += c.line + '\n' + R"({"op":"getVersion"})" + '\n';

    const TemporaryFolder store;
    const auto run = driveAlone(store, input);
    EXPECT_EQ(run.status, 0);
    const auto events = run.events();
    ASSERT_THAT(events, SizeIs(2 * cases.size()));
    for (std::size_t i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE(cases[i].name);
        EXPECT_EQ(events[2 * i].at("event"), "error");
        EXPECT_THAT(events[2 * i].at("message"), HasSubstr(cases[i].message));
        EXPECT_EQ(events[2 * i + 1].at("op"), "getVersion");
    }
}

TEST(WalletLines, KeepWhatTheyHoldOutOfErrors) {
    const TemporaryFolder store;
    const auto run = driveAlone(store, R"({"op":"addCreditCard","card":{"pan":"4111111111111111","month":"4222"}})"
                                       "\n"
                                       R"({"op":"addCreditCard","card":"4333333333333333)"
                                       "\n");
    EXPECT_THAT(run.summary(), ElementsAre("error", "error"));
    for (const auto* secret : {"4111", "4222", "4333"}) EXPECT_THAT(run.output + run.errors, Not(HasSubstr(secret)));
}

TEST(WalletLines, MayEndWithoutALineEndOrWithOneOfWindows) {
    const TemporaryFolder store;
    const auto run = driveAlone(store, "{\"op\":\"getVersion\"}\r\n{\"op\":\"getBuild\"}");
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.summary(), ElementsAre("main return getVersion", "main return getBuild"));
}

TEST(WalletLines, AreAnsweredAtOnce) {
    const TemporaryFolder store;
    LiveWallet wallet{{"--jsonl", "--store-dir", store.path()}};
    for (const auto* version : {"1.0.0", "1.0.0"}) {
        wallet.write(R"({"op":"getVersion"})");
        EXPECT_EQ(Json::parse(wallet.read()),
                  Json({{"event", "return"}, {"op", "getVersion"}, {"facade", "main"}, {"value", version}}));
    }
    wallet.endInput();
    EXPECT_EQ(wallet.read(), "");
    EXPECT_EQ(wallet.waitForEnd(), 0);
}

TEST(WalletLines, NeedAFacadeOnceItIsNotCreatedAtStart) {
    const TemporaryFolder store;
    const std::vector<std::string> lines{
        R"({"op":"getVersion"})",
        R"({"op":"create","apiKey":"k","environment":3})",
        R"({"op":"create","apiKey":"k","environment":-1})",
        R"({"op":"create","apiKey":"k","environment":"QA"})",
        R"({"op":"create","apiKey":"k","environment":2.0})",
        R"({"op":"create","apiKey":"k","environment":"TESTS","facade":"b"})",
        R"({"op":"storeGet","key":"service_name"})",
        R"({"op":"destroy"})",
        R"({"op":"getVersion"})",
        R"({"op":"getVersion","facade":"b"})",
    };
    const auto run = driveAlone(store, joined(lines), {"--no-facade"});
    EXPECT_THAT(run.summary(),
                ElementsAre("error", "main return create", "main return create", "error", "main return create",
                            "b return create", "- return storeGet", "error", "b return getVersion"));
    const auto events = run.events();
    EXPECT_EQ(events[1].at("value"), false);
    EXPECT_EQ(events[4].at("value"), true);
    EXPECT_EQ(events[6].at("value"), "ApiQA2Stable");
}

TEST(WalletLines, ReachTheStoreThatOutlastsTheProgram) {
    const std::vector<std::string> values{
        R"("text \" é 漢")",
        R"("")",
        R"({"date":"2024-03-05T14:07:09.250Z"})",
        R"({"date":"1969-12-31T23:59:59.999Z"})",
        R"({"data":""})",
        R"({"data":"AA=="})",
        R"({"data":"/+8A"})",
    };
    const TemporaryFolder store;
    std::vector<std::string> sets;
    std::vector<std::string> gets;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const auto key = R"("key":"k)" + std::to_string(i) + '"';
        sets.push_back(R"({"op":"storeSet",)" + key + R"(,"value":)" + values[i] + "}");
        gets.push_back(R"({"op":"storeGet",)" + key + "}");
    }
    EXPECT_EQ(driveAlone(store, joined(sets)).output, "");
    const auto events = driveAlone(store, joined(gets)).events();
    ASSERT_THAT(events, SizeIs(values.size()));
    for (std::size_t i = 0; i < values.size(); ++i) EXPECT_EQ(events[i].at("value"), Json::parse(values[i]));

    const auto removal = driveAlone(store, R"({"op":"storeSet","key":"k0","value":null})"
                                           "\n" +
                                               gets[0]);
    EXPECT_EQ(removal.events().at(0),
              Json({{"event", "return"}, {"op", "storeGet"}, {"key", "k0"}, {"value", nullptr}}));
}

TEST(WalletLines, LeaveTheStoreAloneWhenAValueIsOfAnotherForm) {
    const TemporaryFolder store;
    std::vector<std::string> lines;
    for (const auto* value : {"1", "[]", "true", "{}", R"({"date":1})", R"({"date":"2024-02-30T00:00:00.000Z"})",
                              R"({"date":"2024-03-05T14:07:09Z"})", R"({"date":"2024-03-05T24:00:00.000Z"})",
                              R"({"data":"AA"})", R"({"data":"AA==\n"})", R"({"data":"AB=="})", R"({"data":"A*=="})",
                              R"({"date":"2024-03-05T14:07:09.250Z","data":"AA=="})"}) {
        lines.push_back(std::string{R"({"op":"storeSet","key":"k","value":)"} + value + "}");
    }
    lines.emplace_back(R"({"op":"storeSet","key":"k"})");
    const auto errors = lines.size();
    lines.emplace_back(R"({"op":"storeGet","key":"k"})");

    const auto events = driveAlone(store, joined(lines)).events();
    ASSERT_THAT(events, SizeIs(errors + 1));
    for (std::size_t i = 0; i < errors; ++i) EXPECT_EQ(events[i].at("event"), "error") << lines[i];
    EXPECT_EQ(events.back().at("value"), nullptr);
}

}  // namespace kavio::test
