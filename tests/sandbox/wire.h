#pragma once

#include "sandbox/sandbox.h"

#include <curl/curl.h>
#include <fmt/format.h>
#include <httplib.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace kavio::test {

struct Answer {
    int status = 0;  // 0: no whole reply
    std::string body;
    CURLcode result = CURLE_OK;
    long version = 0;  // of HTTP
    long connects = 0;

    nlohmann::json parsed() const { return nlohmann::json::parse(body, nullptr, false); }
    std::string message() const { return parsed().value("message", ""); }
};

/// A request, and a text that is enough of the reply's body.
struct Ask {
    httplib::Request request;
    std::string until = "";
};

inline Ask ask(const std::string& method, const std::string& path, const nlohmann::json& body = nullptr) {
    Ask made;
    made.request.method = method;
    made.request.path = path;
    if (!body.is_null()) made.request.body = body.dump();
    return made;
}

/// Sends requests to a sandbox with libcurl: those that are sent together side by side, over HTTP/2 on one connection.
class Wire {
public:
    Wire(const sandbox::Sandbox& service, long version)
        : mOrigin("https://" + service.address()), mAuthority(service.authorityFile()), mVersion(version) {
        curl_multi_setopt(mMulti.get(), CURLMOPT_MAX_HOST_CONNECTIONS, 1L);
    }

    /// `done` hears of each answer by its place.
    std::vector<Answer> send(
        const std::vector<Ask>& asks, const std::function<void(std::size_t)>& done = [](std::size_t) {}) {
        std::vector<std::unique_ptr<Transfer>> transfers;
        transfers.reserve(asks.size());
        for (const auto& each : asks) transfers.push_back(begin(each));
        for (int running = 1; running > 0;) {
            if (curl_multi_perform(mMulti.get(), &running) != CURLM_OK) throw std::runtime_error("libcurl fails");
            int left = 0;
            while (const auto* message = curl_multi_info_read(mMulti.get(), &left)) {
                const auto of = [&](const auto& each) { return each->easy.get() == message->easy_handle; };
                const auto ended = std::find_if(transfers.begin(), transfers.end(), of);
                end(**ended, message->data.result);
                done(std::size_t(ended - transfers.begin()));
            }
            if (running > 0) curl_multi_poll(mMulti.get(), nullptr, 0, 100, nullptr);
        }
        std::vector<Answer> answers;
        answers.reserve(asks.size());
        for (auto& transfer : transfers) answers.push_back(std::move(transfer->answer));
        return answers;
    }

private:
    using Easy = std::unique_ptr<CURL, decltype(&curl_easy_cleanup)>;
    using Multi = std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)>;
    using Lines = std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)>;
    struct Transfer {
        Ask ask;
        Answer answer{};
        Lines lines{nullptr, curl_slist_free_all};
        Easy easy{curl_easy_init(), curl_easy_cleanup};
        bool isEnough() const { return !ask.until.empty() && answer.body.find(ask.until) != std::string::npos; }
    };

    std::unique_ptr<Transfer> begin(const Ask& ask) {
        auto transfer = std::make_unique<Transfer>(Transfer{ask});
        const auto& request = transfer->ask.request;
        auto* const easy = transfer->easy.get();
        const auto addLine = [&](const std::string& line) {
            transfer->lines.reset(curl_slist_append(transfer->lines.release(), line.c_str()));
        };
        addLine("Expect:");
        if (!request.has_header("Content-Type")) addLine("Content-Type:");
        for (const auto& [name, value] : request.headers) addLine(fmt::format("{}: {}", name, value));
        curl_easy_setopt(easy, CURLOPT_URL, (mOrigin + request.path).c_str());
        curl_easy_setopt(easy, CURLOPT_PATH_AS_IS, 1L);
        curl_easy_setopt(easy, CURLOPT_CAINFO, mAuthority.c_str());
        curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, mVersion);
        curl_easy_setopt(easy, CURLOPT_PIPEWAIT, 1L);
        curl_easy_setopt(easy, CURLOPT_HTTPHEADER, transfer->lines.get());
        if (request.method == "HEAD") {
            curl_easy_setopt(easy, CURLOPT_NOBODY, 1L);
        } else if (request.method != "GET" || !request.body.empty()) {
            curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE, long(request.body.size()));
            curl_easy_setopt(easy, CURLOPT_POSTFIELDS, request.body.data());
        }
        curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, request.method.c_str());
        curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &Wire::take);
        curl_easy_setopt(easy, CURLOPT_WRITEDATA, transfer.get());
        curl_multi_add_handle(mMulti.get(), easy);
        return transfer;
    }

    static std::size_t take(const char* data, std::size_t size, std::size_t count, void* to) {
        auto& transfer = *static_cast<Transfer*>(to);
        transfer.answer.body.append(data, size * count);
        return transfer.isEnough() ? 0 : size * count;
    }

    void end(Transfer& transfer, CURLcode result) {
        auto* const easy = transfer.easy.get();
        auto& answer = transfer.answer;
        answer.result = result;
        long status = 0;
        curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
        curl_easy_getinfo(easy, CURLINFO_HTTP_VERSION, &answer.version);
        curl_easy_getinfo(easy, CURLINFO_NUM_CONNECTS, &answer.connects);
        if (result == CURLE_OK || transfer.isEnough()) answer.status = int(status);
        curl_multi_remove_handle(mMulti.get(), easy);
    }

    const std::string mOrigin;
    const std::string mAuthority;
    const long mVersion;
    const Multi mMulti{curl_multi_init(), curl_multi_cleanup};
};

}  // namespace kavio::test
