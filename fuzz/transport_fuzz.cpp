// What a server sends: status lines, headers, bodies and redirects. The first byte says what is asked for; the server's
// part is one piece per connection, each up to a byte 1D.

#include "fuzz.h"
#include "platform/linux/url_session_exchange.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>

namespace kavio::fuzz {
namespace {

/// A server that no other process can reach. What it has to say does not depend on what it is asked.
class Server {
public:
    explicit Server(Input input) : mInput(input) {
        mAddress.sa_family = AF_UNIX;
        must(::bind(mSocket, &mAddress, sizeof mAddress.sa_family) == 0, "the system chooses an address");
        must(::listen(mSocket, mostConnections + 1) == 0 && ::getsockname(mSocket, &mAddress, &mLength) == 0,
             "it listens");
    }
    ~Server() {
        for (const int socket : mConnections) ::close(socket);
        ::close(mSocket);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    static constexpr int mostConnections = 12;

    static curl_socket_t open(void* user, curlsocktype, curl_sockaddr* address) {
        const auto& self = *static_cast<Server*>(user);
        address->family = AF_UNIX;
        address->addrlen = self.mLength;
        address->addr = self.mAddress;
        return ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    }
    /// Called again and again while an exchange is under way.
    static int speak(void* user, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
        auto& self = *static_cast<Server*>(user);
        const int connection = ::accept4(self.mSocket, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (connection < 0) return 0;
        self.mConnections.push_back(connection);
        const auto said = self.mInput.line("\x1D");
        self.mHeadsEnded += said.find("\n\n") != std::string::npos || said.find("\n\r\n") != std::string::npos;
        must(::send(connection, said.data(), said.size(), MSG_NOSIGNAL) == ssize_t(said.size()), "the input is short");
        ::shutdown(connection, SHUT_WR);
        return 0;
    }

    std::size_t connections() const { return mConnections.size(); }
    int headsEnded() const { return mHeadsEnded; }

private:
    Input mInput;
    const int mSocket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    sockaddr mAddress{};
    socklen_t mLength = sizeof mAddress;
    std::vector<int> mConnections;
    int mHeadsEnded = 0;
};

UrlOutcome outcomeOf(UrlExchange& exchange, Server& server) {
    for (;;) {
        const CurlEasy easy(curl_easy_init());
        CURLcode code = exchange.prepare(easy.get());
        if (code == CURLE_OK) {
            // The bytes come without TLS, from a socket of ours.
            curl_easy_setopt(easy.get(), CURLOPT_PROTOCOLS_STR, "http");
            curl_easy_setopt(easy.get(), CURLOPT_PROXY, "");
            curl_easy_setopt(easy.get(), CURLOPT_FORBID_REUSE, 1L);
            curl_easy_setopt(easy.get(), CURLOPT_OPENSOCKETFUNCTION, &Server::open);
            curl_easy_setopt(easy.get(), CURLOPT_OPENSOCKETDATA, &server);
            curl_easy_setopt(easy.get(), CURLOPT_XFERINFOFUNCTION, &Server::speak);
            curl_easy_setopt(easy.get(), CURLOPT_XFERINFODATA, &server);
            curl_easy_setopt(easy.get(), CURLOPT_NOPROGRESS, 0L);
            code = curl_easy_perform(easy.get());
        }
        if (code == CURLE_OK && exchange.followRedirect(easy.get())) continue;
        if (exchange.needsNewConnection(code)) continue;
        return exchange.finish(easy.get(), code);
    }
}

}  // namespace

void tryInput(Input input) {
    static const UrlConduct usual({}, false);
    static const UrlConduct background({}, true);
    const auto choice = input.byte();
    const std::string method = std::array{"GET", "POST", "HEAD", "DELETE"}[choice % 4];
    const bool isBackground = (choice & 4) != 0;
    const bool isRepeatable = (choice & 8) != 0;
    UrlRequest request{.method = method, .url = "http://127.0.0.1/v1/account?"};
    if (method == "POST") request.body = "{}";
    if (isRepeatable) request.idempotency = Idempotency::REPEATABLE;

    Server server(input);
    UrlExchange exchange(request, isBackground ? background : usual);
    const auto outcome = outcomeOf(exchange, server);
    must(server.connections() <= Server::mostConnections, "redirects come to an end");
    must((isRepeatable && !isBackground) || server.connections() <= 1, "a request is sent once");
    if (const auto* error = std::get_if<UrlError>(&outcome)) {
        must(!error->description.empty(), "a failure has a reason");
        return must(error->mayHaveBeenSent || !exchange.departure()->hasLeft(), "what has left may have been sent");
    }
    const auto& reply = std::get<UrlReply>(outcome);
    must(server.headsEnded() > 0, "a reply has a whole head");
    must(reply.status >= 200 && reply.status <= 999, "a reply has a status");
    must(reply.body.value_or("").size() <= UrlSession::maximumReplyBytes, "a reply has a limit");
    const bool isBodiless = reply.status == 204 || reply.status == 304;
    must(!reply.body || !(isBodiless || method == "HEAD"), "what has no body has none");
}

}  // namespace kavio::fuzz
