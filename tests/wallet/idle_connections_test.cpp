// Wallets whose connections are closed while idle: in the test suite by the service itself, with only a few operations.
// For more operations, and with nginx and nghttpx in front of the service too (Debian's nginx-light and nghttp2-proxy,
// the former not installed by scripts/install-packages, for it starts a server), run for about twenty minutes:
//   KAVIO_OPERATIONS=2000 KAVIO_IDLE_MS=2000 build/dev/bin/wallet_tests --gtest_filter='IdleConnections*'

#include "sandbox/authority.h"
#include "wallet/driven_wallet.h"

#include <kavio/testing/eventually.h>

#include <fcntl.h>
#include <fmt/format.h>
#include <netinet/in.h>
#include <poll.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <random>
#include <thread>

namespace kavio::test {
namespace {

/// `port` is 0 for any port. Returns 0 if the port is not available.
int takePort(int port, bool (*use)(int socket, const sockaddr*, socklen_t)) {
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    socklen_t length = sizeof address;
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const bool done = use(socket, reinterpret_cast<const sockaddr*>(&address), length);
    ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length);
    ::close(socket);
    return done ? ntohs(address.sin_port) : 0;
}

int freePort() {
    return takePort(
        0, [](int socket, const sockaddr* address, socklen_t length) { return ::bind(socket, address, length) == 0; });
}

bool isListening(int port) {
    return takePort(port, [](int socket, const sockaddr* address, socklen_t length) {
               return ::connect(socket, address, length) == 0;
           }) != 0;
}

/// A reverse proxy in front of a sandbox, with its own certificate.
class Proxy {
public:
    enum class Program { NGHTTPX, NGINX };
    enum class Protocol { HTTP_1, HTTP_2 };

    Proxy(Program program, Protocol protocol, const sandbox::Sandbox& behind, int idleMilliseconds) {
        std::ofstream(mFolder.path() / "identity.pem") << mAuthority.issue({"api-qa2.kavio.example"}).pem();
        std::ofstream(authorityFile()) << mAuthority.pem();
        const auto command = program == Program::NGINX ? nginx(protocol, behind, idleMilliseconds)
                                                       : nghttpx(protocol, behind, idleMilliseconds);
        mProcess.emplace([&](int) {
            return ::chdir(mFolder.path().c_str()) == 0 &&
                   ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr) == 0;
        });
        EXPECT_TRUE(eventually([&] { return isListening(mPort); })) << "is nghttpx, or nginx, missing?";
    }
    std::string address() const { return fmt::format("127.0.0.1:{}", mPort); }
    std::string authorityFile() const { return mFolder.path() / "authority.pem"; }

private:
    std::string nghttpx(Protocol protocol, const sandbox::Sandbox& behind, int idle) const {
        return fmt::format(
            "exec nghttpx --conf=/dev/null --single-process --no-ocsp --errorlog-file=log -f127.0.0.1,{} "
            "'-b127.0.0.1,{};;tls;sni=localhost' --cacert={} --npn-list={} --frontend-keep-alive-timeout={}ms "
            "--frontend-http2-read-timeout={}ms identity.pem identity.pem 2>errors",
            mPort, behind.port(), behind.authorityFile().string(), protocol == Protocol::HTTP_2 ? "h2" : "http/1.1",
            idle, idle);
    }
    std::string nginx(Protocol protocol, const sandbox::Sandbox& behind, int idle) const {
        std::ofstream(mFolder.path() / "nginx.conf") << fmt::format(
            R"(daemon off; master_process off; pid pid;
events {{}}
http {{
    access_log off;
    client_body_temp_path body; proxy_temp_path proxy; fastcgi_temp_path fastcgi; uwsgi_temp_path uwsgi; scgi_temp_path scgi;
    server {{
        listen 127.0.0.1:{} ssl {};
        ssl_certificate identity.pem; ssl_certificate_key identity.pem;
        keepalive_timeout {}ms;
        location / {{
            proxy_pass https://127.0.0.1:{};
            proxy_http_version 1.1; proxy_set_header Host $host; proxy_next_upstream off;
            proxy_ssl_verify on; proxy_ssl_name localhost; proxy_ssl_trusted_certificate {};
        }}
    }}
}}
)",
            mPort, protocol == Protocol::HTTP_2 ? "http2" : "", idle, behind.port(), behind.authorityFile().string());
        return "exec nginx -p . -c nginx.conf -e errors";
    }

    const TemporaryFolder mFolder;
    const sandbox::Authority mAuthority;
    const int mPort = freePort();
    std::optional<OtherProcess> mProcess;
};

