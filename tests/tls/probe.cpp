// Asks servers for a page, as the library does or as bare libcurl does by default, and prints how each request ended:
// "200", or an error's number and text, with "sent" between them if the request may have reached the server. Started as
// `tls_probe library` or `tls_probe libcurl`; each line of its input is "URL AUTHORITIES HOST:PORT".

#include <kavio/platform/linux.h>
#include <kavio/platform/url_session.h>

#include <curl/curl.h>

#include <chrono>
#include <future>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <variant>

namespace {

constexpr long patience = 20;  // seconds; no set-up waits for that long

struct Question {
    std::string url;
    std::string authorities;
    std::string address;
};

std::istream& operator>>(std::istream& in, Question& question) {
    return in >> question.url >> question.authorities >> question.address;
}

std::string ask(kavio::UrlSession& session, const std::string& url) {
    kavio::UrlRequest request;
    request.url = url;
    request.timeout = std::chrono::seconds(patience);
    std::promise<std::variant<kavio::UrlReply, kavio::UrlError>> promise;
    session.dataTask(std::move(request), [&promise](auto outcome) { promise.set_value(std::move(outcome)); });
    const auto outcome = promise.get_future().get();
    if (const auto* reply = std::get_if<kavio::UrlReply>(&outcome)) return std::to_string(reply->status);
    const auto& error = std::get<kavio::UrlError>(outcome);
    return std::to_string(error.code) + (error.mayHaveBeenSent ? " sent " : " ") + error.description;
}

/// Asks twice, on two connections. The second one may take up the TLS session of the first, and must fare no better
/// and no worse.
std::string askAsLibrary(const Question& question) {
    kavio::LinuxPlatformOptions options;
    options.session = {question.authorities, question.address};
    const auto session = kavio::makeLinuxPlatform(std::move(options)).urlSession;
    const std::string first = ask(*session, question.url);
    const std::string second = ask(*session, question.url);
    return first == second ? first : first + " Then: " + second;
}

std::size_t ignore(char*, std::size_t size, std::size_t count, void*) { return size * count; }

std::string askAsLibcurl(const Question& question) {
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> easy(curl_easy_init(), &curl_easy_cleanup);
    const std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> address(
        curl_slist_append(nullptr, ("::" + question.address).c_str()), &curl_slist_free_all);
    curl_easy_setopt(easy.get(), CURLOPT_URL, question.url.c_str());
    curl_easy_setopt(easy.get(), CURLOPT_CAINFO, question.authorities.c_str());
    curl_easy_setopt(easy.get(), CURLOPT_CONNECT_TO, address.get());
    curl_easy_setopt(easy.get(), CURLOPT_PROXY, "");
    curl_easy_setopt(easy.get(), CURLOPT_TIMEOUT, patience);
    curl_easy_setopt(easy.get(), CURLOPT_WRITEFUNCTION, &ignore);
    const CURLcode code = curl_easy_perform(easy.get());
    if (code != CURLE_OK) return std::to_string(code) + " " + curl_easy_strerror(code);
    long status = 0;
    curl_easy_getinfo(easy.get(), CURLINFO_RESPONSE_CODE, &status);
    return std::to_string(status);
}

}  // namespace

int main(int count, char** arguments) {
    const std::string client = count == 2 ? arguments[1] : "";
    if (client != "library" && client != "libcurl") return 2;
    const auto answer = client == "library" ? &askAsLibrary : &askAsLibcurl;
    for (Question question; std::cin >> question;) std::cout << answer(question) << std::endl;
}
