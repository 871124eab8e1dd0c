#include "wallet_process.h"

#include <gmock/gmock.h>

namespace kavio::test {

using namespace ::testing;

using WalletLines = WalletTest;

TEST_F(WalletLines, AnswerWhatIsNoOperationWithAnErrorAndGoOn) {
    const std::vector<std::pair<std::string, const char*>> cases{
        {"", "no JSON object"},
        {"hello", "no JSON object"},
        {R"({"op":"getVersion")", "no JSON object"},
        {R"({"op":"getVersion"}{})", "no JSON object"},
        {R"(["getVersion"])", "no JSON object"},
        {R"("getVersion")", "no JSON object"},
        {"{}", "\"op\" is missing"},
        {R"({"op":null})", "\"op\" is missing"},
        {R"({"op":1})", "\"op\" must be a text"},
        {R"({"op":"getversion"})", "\"getversion\" is no operation"},
        {R"({"op":"getVersion","facade":"other"})", "no facade \"other\""},
        {R"({"op":"getVersion","facade":1})", "\"facade\" must be a text"},
        {R"({"op":"getVersion","await":1.5})", "\"await\""},
        {R"({"op":"getVersion","await":-1})", "\"await\""},
        {R"({"op":"getVersion","await":99999999999999999999})", "\"await\""},
        {R"({"op":"getVersion","await":1e999})", "out of range"},
        {R"({"op":"getVersion","timeoutMs":"1"})", "\"timeoutMs\""},
        {"{\"op\":\"getVersion\",\"x\":\"\xff\xfe\"}", "no JSON object"},
        {std::string("{\"op\":\"get\0Version\"}", 19), "no JSON object"},
        {R"({"op":"getVersion","x":)" + std::string(1'000'000, '['), "nested"},
        {R"({"op":"getVersion","x":")" + std::string(17'000'000, 'x') + "\"}", "too long"},
        {R"({"op":"addCreditCard","card":{"pan":"4111111111111111","month":"4222"}})", "is missing"},
        {R"({"op":"addCreditCard","card":"4333333333333333)", "no JSON object"},
    };
    std::string input;
    for (const auto& [text, message] : cases) input += text + '\n' + line("getVersion") + '\n';
    const auto answers = run("--jsonl", input);
    EXPECT_EQ(answers.status, 0);
    for (const auto* secret : {"4111", "4222", "4333"})
        EXPECT_THAT(answers.output + answers.errors, Not(HasSubstr(secret)));
    const auto events = answers.events();
    ASSERT_THAT(events, SizeIs(2 * cases.size()));
    for (std::size_t i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE(cases[i].first.substr(0, 60));
        EXPECT_EQ(events[2 * i].at("event"), "error");
        EXPECT_THAT(events[2 * i].at("message"), HasSubstr(cases[i].second));
        EXPECT_EQ(events[2 * i + 1],
                  Json({{"event", "return"}, {"op", "getVersion"}, {"facade", "main"}, {"value", "1.0.0"}}));
    }
}

TEST_F(WalletLines, MayEndWithoutALineEndOrWithOneOfWindows) {
    const auto answers = run("--jsonl", "{\"op\":\"getVersion\"}\r\n{\"op\":\"getBuild\"}");
    EXPECT_EQ(answers.status, 0);
    EXPECT_THAT(answers.summary(), ElementsAre("main return getVersion", "main return getBuild"));
}

TEST_F(WalletLines, ReachTheStoreThatOutlastsTheProgramAndTakesOnlyItsOwnForms) {
    const Words values{
        R"("text \" é 漢")",
        R"("")",
        R"({"date":"2024-03-05T14:07:09.250Z"})",
        R"({"data":"/+8A"})",
        R"({"data":""})",
        R"({"date":"1969-12-31T23:59:59.999Z"})",
        "null",
        R"({"data":"AA=="})",
    };
    const Words forms{"1",
                      "[]",
                      "true",
                      "{}",
                      R"({"date":1})",
                      R"({"date":"2024-02-30T00:00:00.000Z"})",
                      R"({"date":"2024-03-05T14:07:09Z"})",
                      R"({"date":"2024-03-05T24:00:00.000Z"})",
                      R"({"data":"AA"})",
                      R"({"data":"AA==\n"})",
                      R"({"data":"AB=="})",
                      R"({"data":"A*=="})",
                      R"({"date":"2024-03-05T14:07:09.250Z","data":"AA=="})"};
    const auto set = [](std::size_t key, const std::string& value) {
        return R"({"op":"storeSet","key":"k)" + std::to_string(key) + R"(","value":)" + value + "}";
    };
    Words sets;
    Words gets;
    for (std::size_t key = 0; key < values.size(); ++key) {
        for (const auto* value : {"\"old\"", values[key].c_str()}) sets.push_back(set(key, value));
        gets.push_back("storeGet key=k" + std::to_string(key));
    }
    EXPECT_EQ(drive(sets).output, "");

    Words wrong{"storeSet key=k0"};
    for (const auto& form : forms) wrong.push_back(set(0, form));
    EXPECT_EQ(drive(wrong).summary(), Words(wrong.size(), "error"));

    std::vector<Json> kept;
    for (const auto& event : drive(gets).events()) kept.push_back(event.at("value"));
    std::vector<Json> expected;
    for (const auto& value : values) expected.push_back(Json::parse(value));
    EXPECT_EQ(kept, expected);
}

}  // namespace kavio::test