/// A wallet that does one operation after the other, with a pause after each.
class BusyWallet {
public:
    BusyWallet(const std::string& address, const std::string& authorityFile, int number, int idleMilliseconds)
        : mWallet({"--store-dir", mFolder.path() / "store", "--connect-to", address, "--ca-file", authorityFile}),
          mNumber(15'123'456 + number),
          mRandom(static_cast<unsigned>(number)),
          mPause(0, 2 * idleMilliseconds) {}

    /// All kinds of operations in turn, in a different order each time, until there have been `count`.
    void run(int count) {
        while (mDone < count) {
            logIn();
            const auto methods = ask("getPaymentMethods").value("paymentMethods", Json::array());
            std::vector<std::function<void()>> turn{
                [&] { ask("isLoggedIn"); },
                [&] { ask("getMachines filter=null"); },
                [&] { ask("getMachineProducts machineId=2001"); },
                [&] { ask("getTransactions filter=null"); },
                [&] { order(); },
                [&] { card(); },
                [&] { deposit(methods); },
            };
            std::shuffle(turn.begin(), turn.end(), mRandom);
            for (const auto& operation : turn) operation();
            ask("logout");
        }
    }

    /// "login SUCCESS" and so on, and how often.
    const std::map<std::string, int>& results() const { return mResults; }

private:
    void logIn() {
        const auto who = fmt::format("countryCode=\"49\" phoneNumber=\"{}\"", mNumber);
        ask("login " + who);
        ask("verify otp=\"123456\" country=DE " + who);
    }
    void order() {
        const auto placed = ask(R"({"op":"placeOrder","kavioId":42100107,"amount":150,"await":2,)"
                                R"("paymentMethod":{"id":"0","number":"","type":"KAVIO"}})");
        if (placed.contains("order") && placed["order"].is_object())
            ask(fmt::format("getOrder orderId=\"{}\"", placed["order"].value("id", "")));
    }
    void card() {
        const auto added = ask(R"({"op":"addCreditCard","card":{"pan":"4111111111111111","month":"12","year":"2039",)"
                               R"("cvv":"123","email":"a@b.example"}})");
        if (added.contains("card") && added["card"].is_object())
            ask(fmt::format("removeCard id=\"{}\"", added["card"].value("id", "")));
    }
    void deposit(const Json& methods) {
        if (methods.empty()) return;
        Json request{{"op", "deposit"}, {"amount", 1}};
        for (const auto& method : methods) {
            if (method.value("type", "") == "CREDIT_CARD") request["chargedCardId"] = method["id"];
            if (method.value("class", "") == "DepositCard" && method.value("type", "") == "KAVIO")
                request["depositCard"] = method;
        }
        ask(request.dump());
    }

    /// The last event of the operation.
    Json ask(const std::string& text) {
        const auto sent = line(text);
        const auto request = Json::parse(sent);
        const auto op = request.value("op", "");
        mWallet.tell(sent);
        Json event;
        for (int left = request.value("await", 1); left > 0; --left) {
            event = mWallet.hear();
            const auto type =
                event.is_object() && event.contains("result") ? event["result"].value("type", "") : "unexpected";
            if (type != "SUCCESS") {
                ++mResults[op + ' ' + type + ' ' + event.dump()];
                break;
            }
            if (left == 1) ++mResults[op + " SUCCESS"];
        }
        ++mDone;
        ::poll(nullptr, 0, mPause(mRandom));  // the test is about how long connections are idle
        return event;
    }
    const TemporaryFolder mFolder;
    const DrivenWallet mWallet;
    const int mNumber;
    std::mt19937 mRandom;
    std::uniform_int_distribution<int> mPause;
    int mDone = 0;
    std::map<std::string, int> mResults;
};

