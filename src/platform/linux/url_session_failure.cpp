#include "platform/linux/url_session_failure.h"

#include "platform/linux/tls_profile.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <openssl/x509_vfy.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <new>
#include <string>
#include <system_error>

namespace kavio {
namespace {

struct Sentence {
    UrlError::Code code;
    const char* text;
};
constexpr Sentence sentences[] = {
    {UrlError::cancelled, "The request was cancelled."},
    {UrlError::badUrl, "The request cannot be sent as it is."},
    {UrlError::timedOut, "The request timed out."},
    {UrlError::cannotFindHost, "The host was not found."},
    {UrlError::cannotConnectToHost, "Could not connect to the host."},
    {UrlError::networkConnectionLost, "The connection was lost."},
    {UrlError::notConnectedToInternet, "There is no connection to the network."},
    {UrlError::badServerResponse, "The reply is malformed."},
    {UrlError::dataLengthExceedsMaximum, "The reply is too large."},
    {UrlError::secureConnectionFailed, "No secure connection could be made."},
    {UrlError::serverCertificateUntrusted, "The host's certificate is not trusted."},
};

bool hasRouteTo(int family, const void* address, socklen_t length) {
    // Connecting a datagram socket looks up the route and sends nothing.
    const int socket = ::socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (socket < 0) return false;
    const bool found = ::connect(socket, static_cast<const sockaddr*>(address), length) == 0;
    ::close(socket);
    return found;
}

/// Whether packets to the outside world would go anywhere. The addresses are those reserved for documentation.
bool hasRoute() {
    sockaddr_in v4{};
    v4.sin_family = AF_INET;
    v4.sin_port = htons(443);
    ::inet_pton(AF_INET, "198.51.100.1", &v4.sin_addr);
    sockaddr_in6 v6{};
    v6.sin6_family = AF_INET6;
    v6.sin6_port = htons(443);
    ::inet_pton(AF_INET6, "2001:db8::1", &v6.sin6_addr);
    return hasRouteTo(AF_INET, &v4, sizeof v4) || hasRouteTo(AF_INET6, &v6, sizeof v6);
}

int connectErrno(CURL* easy) {
    long number = 0;
    curl_easy_getinfo(easy, CURLINFO_OS_ERRNO, &number);
    return static_cast<int>(number);
}

UrlError::Code classifyConnect(int number) {
    switch (number) {
        // Also happens when a host is down, and for the last address tried when another one has refused us: only a
        // device without any route has no network.
        case EHOSTUNREACH:
        case ENETUNREACH:
        case ENETDOWN:
            return hasRoute() ? UrlError::cannotConnectToHost : UrlError::notConnectedToInternet;
        default:
            return UrlError::cannotConnectToHost;
    }
}

UrlError::Code classify(CURL* easy, CURLcode code, bool sent) {
    switch (code) {
        case CURLE_OPERATION_TIMEDOUT:
            return UrlError::timedOut;
        case CURLE_WEIRD_SERVER_REPLY:
        case CURLE_BAD_CONTENT_ENCODING:
            return UrlError::badServerResponse;
        case CURLE_UNSUPPORTED_PROTOCOL:   // also: a reply without a status line
        case CURLE_BAD_FUNCTION_ARGUMENT:  // also: a head whose first header goes on from none
            return sent ? UrlError::badServerResponse : UrlError::badUrl;
        case CURLE_OUT_OF_MEMORY:  // also: a header line over libcurl's limit
            return sent ? UrlError::dataLengthExceedsMaximum : UrlError::cannotConnectToHost;
        default:
            break;
    }
    // A second connection that failed says less than the first, which was lost with the request.
    if (sent) return UrlError::networkConnectionLost;
    switch (code) {
        case CURLE_URL_MALFORMAT:
            return UrlError::badUrl;
        case CURLE_COULDNT_RESOLVE_PROXY:
        case CURLE_COULDNT_RESOLVE_HOST:
            return hasRoute() ? UrlError::cannotFindHost : UrlError::notConnectedToInternet;
        case CURLE_COULDNT_CONNECT:
            return classifyConnect(connectErrno(easy));
        case CURLE_PEER_FAILED_VERIFICATION:
            return UrlError::serverCertificateUntrusted;
        case CURLE_SSL_CONNECT_ERROR:
        case CURLE_SSL_CERTPROBLEM:
        case CURLE_SSL_CIPHER:
        case CURLE_SSL_CACERT_BADFILE:
        case CURLE_USE_SSL_FAILED:
            return UrlError::secureConnectionFailed;
        default:
            return UrlError::cannotConnectToHost;
    }
}

std::string certificateVerdict(CURL* easy) {
    long verdict = X509_V_OK;
    curl_easy_getinfo(easy, CURLINFO_SSL_VERIFYRESULT, &verdict);
    return certificateFault(verdict);
}

/// Empty if the sentence for the error says it all. Never libcurl's own message, which may quote the request.
std::string reason(CURL* easy, CURLcode code, bool sent) {
    switch (code) {
        case CURLE_OPERATION_TIMEDOUT:
        case CURLE_OUT_OF_MEMORY:
        case CURLE_ABORTED_BY_CALLBACK:
        case CURLE_BAD_FUNCTION_ARGUMENT:
            return "";
        case CURLE_COULDNT_CONNECT:
            return sent ? "" : std::generic_category().message(connectErrno(easy));
        case CURLE_PEER_FAILED_VERIFICATION:
            return sent ? "" : certificateVerdict(easy);
        default:
            return curl_easy_strerror(code);
    }
}

}  // namespace

UrlError urlError(UrlError::Code code) noexcept {
    const auto known = std::ranges::find(sentences, code, &Sentence::code);
    UrlError error{code, {}, {}};
    try {
        if (known != std::end(sentences)) error.description = known->text;
    } catch (const std::bad_alloc&) {  // NOLINT(bugprone-empty-catch)
    }
    return error;
}

UrlError describeFailure(CURL* easy, CURLcode code, bool sent) {
    UrlError error = urlError(classify(easy, code, sent));
    const std::string detail = reason(easy, code, sent);
    if (detail.empty() || error.description.empty()) return error;  // there was no memory for the sentence
    error.description.pop_back();
    error.description.append(": ").append(detail).append(".");
    return error;
}

}  // namespace kavio
