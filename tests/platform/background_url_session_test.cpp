#include "platform/linux/url_session.h"
#include "platform/test_host.h"
#include "support/eventually.h"

#include <kavio/platform/url_session.h>

#include <gtest/gtest.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <iterator>
#include <sstream>

namespace kavio::test {

namespace {

using Download = std::variant<DownloadReply, UrlError>;

/// "STATUS BODY", or "-1005 with STATUS".
std::string download(const Download& outcome) {
    std::ostringstream text;
    if (const auto* error = std::get_if<UrlError>(&outcome)) {
        text << error->code << " with " << error->status.value_or(0);
    } else {
        const auto& reply = std::get<DownloadReply>(outcome);
        text << reply.status << " " << std::ifstream(reply.file).rdbuf();
    }
    return text.str();
}

std::future<std::string> begin(BackgroundUrlSession& session, UrlRequest request) {
    auto promise = std::make_shared<std::promise<std::string>>();
    session.downloadTask(std::move(request),
                         [promise](const Download& outcome) { promise->set_value(download(outcome)); });
    return promise->get_future();
}

TEST(BackgroundUrlSession, GivesTheReplyOrWhatIsKnownOfIt) {
    using Connection = RawServer::Connection;
    struct Case {
        const char* expected;
        std::function<void(Connection&)> afterRequest;
    };
    const std::vector<Case> cases{
        {"200 placed", [](Connection& connection) { connection.send(httpReply(200, "placed")); }},
        {"204 ", [](Connection& connection) { connection.send(httpReply(204, "")); }},
        {"302 ", [](Connection& connection) { connection.send(httpReply(302, "", "Location: /to\r\n")); }},
        {"488 no", [](Connection& connection) { connection.send(httpReply(488, "no")); }},
        {"-1005 with 0", [](Connection&) {}},
        {"-1005 with 0", [](Connection& connection) { connection.send("HTTP/1.1 100 Continue\r\n\r\n"); }},
        {"-1005 with 200", [](Connection& connection) { connection.send(httpReply(200, "placed").substr(0, 44)); }},
        {"-1001 with 401",
         [](Connection& connection) { connection.send(httpReply(401, "placed").substr(0, 44)), connection.stall(); }},
    };
    const RawServer server(service().identity, [&](Connection& connection) {
        if (!connection.handshake()) return;
        const std::string request = connection.readRequest();
        if (!request.empty()) cases[std::stoul(request.substr(request.find('/') + 1))].afterRequest(connection);
    });
    const auto session = makeBackgroundUrlSession(service().reaching(server.address()));
    std::vector<std::future<std::string>> outcomes;
    for (std::size_t i = 0; i < cases.size(); ++i) {
        auto request = post(host + "/" + std::to_string(i), "order");
        request.timeout = std::chrono::seconds(1);
        request.idempotency = i % 2 == 0 ? Idempotency::ONCE : Idempotency::REPEATABLE;  // all the same to this session
        outcomes.push_back(begin(*session, request));
    }
    for (std::size_t i = 0; i < cases.size(); ++i) EXPECT_EQ(outcomes[i].get(), cases[i].expected) << i;
    EXPECT_EQ(server.requests().size(), cases.size()) << "each is sent once";
    EXPECT_EQ(server.received().size(), cases.size()) << "each has a connection of its own";
}

TEST(BackgroundUrlSession, StoresTheReplyForTheCompletionOnly) {
    const RawServer server(service().identity, answering([](const auto&) { return httpReply(200, "placed"); }));
    const auto session = makeBackgroundUrlSession(service().reaching(server.address()));
    std::vector<std::string> events;
    std::filesystem::path file;
    std::promise<void> delivered;
    session->onEventsDelivered([&] {
        events.push_back(std::filesystem::exists(file.parent_path()) ? "delivered, file left" : "delivered");
        delivered.set_value();
    });
    const auto note = [&](const Download& outcome) {
        file = std::get<DownloadReply>(outcome).file;
        struct stat folder {};
        struct stat stored {};
        ::stat(file.parent_path().c_str(), &folder);
        ::stat(file.c_str(), &stored);
        std::ostringstream modes;
        modes << std::oct << (folder.st_mode & 0777U) << " " << (stored.st_mode & 0777U);
        events.push_back(modes.str());
    };
    session->downloadTask(post(host, "order"), [&](const Download& outcome) {
        note(outcome);
        session->downloadTask(post(host, "order"), note);
    });
    delivered.get_future().wait();
    EXPECT_EQ(events, (std::vector<std::string>{"700 600", "700 600", "delivered"}));
}

TEST(BackgroundUrlSession, KeepsTheStatusOfAReplyThatItCannotStore) {
    const RawServer server(service().identity, answering([](const auto&) { return httpReply(200, "placed"); }));
    ::setenv("TMPDIR", "/dev/null", 1);
    EXPECT_EQ(begin(*makeBackgroundUrlSession(service().reaching(server.address())), post(host, "order")).get(),
              "-1011 with 200");
    ::unsetenv("TMPDIR");
}

TEST(BackgroundUrlSession, ReportsARefusedConnectionAtOnce) {
    const std::string abandoned = RawServer(service().identity, [](RawServer::Connection&) {}).address();
    EXPECT_EQ(begin(*makeBackgroundUrlSession(service().reaching(abandoned)), post(host, "order")).get(),
              "-1004 with 0");
}

void openLoopback() {
    const int socket = ::socket(AF_INET, SOCK_DGRAM, 0);
    ifreq interface {
        "lo", {}
    };
    ::ioctl(socket, SIOCGIFFLAGS, &interface);
    interface.ifr_flags |= IFF_UP;
    ::ioctl(socket, SIOCSIFFLAGS, &interface);
    ::close(socket);
}

/// Runs `test` where there is no network but what it makes itself. False where that is not permitted.
bool inFreshNetwork(const std::function<void()>& test) {
    bool permitted = false;
    std::thread([&] {
        permitted = ::unshare(CLONE_NEWNET) == 0;
        if (permitted) test();
    }).join();
    return permitted;
}

TEST(BackgroundUrlSession, WaitsForTheNetwork) {
    const bool permitted = inFreshNetwork([] {
        const RawServer server(service().identity, answering([](const auto&) { return httpReply(200, "placed"); }));
        const auto session = makeBackgroundUrlSession(service().reaching(server.address()));
        auto order = begin(*session, post(host, "order"));
        auto lost = begin(*makeBackgroundUrlSession(service().reaching(server.address())), post(host, "given up"));
        EXPECT_EQ(lost.get(), "-999 with 0") << "waits until the session goes";
        EXPECT_EQ(errorCode(fetch(*makeUrlSession(service().reaching(server.address())), get(host))), -1009);
        EXPECT_EQ(errorCode(fetch(*makeUrlSession(service().reaching("")), get(host))), -1009) << "name look-up";
        openLoopback();
        EXPECT_EQ(order.get(), "200 placed");
        EXPECT_EQ(server.requests().size(), 1u);
    });
    if (!permitted) GTEST_SKIP() << "a fresh network needs privileges";
}

}  // namespace
}  // namespace kavio::test
