#pragma once

#include <kavio/platform/linux.h>
#include <kavio/platform/url_session.h>
#include <kavio/testing/eventually.h>
#include <kavio/testing/raw_server.h>
#include <kavio/testing/temporary_folder.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace kavio::test {

using Outcome = std::variant<UrlReply, UrlError>;
using Connection = RawServer::Connection;

inline const std::string host = "https://service.test";

/// An authority and a server's identity for `host`, made once, with the settings that let a session trust and reach it.
struct TestHost {
    TestHost() { std::ofstream(folder.path() / "authority.pem") << authority.pem(); }
    UrlSessionConfiguration reaching(const std::string& address) const {
        return {folder.path() / "authority.pem", address};
    }

    TemporaryFolder folder;
    Authority authority;
    Identity identity = authority.issue({"service.test"});
};

/// This program's only one.
inline const TestHost& service() {
    static const TestHost made;
    return made;
}

/// A server that can prove that it is `host`.
struct HostServer : RawServer {
    explicit HostServer(Script script, std::string protocol = "http/1.1")
        : RawServer(service().identity, std::move(script), std::move(protocol)) {}
};

/// An address on this machine where nobody listens. The port is bound, so that nobody else is given it.
inline std::string abandonedAddress() {
    static const LoopbackSocket held;
    return held.address();
}

/// What a server does after a request, before it closes the connection.
using Ending = std::function<void(Connection&)>;

inline Ending sending(std::string bytes) {
    return [bytes = std::move(bytes)](Connection& connection) { connection.send(bytes); };
}

inline Ending stallingAfter(std::string bytes) {
    return [bytes = std::move(bytes)](Connection& connection) { connection.send(bytes), connection.stall(); };
}

/// Ends a connection whose request is for "/N" as the `N`th of `cases` does.
template <class Case>
RawServer::Script endingAs(const std::vector<Case>& cases) {
    return meeting([&](Connection& connection, const std::string& request) {
        cases.at(std::stoul(request.substr(request.find('/') + 1))).ending(connection);
        return false;
    });
}

inline UrlRequest get(std::string url, Idempotency idempotency = Idempotency::REPEATABLE) {
    return {"GET", std::move(url), {}, {}, patience, idempotency};
}

inline UrlRequest post(std::string url, std::string body, Idempotency idempotency = Idempotency::ONCE) {
    return {"POST", std::move(url), {}, std::move(body), patience, idempotency};
}

inline std::future<Outcome> begin(UrlSession& session, UrlRequest request) {
    auto promise = std::make_shared<std::promise<Outcome>>();
    session.dataTask(std::move(request), [promise](Outcome outcome) { promise->set_value(std::move(outcome)); });
    return promise->get_future();
}

inline Outcome fetch(UrlSession& session, UrlRequest request) { return begin(session, std::move(request)).get(); }

/// "200 BODY", or "-1001 REASON".
inline std::string text(const Outcome& outcome) {
    if (const auto* error = std::get_if<UrlError>(&outcome))
        return std::to_string(error->code) + " " + error->description;
    const auto& reply = std::get<UrlReply>(outcome);
    return std::to_string(reply.status) + " " + reply.body.value_or("(no body)");
}

/// A reply counts as sent.
inline bool mayHaveBeenSent(const Outcome& outcome) {
    const auto* error = std::get_if<UrlError>(&outcome);
    return error == nullptr || error->mayHaveBeenSent;
}

inline int errorCode(const Outcome& outcome) {
    const auto* error = std::get_if<UrlError>(&outcome);
    return error == nullptr ? 0 : error->code;
}

}  // namespace kavio::test
