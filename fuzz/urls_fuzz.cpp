// URLs that are made of what comes from outside: identifiers in paths, values in queries, whole URLs in replies. The
// first line is part of a path, the second a query, the third a URL, and the rest a body.

#include "fuzz.h"
#include "network/request_signature.h"
#include "network/url_request.h"
#include "sandbox/signature.h"
#include "time/reliable_clock.h"

#include <kavio/testing/device.h>

namespace kavio::fuzz {
namespace {

constexpr std::string_view base = "https://service.test/v1";

std::string unescaped(std::string_view text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            plain += text[i];
            continue;
        }
        must(i + 2 < text.size(), "an escape is whole");
        plain += static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
        i += 2;
    }
    return plain;
}

std::string makePath(std::string_view component) {
    auto url = appendingPathComponent(base, component);
    must(isUrl(url), "whatever the path, there is a URL");
    must(url.starts_with(std::string(base) + "/") && url.find_first_of("?#") == std::string::npos,
         "a path stays a path of its service");
    component.remove_prefix(std::min(component.find_first_not_of('/'), component.size()));
    must(unescaped(std::string_view(url).substr(base.size() + 1)) == component, "a path can be read again");
    return url;
}

std::string addQuery(const std::string& url, const std::string& query) {
    auto whole = settingQuery(url, query);
    const auto start = whole.find('?');
    const auto end = std::min(whole.find('#'), whole.size());
    must(start < end && unescaped(std::string_view(whole).substr(start + 1, end - start - 1)) == query,
         "a query can be read again");
    must(settingQuery(whole, query) == whole, "a query replaces the one before");
    must(whole.substr(end) == url.substr(std::min(url.find('#'), url.size())), "a fragment stays");
    return whole;
}

}  // namespace

void tryInput(Input input) {
    static const test::Device device;
    const auto path = makePath(input.line());
    const auto query = input.line();
    const auto given = input.line();
    const auto url = addQuery(path, query);
    must(isUrl(url), "whatever the query, there is a URL");
    must(addQuery(given, query).size() <= given.size() + 1 + 3 * query.size(),
         "a URL is not much longer than its parts");
    must(!isUrl(given) || isUrl(addQuery(given, query)), "a URL with a query is one");

    const auto body = input.rest();
    const auto signature = signRequest(url, body);
    must(signature.size() == 33, "a signature has 33 characters");
    must(signature == sandbox::sign(url, body, serverTimeStamp()), "the service computes the same signature");
}

}  // namespace kavio::fuzz
