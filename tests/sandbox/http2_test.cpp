#include "client.h"

#include <fmt/format.h>

#include <cstdio>
#include <optional>

namespace kavio::test {
namespace {

/// curl, talking to a sandbox by HTTP/2 unless its arguments say something else, and what it prints. What goes to the
/// standard error comes at once.
class Curl {
public:
    Curl(const sandbox::Sandbox& service, const std::vector<std::string>& arguments) {
        const auto command =
            fmt::format("curl -sN --no-progress-meter --cacert {} --connect-to ::{} {} 2>&1",
                        service.authorityFile().string(), service.address(), fmt::join(arguments, " "));
        mOutput.reset(::popen(command.c_str(), "r"));
    }
    /// Empty at the end.
    std::string line() const {
        std::string text;
        for (int next = 0; !text.ends_with('\n') && (next = std::fgetc(mOutput.get())) != EOF;) text += char(next);
        return text;
    }

private:
    std::unique_ptr<FILE, int (*)(FILE*)> mOutput{nullptr, ::pclose};
};

const std::string time = "https://localhost/v1/time";
const std::string clock = "https://localhost/_sandbox/clock";

TEST(Http2, DelaysOneRequestOfAConnectionUntilItStops) {
    std::optional<sandbox::Sandbox> service(sandbox::Options{.http2 = true});
    service->fault("/time", {.delay = 24h});
    const Curl curl(
        *service,
        {"-Z -o /dev/null -o /dev/null -w '%{stderr}%{urlnum}: %{http_code}, %{num_connects} new\n'", time, clock});
    EXPECT_EQ(curl.line(), "1: 200, 0 new\n");
    service.reset();
    EXPECT_EQ(curl.line(), "0: 000, 1 new\n");
}

TEST(Http2, AnswersManyRequestsSideBySide) {
    const sandbox::Sandbox service({.http2 = true});
    const auto session = makeUrlSession({service.authorityFile(), service.address()});
    // More would not fit into HTTP/2's window for a stream, and libcurl 7.88 may stall on several of those at once.
    const std::string body(30'000, 'x');
    std::vector<std::future<Outcome>> outcomes;
    for (int i = 0; i < 20; ++i) {
        outcomes.push_back(begin(*session, get("https://localhost/_sandbox/clock")));
        outcomes.push_back(begin(*session, post("https://localhost/v1/none", body, Idempotency::REPEATABLE)));
    }
    for (std::size_t i = 0; i < outcomes.size(); ++i)
        EXPECT_EQ(text(outcomeOf(std::move(outcomes[i]))).substr(0, 4), i % 2 == 0 ? "200 " : "404 ");
    EXPECT_EQ(service.requests().size(), 20U);
}

TEST(Http2, LosesOneReplyOfAConnection) {
    sandbox::Sandbox service({.http2 = true});
    for (const auto& [fault, arrived] : std::initializer_list<std::pair<sandbox::Fault, std::string>>{
             {{.drop = true}, ""}, {{.cutAfter = 5}, R"({"mes)"}}) {
        service.fault("/time", fault);
        const Curl curl(service, {"-o - -o /dev/null -w ' %{exitcode}, %{num_connects} new\n'", time, clock});
        EXPECT_EQ(curl.line(), arrived + " 92, 1 new\n") << "the error of one stream";
        EXPECT_EQ(curl.line(), " 0, 0 new\n");
    }
}

TEST(Http2, SendsLargeBodiesAndNone) {
    Client client({.http2 = true});
    client.service.fault("/time", {.padTo = 1'000'000});
    EXPECT_EQ(client.send("GET", "/v1/time?").body.size(), 1'000'000U);
    EXPECT_EQ(Curl(client.service, {"-I -o /dev/null -w '%{http_code}\n'", time}).line(), "405\n");
}

TEST(Http2, StreamsEvents) {
    std::optional<Client> client(sandbox::Options{.http2 = true});
    const Curl events(client->service, {"https://localhost/_sandbox/events"});
    client->ok("PUT", "/_sandbox/clock", {{"isStopped", true}});
    std::string line;
    do line = events.line();
    while (!line.empty() && line.find(R"("isStopped":true)") == std::string::npos);
    EXPECT_NE(line, "");
    client.reset();
}

TEST(Http2, LimitsRequests) {
    Client client({.http2 = true});
    const auto text = [](std::size_t size) { return json(std::string(size - 2, 'x')); };  // between quotation marks
    EXPECT_EQ(client.send("POST", "/v1/none", text(1 << 20)).status, 404);
    EXPECT_EQ(client.send("POST", "/v1/none", text((1 << 20) + 1)).status, 413);
    EXPECT_EQ(client.send("POST", "/v1/none", nullptr, {{"long", std::string(40'000, 'x')}}).status, 0);
}

TEST(Http2, RefusesClientsWithoutIt) {
    const sandbox::Sandbox service({.http2 = true});
    for (const auto& [offer, end] :
         std::map<std::string, const char*>{{"--http1.1", "35\n"}, {"--no-alpn", "35\n"}, {"", "0\n"}})
        EXPECT_EQ(Curl(service, {offer, "-o /dev/null -w '%{exitcode}\n'", time}).line(), end);
}

TEST(Http2, TakesLeaveOfClientsThatAreIdle) {
    const sandbox::Sandbox service({.http2 = true, .idleLimit = 1s});
    // Two requests, the second one two seconds after the first.
    const Curl curl(service,
                    {"--rate 30/m -o /dev/null -o /dev/null -w '%{http_code}, %{num_connects} new\n'", clock, clock});
    EXPECT_EQ(curl.line(), "200, 1 new\n");
    EXPECT_EQ(curl.line(), "200, 1 new\n");
}

}  // namespace
}  // namespace kavio::test
