#include "network/kavio_network_service.h"
#include "support/sample_replies.h"
#include "support/world.h"

#include <gmock/gmock.h>

#include <tuple>

namespace kavio::test {
namespace {

TEST(Transport, AddsTheServicesHeaders) {
    World world;
    world.kavio().login("49", "501");
    const auto request = world.sent().back();
    EXPECT_EQ(header(request, "X-Zelto-Wallet-Api-Key"), "key");
    EXPECT_EQ(header(request, "Content-Type"), "application/json; charset=utf-8");
    EXPECT_EQ(header(request, "lang"), "en");
    EXPECT_EQ(header(request, "X-Zelto-Sign").size(), 33U);
    EXPECT_EQ(request.headers.size(), 4U) << "no session token before there is a session";
    EXPECT_EQ(request.timeout, std::chrono::seconds(60));
    world.answer({503, ""});

    world.store().remove("api_key");
    world.device().locale->setLanguageCode("de");
    world.kavio().getOrder("1");
    EXPECT_EQ(header(world.sent().back(), "X-Zelto-Wallet-Api-Key"), "529qtx");
    EXPECT_EQ(header(world.sent().back(), "lang"), "de");
    EXPECT_EQ(header(world.sent().back(), "X-Zelto-Wallet-Session-Token"), "") << "sent, though it is empty";
    world.answer({503, ""});

    world.device().locale->setLanguageCode(std::nullopt);
    world.kavio().getOrder("1");
    EXPECT_EQ(header(world.sent().back(), "lang"), "en");
}

TEST(Transport, TakesAReplyWithoutABodyForAFailureAndShowsTheHostsTranslations) {
    World world;
    world.device().mainBundle->setLocalizedString("Your session token is expaired", "Sitzung abgelaufen");
    for (const int status : {200, 500, 401}) {
        world.kavio().getOrder("1");
        world.device().urlSession->answerWithoutBody(status);
        world.run();
    }
    EXPECT_THAT(
        world.reports(),
        testing::ElementsAre(Report{"onGetOrder", ResultType::FAILURE}, Report{"onGetOrder", ResultType::SERVER_ERROR},
                             Report{"onGetOrder", ResultType::ACCESS_DENIED, "Sitzung abgelaufen"}));
}

TEST(Transport, RemembersTheLastExchange) {
    World world;
    world.kavio().getOrder("1");
    world.answer({200, replies::order("created")});
    const auto last = KavioNetworkService::shared()->lastExchange();
    EXPECT_EQ(last.url, "https://api-qa2.kavio.example/v1/orders/1");
    EXPECT_EQ(last.request, "https://api-qa2.kavio.example/v1/orders/1?statusOnly=false");
    EXPECT_EQ(last.method, "GET");
    EXPECT_EQ(last.status, 200);
    EXPECT_EQ(last.response, replies::order("created"));
}

// Answers every failure alike.
class FixedErrorHandler final : public NetworkServiceErrorHandler {
public:
    explicit FixedErrorHandler(std::optional<std::string> message) : mMessage(std::move(message)) {}
    void handle(const UrlReply&, Completion completion) override { completion(APIError::serverError, mMessage); }

private:
    std::optional<std::string> mMessage;
};

TEST(Transport, LeavesFailuresToAnInstalledErrorHandler) {
    const std::string body = R"({"message":"M","code":"C"})";
    for (const auto& [handled, answer, report] : std::vector<std::tuple<std::optional<std::string>, Answer, Report>>{
             {"H", UrlError::networkConnectionLost, {"onGetOrder", ResultType::NETWORK_FAILED, "H"}},
             {"H", {500, body}, {"onGetOrder", ResultType::SERVER_ERROR, "H"}},
             {std::nullopt, {500, body}, {"onGetOrder", ResultType::SERVER_ERROR, "M"}},
             {std::nullopt, {500, "text"}, {"onGetOrder", ResultType::SERVER_ERROR}},
             {"H", {401, body}, {"onGetOrder", ResultType::ACCESS_DENIED, "H"}},
             {"H", {417, body}, {"onGetOrder", ResultType::FAILURE, "invalid_signature"}},
             {"H", {488, body}, {"onGetOrder", ResultType::FAILURE, "M"}},
             {"H", {488, R"({"code":"C"})"}, {"onGetOrder", ResultType::FAILURE, "C"}},
             {"H", {488, "text"}, {"onGetOrder", ResultType::FAILURE}},
         }) {
        World world;
        world.store().set("session_token", std::string("t1"));
        KavioNetworkService::shared()->setErrorHandler(std::make_shared<FixedErrorHandler>(handled));
        world.kavio().getOrder("1");
        world.answer(answer);
        EXPECT_THAT(world.reports(), testing::ElementsAre(report));
        EXPECT_EQ(world.store().string("session_token"), "t1");
    }
}

TEST(Transport, TellsTheHostOnceThatTheBackgroundIsDone) {
    World world;
    int told = 0;
    KavioNetworkService::shared()->setSavedBackgroundCompletionHandler([&] { ++told; });
    const auto wallet = std::make_shared<PaymentMethod>("0", "501", PaymentMethod::PaymentType::KAVIO);
    for (int i = 0; i < 2; ++i) {
        world.kavio().placeOrder(1, wallet, 1, {});
        world.answer({503, ""});
    }
    EXPECT_EQ(told, 1);
}

}  // namespace
}  // namespace kavio::test
