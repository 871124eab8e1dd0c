#include "platform/linux/url_session_exchange.h"

#include "platform/linux/tls_profile.h"
#include "platform/linux/url_session_connection.h"
#include "platform/linux/url_session_failure.h"

#include <openssl/crypto.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <exception>
#include <filesystem>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

namespace kavio {
namespace {

constexpr std::size_t usualHeaderBytes = 400;  // of a request
constexpr std::size_t maximumHeaderBytes = 300'000;
constexpr int maximumRedirects = 10;
constexpr long longestTimeoutSeconds = 24L * 60 * 60;
// Bodies are small, and libcurl's default buffer is so large that the heap returns it and takes it again each time.
constexpr long uploadBufferBytes = 16L * 1024;
// A reply that keeps dripping just enough to count as progress must end too.
constexpr long wholeExchangeTimeouts = 10;

/// Scheme, host and port of `url`, in comparable form.
std::optional<std::string> origin(const char* url) {
    const CurlUrl parsed(curl_url());
    if (!parsed || curl_url_set(parsed.get(), CURLUPART_URL, url, 0) != CURLUE_OK) return std::nullopt;
    std::string text;
    for (const CURLUPart part : {CURLUPART_SCHEME, CURLUPART_HOST, CURLUPART_PORT}) {
        char* value = nullptr;
        if (curl_url_get(parsed.get(), part, &value, CURLU_DEFAULT_PORT) != CURLUE_OK) return std::nullopt;
        text.append(CurlText(value).get()).append(" ");
    }
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

/// Whether OpenSSL finds authorities in `folder`: by the hash of a name, as in "3513523f.0".
bool isLookUpFolder(const char* folder) {
    if (folder == nullptr) return false;
    std::error_code failure;
    const std::filesystem::directory_iterator end;
    for (std::filesystem::directory_iterator file(folder, failure); file != end; file.increment(failure)) {
        if (file->path().extension() == ".0") return true;
    }
    return false;
}

struct Authorities {
    std::string folder;
    std::string file;
};

/// Where the system keeps them, which is found out once. Reading all of them takes longer than everything else in an
/// exchange. From a folder, OpenSSL reads only the one that it needs; from a file, libcurl at least keeps what it has
/// read, if it has no folder to look into.
const Authorities& systemAuthorities() {
    static const Authorities found = [] {
        const auto* system = curl_version_info(CURLVERSION_NOW);
        if (isLookUpFolder(system->capath)) return Authorities{system->capath, ""};
        return Authorities{"", system->cainfo == nullptr ? "" : system->cainfo};
    }();
    return found;
}

int responseStatus(CURL* easy) {
    long status = 0;
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
    return static_cast<int>(status);
}

}  // namespace

/// Sets options until one fails.
class UrlExchange::Options {
public:
    explicit Options(CURL* easy) : mEasy(easy) {}

    template <class T>
    void set(CURLoption option, T value) {
        if (mResult == CURLE_OK) mResult = curl_easy_setopt(mEasy, option, value);
    }
    CURLcode result() const { return mResult; }

private:
    CURL* mEasy;
    CURLcode mResult = CURLE_OK;
};

/// What libcurl calls while the exchange is under way.
struct UrlExchange::Callbacks {
    // By itself, libcurl sends again when a reused connection dies without a reply, and when a server refuses a stream;
    // the URL may then differ from the one that was signed. These two stop that, on a new connection and on a kept one.

    static curl_socket_t openSocket(void* user, curlsocktype, curl_sockaddr* address) {
        auto& attempt = static_cast<UrlExchange*>(user)->mAttempt;
        if (attempt.sent) {
            attempt.refusedRepetition = true;
            return CURL_SOCKET_BAD;
        }
        try {
            attempt.sockets.reserve(attempt.sockets.size() + 1);
        } catch (const std::exception&) {
            return CURL_SOCKET_BAD;
        }
        return attempt.sockets.emplace_back(
            ::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol));
    }

    /// Asked on each connection before the request goes out on it.
    static int beforeSending(void* user, char*, char*, int, int localPort) {
        return static_cast<UrlExchange*>(user)->maySend(localPort) ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
    }

    /// Called for each line of every head, including interim ones, and of trailers.
    static std::size_t onHeader(char* data, std::size_t size, std::size_t count, void* user) {
        auto& self = *static_cast<UrlExchange*>(user);
        const std::string_view line(data, size * count);
        self.mHeaderBytes += line.size();
        if (line.starts_with("HTTP/")) self.mHeadIsWhole = false;
        if (line == "\r\n" || line == "\n") self.mHeadIsWhole = true;
        self.mTooLarge = self.mHeaderBytes > maximumHeaderBytes;
        return self.mTooLarge ? 0 : line.size();
    }

