#include "platform/linux/url_session_connection.h"

#include <netinet/in.h>
#include <openssl/ssl.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <string_view>

namespace kavio {
namespace {

/// The TLS object of the connection that `easy` is using.
SSL* tlsOf(CURL* easy) {
    curl_tlssessioninfo* session = nullptr;
    curl_easy_getinfo(easy, CURLINFO_TLS_SSL_PTR, &session);
    return session == nullptr ? nullptr : static_cast<SSL*>(session->internals);
}

/// The index under which a TLS object carries its socket: libcurl does not tell the socket of a reused connection.
int socketIndex() {
    static const int index = SSL_get_ex_new_index(0, nullptr, nullptr, nullptr, nullptr);
    return index;
}

void* tagged(curl_socket_t socket) {
    // Null means no socket. NOLINTNEXTLINE(performance-no-int-to-ptr): OpenSSL keeps nothing but a pointer.
    return reinterpret_cast<void*>(static_cast<std::intptr_t>(socket) + 1);
}

curl_socket_t untagged(const void* tag) { return static_cast<curl_socket_t>(reinterpret_cast<std::intptr_t>(tag) - 1); }

int portOf(curl_socket_t socket) {
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    if (::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length) != 0) return -1;
    const auto port = address.ss_family == AF_INET6 ? reinterpret_cast<const sockaddr_in6&>(address).sin6_port
                                                    : reinterpret_cast<const sockaddr_in&>(address).sin_port;
    return ntohs(port);
}

bool isHttp2(const SSL* tls) {
    const unsigned char* name = nullptr;
    unsigned int length = 0;
    SSL_get0_alpn_selected(tls, &name, &length);
    return std::string_view(reinterpret_cast<const char*>(name), length) == "h2";
}

bool nothingToReceive(curl_socket_t socket) {
    char byte = 0;
    return ::recv(socket, &byte, 1, MSG_PEEK | MSG_DONTWAIT) < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
}

}  // namespace

bool isOnKeptConnection(CURL* easy) {
    long made = 0;
    curl_easy_getinfo(easy, CURLINFO_NUM_CONNECTS, &made);
    return made == 0;
}

bool isSilent(CURL* easy) {
    const SSL* tls = tlsOf(easy);
    if (tls == nullptr) return false;
    if (isHttp2(tls)) return true;
    // Both what OpenSSL has read from the socket, in whole or part records, and what it has not.
    return SSL_has_pending(tls) == 0 && nothingToReceive(untagged(SSL_get_ex_data(tls, socketIndex())));
}

void noteSocket(CURL* easy, const std::vector<curl_socket_t>& opened, int localPort) {
    const auto own =
        std::find_if(opened.begin(), opened.end(), [&](curl_socket_t socket) { return portOf(socket) == localPort; });
    SSL* const tls = tlsOf(easy);
    if (tls != nullptr && own != opened.end()) SSL_set_ex_data(tls, socketIndex(), tagged(*own));
}

}  // namespace kavio
