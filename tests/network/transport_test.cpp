#include "network/kavio_network_service.h"
#include "network/request_signature.h"
#include "network/requests.h"
#include "support/sample_replies.h"
#include "support/world.h"
#include "time/reliable_clock.h"

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
    world.device().setLanguage("de");
    world.kavio().getOrder("1");
    EXPECT_EQ(header(world.sent().back(), "X-Zelto-Wallet-Api-Key"), "529qtx");
    EXPECT_EQ(header(world.sent().back(), "lang"), "de");
    EXPECT_EQ(header(world.sent().back(), "X-Zelto-Wallet-Session-Token"), "") << "sent, though it is empty";
}

TEST(Transport, TakesAReplyWithoutABodyForAFailureAndShowsTheHostsTranslations) {
    World world;
    world.device().mainBundle().strings = {{"Your session token is expaired", "Sitzung abgelaufen"}};
    for (const int status : {200, 500, 401}) {
        world.kavio().getOrder("1");
        world.device().network().answer({status, std::nullopt});
        world.run();
    }
    EXPECT_THAT(
        world.reports(),
        testing::ElementsAre(Report{"onGetOrder", ResultType::FAILURE}, Report{"onGetOrder", ResultType::SERVER_ERROR},
                             Report{"onGetOrder", ResultType::ACCESS_DENIED, "Sitzung abgelaufen"}));
}

struct FixedErrorHandler final : NetworkServiceErrorHandler {
    explicit FixedErrorHandler(std::optional<std::string> fixed) : message(std::move(fixed)) {}
    void handle(const UrlReply&, Completion completion) override { completion(APIError::serverError, message); }
    const std::optional<std::string> message;
};

TEST(Transport, TellsFailuresApartAndLeavesThemToTheHostsErrorHandler) {
    const std::string scripted = "failed to send request, error: scripted failure";
    const auto nobody = std::shared_ptr<FixedErrorHandler>();
    const auto silent = std::make_shared<FixedErrorHandler>(std::nullopt);
    const auto says = std::make_shared<FixedErrorHandler>("H");
    for (const auto& [handler, answer, type, message] :
         std::vector<std::tuple<std::shared_ptr<FixedErrorHandler>, Answer, ResultType, std::string>>{
             {nobody, UrlError::notConnectedToInternet, ResultType::NETWORK_FAILED, scripted},
             {nobody, UrlError::timedOut, ResultType::FAILURE, scripted},
             {nobody, UrlError::serverCertificateUntrusted, ResultType::FAILURE, scripted},
             {nobody, {600, "{}"}, ResultType::FAILURE, "{}"},
             {nobody, {503, "\xff\xfe"}, ResultType::SERVER_ERROR, "\uFFFD\uFFFD"},
             {says, UrlError::networkConnectionLost, ResultType::NETWORK_FAILED, "H"},
             {says, {401, "{}"}, ResultType::ACCESS_DENIED, "H"},
             {silent, {500, R"({"message":"M"})"}, ResultType::SERVER_ERROR, "M"},
             {says, {417, "{}"}, ResultType::FAILURE, "invalid_signature"},
             {says, {488, R"({"code":"C"})"}, ResultType::FAILURE, "C"},
         }) {
        World world;
        KavioNetworkService::shared()->setErrorHandler(handler);
        world.kavio().getOrder("1");
        world.answer(answer);
        EXPECT_THAT(world.reports(), testing::ElementsAre(Report{"onGetOrder", type, message}));
    }
}

TEST(Transport, WritesTheAppVersionWithTheHostsBuild) {
    World world;
    const auto sent = [](const std::string& version) {
        return accountRequest(version).params->at("appVersion").get<std::string>();
    };
    EXPECT_EQ(sent("2.3.1"), "2.310");
    world.device().mainBundle().information = {{"CFBundleVersion", std::string("45")}};
    EXPECT_EQ(sent("2.3.1"), "2.3145");
    for (const auto* other : {"1.2", "", "1.2.3.4"}) EXPECT_EQ(sent(other), other);
}

// The signatures were made by an independent implementation in another language.
TEST(Signature, CoversUrlBodyAndTime) {
    World world;
    world.advance(std::chrono::seconds(754));
    EXPECT_EQ(serverTimeStamp(), "20240101001234");
    const std::string letters = "abcdefghijklmnopqrstuvwxyz";
    std::string families;  // of 31 characters
    for (int i = 0; i < 31; ++i) families += "👩‍👩‍👧‍👦";
    for (const auto& [url, body, signature] : std::vector<std::tuple<std::string, std::string, std::string>>{
             {"https://api-qa2.kavio.example/v1/time?", "", "4lhPEGx4yB8NiUQxw7RFSWZ9DzUV01234"},
             {"HTTPS://API-QA2.kavio.example/v1/Orders/5?statusOnly=true", "", "wkgJMc-rGNf-npzAJ63asBf8DOAr01234"},
             {"https://api.kavio.example:443/v1/account/challenge/",
              R"({"countryCode":"49","phoneNumber":"151234567","challenge":"","retry":"0"})",
              "Fd3zrJlDdI6OZX7K8w73x1bGgPP301234"},
             {"https://h/a%E2%80%8Fb\u00E2c", "", "07CTnw9GHNcO9bQM62evBOWhl0wX01234"},
             {"u", letters + "01234", "UVuL_sY2qPzywwd44AbY-Fv3RBex01234"},
             {"u", letters + "0123456", "UamIYC_hrT0Fcl6HE0SUQEvv_woj01234"},
             {"u", "\u00E4" + letters + "012345", "UcLQuKgqmuMpISZfzSeZ6UN_VLCU01234"},
             {"u", letters + "\r\n0123456", "Ue9XDaTtX1WhcN9GgitkDWYzvTAj01234"},
             {"u", families + "e\u0301 and more", "UWrCUizN3r0CnoXd-k7YImkGcOpi01234"},
         })
        EXPECT_EQ(signRequest(url, body), signature) << url << " " << body;
}

}  // namespace
}  // namespace kavio::test
