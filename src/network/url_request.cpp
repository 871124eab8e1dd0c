#include "network/url_request.h"

#include <utility>

namespace kavio {
namespace {

constexpr std::string_view pathCharacters = "!$&'()*+,-./:;=@_~";
constexpr std::string_view queryCharacters = "!$&'()*+,-./:;=?@_~";

bool isAsciiLetterOrDigit(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); }

void appendEscaped(std::string& escaped, std::string_view text, std::string_view allowed) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    escaped.reserve(escaped.size() + text.size());
    for (const char c : text) {
        if (isAsciiLetterOrDigit(c) || allowed.find(c) != std::string_view::npos) {
            escaped += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            escaped += {'%', digits[byte >> 4U], digits[byte & 0xFU]};
        }
    }
}

// A text as it is, anything else as JSON writes it: digits, true, false.
std::string plainDescription(const JsonValue& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}

}  // namespace

std::string appendingPathComponent(std::string_view base, std::string_view component) {
    while (base.ends_with('/')) base.remove_suffix(1);
    while (component.starts_with('/')) component.remove_prefix(1);
    std::string url;
    url.reserve(base.size() + 1 + component.size());
    url.append(base).append("/");
    appendEscaped(url, component, pathCharacters);
    return url;
}

std::string settingQuery(std::string_view url, std::string_view query) {
    const auto fragmentAt = std::min(url.find('#'), url.size());
    const auto head = url.substr(0, std::min(url.find('?'), fragmentAt));
    std::string whole(head);
    whole += '?';
    appendEscaped(whole, query, queryCharacters);
    return whole.append(url.substr(fragmentAt));
}

std::string queryText(const std::optional<Parameters>& params) {
    std::string text;
    if (!params) return text;
    for (const auto& [key, value] : *params) {
        if (!text.empty()) text += '&';
        text += key + "=" + plainDescription(value);
    }
    return text;
}

bool isUrl(std::string_view text) {
    const auto schemeEnd = text.find(':');
    if (schemeEnd == std::string_view::npos || schemeEnd == 0 || schemeEnd + 1 == text.size()) return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool inScheme = i < schemeEnd;
        if (!isAsciiLetterOrDigit(c) &&
            (inScheme ? std::string_view("+-.") : std::string_view("!#$%&'()*+,-./:;=?@[]_~")).find(c) ==
                std::string_view::npos) {
            return false;
        }
    }
    return true;
}

UrlRequest buildURLRequest(std::string url, std::optional<Parameters> params, bool inQuery) {
    UrlRequest request;
    request.timeout = REQUEST_TIMEOUT;
    if (inQuery) {
        request.url = settingQuery(url, queryText(params));
    } else {
        request.url = std::move(url);
        if (params && !params->empty()) request.body = serialise(*std::move(params));
    }
    return request;
}

}  // namespace kavio
