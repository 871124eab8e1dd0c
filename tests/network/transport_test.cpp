#include "network/kavio_network_service.h"
#include "network/requests.h"
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

TEST(Transport, TellsALostConnectionFromOtherFailures) {
    World world;
    for (const auto& [answer, type] : std::vector<std::pair<Answer, ResultType>>{
             {UrlError::notConnectedToInternet, ResultType::NETWORK_FAILED},
             {UrlError::timedOut, ResultType::FAILURE},
             {UrlError::serverCertificateUntrusted, ResultType::FAILURE},
         }) {
        world.kavio().getOrder("1");
        world.answer(answer);
        EXPECT_EQ(world.reports().back(),
                  (Report{"onGetOrder", type, "failed to send request, error: scripted failure"}));
    }
    for (const auto& [status, body, type, message] : std::vector<std::tuple<int, std::string, ResultType, std::string>>{
             {600, "{}", ResultType::FAILURE, "{}"}, {503, "\xff\xfe", ResultType::SERVER_ERROR, "\uFFFD\uFFFD"}}) {
        world.kavio().getOrder("1");
        world.answer({status, body});
        EXPECT_EQ(world.reports().back(), (Report{"onGetOrder", type, message}));
    }
}

TEST(Transport, WritesTheAppVersionWithTheHostsBuild) {
    World world;
    const auto sent = [](const std::string& version) {
        const auto request = makeRequest<AccountRequest>(RequestHead{}, std::nullopt, version, "", "");
        return request->params()->at("appVersion").get<std::string>();
    };
    EXPECT_EQ(sent("2.3.1"), "2.310");
    world.device().mainBundle->setInformation("CFBundleVersion", std::string("45"));
    EXPECT_EQ(sent("2.3.1"), "2.3145");
    for (const auto* other : {"1.2", "", "1.2.3.4"}) EXPECT_EQ(sent(other), other);
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
