#include "client.h"

#include <gtest/gtest.h>

namespace kavio::test {

Client::Client(sandbox::Options options) : service(connected(std::move(options))) {}

sandbox::Options Client::connected(sandbox::Options options) {
    options.clock = [this] { return time(); };
    options.message = [this](const std::string& line) {
        const std::lock_guard lock(mMutex);
        mMessages.push_back(line);
    };
    return options;
}

std::vector<std::string> Client::messages() const {
    const std::lock_guard lock(mMutex);
    return mMessages;
}

Client::Answer Client::send(const std::string& method, const std::string& path, const json& body,
                            const httplib::Headers& headers) {
    httplib::Request request;
    request.method = method;
    request.path = path;
    request.body = body.is_null() ? "" : body.dump();
    request.headers = {{"Host", "api-qa2.kavio.example"},
                       {"Content-Type", "application/json; charset=utf-8"},
                       {"X-Zelto-Wallet-Api-Key", "demo-key"},
                       {"lang", "en"}};
    if (!token.empty()) request.set_header("X-Zelto-Wallet-Session-Token", token);
    request.set_header("X-Zelto-Sign", sandbox::sign("https://api-qa2.kavio.example" + path, request.body,
                                                     sandbox::timeStamp(time() + skew)));
    for (const auto& [name, value] : headers) {
        request.headers.erase(name);
        if (!value.empty()) request.set_header(name.c_str(), value);
    }

    httplib::SSLClient client("127.0.0.1", service.port());
    client.set_ca_cert_path(service.authorityFile().c_str());
    client.enable_server_certificate_verification(true);
    const auto reply = client.send(request);
    return reply ? Answer{reply->status, reply->body} : Answer{};
}

json Client::ok(const std::string& method, const std::string& path, const json& body) {
    const auto answer = send(method, path, body);
    EXPECT_EQ(answer.status, 200) << method << " " << path << ": " << answer.body;
    return answer.parsed();
}

void Client::login(const std::string& countryCode, const std::string& phoneNumber, const std::string& country) {
    json phone{{"countryCode", countryCode}, {"phoneNumber", phoneNumber}};
    auto asked = phone;
    asked.update({{"challenge", ""}, {"retry", "0"}});
    phone.update({{"challenge", ok("POST", "/v1/account/challenge/", asked)["challenge"]["challenge"]},
                  {"verificationCode", "123456"},
                  {"retryTimeoutSeconds", "0"},
                  {"country", country}});
    token = ok("POST", "/v1/account/verify/", phone)["token"]["token"];
}

}  // namespace kavio::test