struct Way {
    const char* name;
    std::optional<std::pair<Proxy::Program, Proxy::Protocol>> proxy;
};

std::vector<Way> ways() {
    using enum Proxy::Program;
    using enum Proxy::Protocol;
    std::vector<Way> all{{"direct", std::nullopt}};
    if (std::getenv("KAVIO_OPERATIONS") == nullptr) return all;
    all.insert(all.end(), {{"nginx, HTTP/1.1", {{NGINX, HTTP_1}}},
                           {"nginx, HTTP/2", {{NGINX, HTTP_2}}},
                           {"nghttpx, HTTP/1.1", {{NGHTTPX, HTTP_1}}},
                           {"nghttpx, HTTP/2", {{NGHTTPX, HTTP_2}}}});
    return all;
}

void expectAll(const Way& way, std::map<std::string, int> results, const sandbox::Sandbox& sandbox) {
    for (const auto& [result, count] : results) {
        fmt::print("{}: {:5} {}\n", way.name, count, result);
        // nghttpx drops the "?" of an empty query, but the "?" is signed: such a request arrives and is refused.
        const bool isOfProxy = way.proxy && way.proxy->first == Proxy::Program::NGHTTPX &&
                               result.find("SIGNATURE_REFUSED") != std::string::npos;
        EXPECT_TRUE(isOfProxy || result.ends_with(" SUCCESS")) << result;
    }
    std::map<std::string, int> sentOnce;
    for (const auto& request : sandbox.requests()) {
        if (request.method == "DELETE") ++sentOnce["removeCard SUCCESS"];
        if (request.target.find("/deposits/") != std::string::npos) ++sentOnce["deposit SUCCESS"];
    }
    sentOnce["placeOrder SUCCESS"] = static_cast<int>(sandbox.state()["purchases"].size());
    for (const auto& [result, count] : sentOnce) EXPECT_EQ(count, results[result]) << result;
}

TEST(IdleConnections, LoseNothingWhenTheyAreClosed) {
    const int operations = fromEnvironment("KAVIO_OPERATIONS", 50);
    const int wallets = std::clamp(operations / 25, 4, 20);
    const int idle = fromEnvironment("KAVIO_IDLE_MS", 100);
    for (const auto& way : ways()) {
        SCOPED_TRACE(way.name);
        const auto seconds = std::chrono::ceil<std::chrono::seconds>(std::chrono::milliseconds(idle));
        const sandbox::Sandbox sandbox{{.orderStep = std::chrono::milliseconds{100}, .idleLimit = seconds}};
        std::optional<Proxy> proxy;
        if (way.proxy) proxy.emplace(way.proxy->first, way.proxy->second, sandbox, idle);

        std::vector<std::unique_ptr<BusyWallet>> driven;
        std::vector<std::thread> threads;
        for (int i = 0; i < wallets; ++i) {
            driven.push_back(
                std::make_unique<BusyWallet>(proxy ? proxy->address() : sandbox.address(),
                                             proxy ? proxy->authorityFile() : sandbox.authorityFile().string(), i,
                                             proxy ? idle : int(seconds.count()) * 1000));
        }
        for (const auto& wallet : driven)
            threads.emplace_back([&] { wallet->run(proxy ? operations / wallets : operations / wallets / 2); });
        for (auto& thread : threads) thread.join();

        std::map<std::string, int> results;
        for (const auto& wallet : driven) {
            for (const auto& [result, count] : wallet->results()) results[result] += count;
        }
        expectAll(way, std::move(results), sandbox);
    }
}

}  // namespace
}  // namespace kavio::test
