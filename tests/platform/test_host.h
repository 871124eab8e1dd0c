#pragma once

#include "support/certificates.h"
#include "support/raw_server.h"
#include "support/temporary_folder.h"

#include <kavio/platform/linux.h>
#include <kavio/platform/url_session.h>

#include <chrono>
#include <fstream>
#include <future>
#include <memory>
#include <string>
#include <utility>
#include <variant>

namespace kavio::test {

using Outcome = std::variant<UrlReply, UrlError>;

inline const std::string host = "https://service.test";

/// One authority and a server's identity for `host`, made once, and what makes a session trust and reach that.
struct TestHost {
    TestHost() { std::ofstream(folder.path() / "authority.pem") << authority.certificate(); }
    UrlSessionConfiguration reaching(const std::string& address) const {
        return {folder.path() / "authority.pem", address};
    }

    TemporaryFolder folder;
    CertificateAuthority authority;
    Identity identity = authority.issue("service.test");
};

inline UrlRequest get(const std::string& url) {
    return {.url = url,
            .headers = {},
            .body = {},
            .timeout = std::chrono::seconds(20),
            .idempotency = Idempotency::REPEATABLE};
}

inline UrlRequest post(const std::string& url, std::string body) {
    return {"POST", url, {}, std::move(body), std::chrono::seconds(20), Idempotency::ONCE};
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

inline int errorCode(const Outcome& outcome) {
    const auto* error = std::get_if<UrlError>(&outcome);
    return error == nullptr ? 0 : error->code;
}

/// The one of this program.
inline const TestHost& service() {
    static const TestHost made;
    return made;
}

}  // namespace kavio::test