    static std::size_t onBody(char* data, std::size_t size, std::size_t count, void* user) {
        auto& self = *static_cast<UrlExchange*>(user);
        self.mTooLarge = size * count > UrlSession::maximumReplyBytes - self.mBody.size();
        if (self.mTooLarge) return 0;
        try {
            self.mBody.append(data, size * count);
        } catch (const std::exception&) {  // no memory: ends the exchange; must not pass through libcurl
            self.mTooLarge = true;
            return 0;
        }
        return size * count;
    }
};

UrlConduct::UrlConduct(const UrlSessionConfiguration& configuration, bool isBackground)
    : authorityFile(configuration.certificateAuthorities),
      background(isBackground),
      warmsConnection(configuration.warmsConnection && !isBackground) {
    if (authorityFile.empty()) {
        authorityFolder = systemAuthorities().folder;
        authorityFile = systemAuthorities().file;
    }
    if (!configuration.connectTo.empty() && !connectTo.append(("::" + configuration.connectTo).c_str())) {
        throw std::bad_alloc();
    }
}

UrlExchange::UrlExchange(UrlRequest request, const UrlConduct& conduct)
    : mRequest(std::move(request)), mConduct(conduct) {}

UrlExchange::~UrlExchange() { forgetBody(); }

CURLcode UrlExchange::prepare(CURL* easy) {
    formHeaderLines();
    if (!isLine(mRequest.method) || !isLine(mRequest.url) || !mHeaderLines.areWellFormed()) return CURLE_URL_MALFORMAT;
    mBody.clear();
    mHeaderBytes = 0;
    mHeadIsWhole = false;
    mAttempt = {};
    mEasy = easy;

    Options options(easy);
    setConnection(options);
    setLimits(options);
    setRequest(options);
    options.set(CURLOPT_HTTPHEADER, mHeaderLines.get());
    options.set(CURLOPT_OPENSOCKETFUNCTION, &Callbacks::openSocket);
    options.set(CURLOPT_OPENSOCKETDATA, this);
    options.set(CURLOPT_PREREQFUNCTION, &Callbacks::beforeSending);
    options.set(CURLOPT_PREREQDATA, this);
    options.set(CURLOPT_HEADERFUNCTION, &Callbacks::onHeader);
    options.set(CURLOPT_HEADERDATA, this);
    options.set(CURLOPT_WRITEFUNCTION, &Callbacks::onBody);
    options.set(CURLOPT_WRITEDATA, this);
    return options.result();
}

void UrlExchange::setConnection(Options& options) const {
    options.set(CURLOPT_NOSIGNAL, 1L);
    options.set(CURLOPT_QUICK_EXIT, 1L);  // do not wait for a name look-up that nobody needs any more
    options.set(CURLOPT_PROTOCOLS_STR, "https");
    options.set(CURLOPT_SSL_CTX_FUNCTION, &applyTlsProfile);
    options.set(CURLOPT_SSL_VERIFYPEER, 1L);
    options.set(CURLOPT_SSL_VERIFYHOST, 2L);
    const auto pathOrNone = [](const std::string& path) { return path.empty() ? nullptr : path.c_str(); };
    options.set(CURLOPT_CAINFO, pathOrNone(mConduct.authorityFile));
    options.set(CURLOPT_CAPATH, pathOrNone(mConduct.authorityFolder));
    if (mConduct.connectTo.get() != nullptr) {
        options.set(CURLOPT_CONNECT_TO, mConduct.connectTo.get());
        options.set(CURLOPT_PROXY, "");
    }
    options.set(CURLOPT_MAXAGE_CONN, static_cast<long>(longestIdle.count()));
    // A request that is sent once never takes a kept connection. However alive that looks, its end may already be
    // on its way, and then nobody could tell whether the request has arrived. Resumed TLS sessions keep new
    // connections cheap.
    options.set(CURLOPT_FRESH_CONNECT, mayTakeKeptConnection() ? 0L : 1L);
    options.set(CURLOPT_FORBID_REUSE, mConduct.background ? 1L : 0L);
    options.set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
}

void UrlExchange::setLimits(Options& options) {
    const auto timeout =
        static_cast<long>(std::clamp<std::chrono::seconds::rep>(mRequest.timeout.count(), 1, longestTimeoutSeconds));
    mAttempt.connectsBy = std::chrono::steady_clock::now() + std::chrono::seconds(timeout);
    options.set(CURLOPT_CONNECTTIMEOUT, timeout);
    options.set(CURLOPT_LOW_SPEED_LIMIT, 1L);
    options.set(CURLOPT_LOW_SPEED_TIME, timeout);
    options.set(CURLOPT_TIMEOUT, timeout * wholeExchangeTimeouts);
}

void UrlExchange::setRequest(Options& options) {
    const std::string& method = mRequest.method;
    options.set(CURLOPT_UPLOAD_BUFFERSIZE, uploadBufferBytes);
    options.set(CURLOPT_URL, mRequest.url.c_str());
    options.set(CURLOPT_PATH_AS_IS, 1L);  // a ".." in an identifier must not lead to a resource that was not signed
    options.set(CURLOPT_ACCEPT_ENCODING, "");
    if (mRequest.body || (method != "GET" && method != "HEAD" && method != "DELETE")) {
        const std::string_view body = mRequest.body ? std::string_view(*mRequest.body) : std::string_view("");
        options.set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
        options.set(CURLOPT_POSTFIELDS, body.data());  // not copied
    } else if (method == "HEAD") {
        options.set(CURLOPT_NOBODY, 1L);
    }
    options.set(CURLOPT_CUSTOMREQUEST, method.c_str());
}

void UrlExchange::formHeaderLines() {
    mHeaderLines.clear();
    // What libcurl would add by itself: a form's type, and a wait for "100 Continue", which may end in sending twice.
    mHeaderLines.reserve(mRequest.headers.size() + 2, usualHeaderBytes);
    for (const char* name : {"Content-Type:", "Expect:"}) mHeaderLines.append(name);
    for (const auto& [name, value] : mRequest.headers) {
        const bool blank = value.find_first_not_of(" \t") == std::string::npos;
        mHeaderLines.append(name, blank ? ";" : ": ", value);  // "NAME:" alone would remove the header
    }
}

bool UrlExchange::maySend(int localPort) {
    if (mAttempt.sent) {
        mAttempt.refusedRepetition = true;
        return false;
    }
    mAttempt.onKeptConnection = mayTakeKeptConnection() && isOnKeptConnection(mEasy);
    if (!mAttempt.onKeptConnection) {
        noteSocket(mEasy, mAttempt.sockets, localPort);
    } else if (!isSilent(mEasy)) {
        mAttempt.refusedStale = true;
        return false;
    }
    mAttempt.sent = mDeparture->leave();
    return mAttempt.sent;
}

bool UrlExchange::needsNewConnection(CURLcode code) {
    const bool diedUnheard =
        mAttempt.sent && mAttempt.onKeptConnection && mHeaderBytes == 0 && code != CURLE_OPERATION_TIMEDOUT;
    const bool repeats = isRepeatable() && !mRepeated && (diedUnheard || mAttempt.refusedRepetition);
    if (!mAttempt.refusedStale && !repeats) return false;
    mKeptConnectionsAreUseless = true;
    mRepeated = mRepeated || repeats;
    return true;
}

bool UrlExchange::followRedirect(CURL* easy) {
    constexpr std::array statuses{301, 302, 303, 307, 308};
    const int status = responseStatus(easy);
    if (!isRepeatable() || std::find(statuses.begin(), statuses.end(), status) == statuses.end()) return false;

    char* target = nullptr;
    curl_easy_getinfo(easy, CURLINFO_REDIRECT_URL, &target);
    if (target == nullptr || mRedirects == maximumRedirects) return false;
    const auto from = origin(mRequest.url.c_str());
    if (!from || from != origin(target)) return false;

    ++mRedirects;
    mRequest.url = target;
    if ((status == 303 && mRequest.method != "HEAD") || (status <= 302 && mRequest.method == "POST")) {
        mRequest.method = "GET";
        forgetBody();
    }
    return true;
}

UrlOutcome UrlExchange::finish(CURL* easy, CURLcode code) {
    const int status = responseStatus(easy);
    const bool isStatus = status <= 999;                             // libcurl reads "HTTP/2 2002"
    const bool hasHead = mHeadIsWhole && status >= 200 && isStatus;  // a 1xx only means that the reply is still to come
    if (code == CURLE_OK && hasHead) return takeReply(status);
    // libcurl accepts a head that breaks off.
    if (code == CURLE_OK) code = isStatus ? CURLE_PARTIAL_FILE : CURLE_WEIRD_SERVER_REPLY;
    UrlError error =
        mTooLarge ? urlError(UrlError::dataLengthExceedsMaximum) : describeFailure(easy, code, mDeparture->hasLeft());
    if (mConduct.background && hasHead) error.status = status;
    return error;
}

UrlReply UrlExchange::takeReply(int status) {
    UrlReply reply{status, std::nullopt};
    const bool bodiless = mRequest.method == "HEAD" || status == 204 || status == 304;
    if (!bodiless) reply.body = std::move(mBody);
    return reply;
}

void UrlExchange::forgetBody() {
    if (!mRequest.body) return;
    std::string& body = *mRequest.body;
    OPENSSL_cleanse(body.data(), body.size());
    mRequest.body.reset();
}

}  // namespace kavio
