#include "secrets.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace kavio::sandbox {
namespace {

constexpr std::string_view mask = "•••";

constexpr std::array secretHeaders{"x-zelto-wallet-api-key", "x-zelto-wallet-session-token", "x-zelto-sign",
                                   "authorization", "cookie"};
/// Members of JSON and items of a query or a form.
constexpr std::array secretNames{"token",     "number", "securityCode", "verificationCode",
                                 "challenge", "code",   "pushToken",    "g1"};

bool isSecret(std::string_view name) { return std::ranges::find(secretNames, name) != secretNames.end(); }
bool isSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }
bool isInName(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

/// Where the JSON string ends that begins before `at`: at its quotation mark, or at the end of a text that was cut.
std::size_t endOfString(std::string_view text, std::size_t at) {
    while (at < text.size() && text[at] != '"') at += text[at] == '\\' ? 2 : 1;
    return std::min(at, text.size());
}

/// Where the value ends that begins at `at`: a JSON string without its quotation mark, a number, an item of a query.
std::size_t endOfValue(std::string_view text, std::size_t at) {
    return std::min(text.find_first_of(" \t\r\n\"'<>&,]}", at), text.size());
}

/// The last four digits of a card's number are no secret.
std::string maskedValue(std::string_view value) {
    constexpr std::size_t shown = 4, shortestNumber = 12;
    const bool isNumber = std::ranges::all_of(value, [](char c) { return c >= '0' && c <= '9'; });
    std::string text(mask);
    if (isNumber && value.size() >= shortestNumber) text += value.substr(value.size() - shown);
    return text;
}

}  // namespace

std::string maskedHeader(std::string_view name, const std::string& value) {
    return std::ranges::find(secretHeaders, name) == secretHeaders.end() ? value : std::string(mask);
}

std::string masked(std::string_view text) {
    std::string done;
    std::size_t copied = 0;
    const auto hide = [&](std::size_t start, std::size_t end) {
        done += text.substr(copied, start - copied);
        if (start < end) done += maskedValue(text.substr(start, end - start));
        copied = end;
    };
    for (std::size_t at = 0; at < text.size();) {
        const auto start = at;
        while (at < text.size() && isInName(text[at])) ++at;
        const auto name = text.substr(start, at - start);
        const bool isQuoted = start > 0 && text[start - 1] == '"' && at < text.size() && text[at] == '"';
        if (name.empty() || !isSecret(name)) {
            at += name.empty() ? 1 : 0;
            continue;
        }
        if (!isQuoted) {
            if (at == text.size() || text[at] != '=') continue;
            hide(at + 1, endOfValue(text, at + 1));
            at = copied;
            continue;
        }
        auto value = at + 1;
        while (value < text.size() && (isSpace(text[value]) || text[value] == ':')) ++value;
        if (value == text.size() || value == at + 1 || text[value] == '{' || text[value] == '[') continue;
        if (text[value] == '"')
            hide(value + 1, endOfString(text, value + 1));
        else
            hide(value, endOfValue(text, value));
        at = copied;
    }
    return done.append(text.substr(copied));
}

}  // namespace kavio::sandbox
