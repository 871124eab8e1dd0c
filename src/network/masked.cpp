#include "network/masked.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace kavio {
namespace {

constexpr std::size_t longestBody = std::size_t{64} * 1024;
constexpr std::size_t longestMasked = 2000;

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isOneOf(char c, std::string_view characters) { return characters.find(c) != std::string_view::npos; }

template <class Allowed>
bool consistsOf(std::string_view text, std::size_t longest, const Allowed& isAllowed) {
    return !text.empty() && text.size() <= longest && std::all_of(text.begin(), text.end(), isAllowed);
}

// What a value that may be shown must look like, so that a service cannot bring a secret into it.

bool isName(std::string_view text) {
    return consistsOf(text, 30, [](char c) { return isLetter(c) || isOneOf(c, "_-"); });
}
/// No card number, and no time in milliseconds.
bool isSmallNumber(std::string_view text) {
    return consistsOf(text, 11, [](char c) { return isDigit(c) || isOneOf(c, "-."); });
}
bool isPlain(std::string_view text) { return isName(text) || isSmallNumber(text); }
/// A number of seconds or milliseconds, or a date.
bool isTime(std::string_view text) {
    return consistsOf(text, 14, [](char c) { return isDigit(c) || c == '.'; }) ||
           (text.find('T') == 10 && consistsOf(text, 28, [](char c) { return isDigit(c) || isOneOf(c, "-:.+TZ"); }));
}
bool isSentence(std::string_view text) {
    return consistsOf(text, 120, [](char c) { return isLetter(c) || isOneOf(c, " .,:;_-!?'/"); });
}
bool isIdentifier(std::string_view text) {
    return consistsOf(text, 40, [](char c) { return isLetter(c) || isDigit(c) || isOneOf(c, "-."); });
}
bool isMediaType(std::string_view text) {
    return consistsOf(text, 60, [](char c) { return isLetter(c) || isOneOf(c, "/; =-8"); });
}

/// What goes by these names, which are separated by spaces: a secret of some kind, or what is shown if it looks as it
/// should.
struct Row {
    std::string_view names;
    std::string_view secret{};
    bool (*isShown)(std::string_view) = nullptr;
};

constexpr std::array rows{
    Row{"X-Zelto-Wallet-Api-Key", "key"},
    Row{"X-Zelto-Wallet-Session-Token token locator tokenLocator challenge pushToken", "token"},
    Row{"X-Zelto-Sign", "signature"},
    Row{"verificationCode", "one-time code"},
    Row{"phoneNumber phone", "phone number"},
    Row{"number cardNumber", "card number"},
    Row{"securityCode", "security code"},
    Row{"month year", "expiry"},
    Row{"longitude latitude", "position"},
    Row{.names = "amount balance chargedAmount codeInMap currency decimalDigits distance endingBalance flow id "
                 "kavioID kavioMachineId lang limit machineId machineStatusId machineType orderItemsCount orderStatus "
                 "orderStatusName orderType orderTypeName pulseLineNumber quantity retryTimeoutSeconds status type",
        .isShown = isPlain},
    Row{.names = "code", .isShown = isName},  // its digits could be those of a one-time code
    Row{.names = "created createdTime createdUTC expireTime serverTime transactionsBefore", .isShown = isTime},
    Row{.names = "appVersion orderId os osVersion", .isShown = isIdentifier},
    Row{.names = "message", .isShown = isSentence},
    Row{.names = "Content-Type", .isShown = isMediaType},
};

/// Calls `take` with each part of `text`.
template <class Take>
void split(std::string_view text, char separator, const Take& take) {
    for (std::size_t begin = 0; begin <= text.size();) {
        const auto end = std::min(text.find(separator, begin), text.size());
        take(text.substr(begin, end - begin));
        begin = end + 1;
    }
}

bool isAmong(std::string_view names, std::string_view name) {
    bool isFound = false;
    split(names, ' ', [&](std::string_view each) { isFound = isFound || each == name; });
    return isFound;
}

std::string kind(std::string_view what) { return std::string("<").append(what).append(">"); }

/// `quoted` is what stands there if the value is shown.
std::string masked(std::string_view name, std::string_view value, std::string_view quoted, std::string_view unknown) {
    const auto* const row = std::ranges::find_if(rows, [&](const Row& each) { return isAmong(each.names, name); });
    const bool isKnown = row != rows.end();
    if (isKnown && row->isShown != nullptr && row->isShown(value)) return std::string(quoted);
    if (isKnown && row->isShown == nullptr) unknown = row->secret;
    return kind(value.empty() ? "empty" : unknown);
}

/// Reads a text that is meant to be JSON from left to right and lets its structure and its names through.
class Body {
public:
    explicit Body(std::string_view text) : mText(text) {}

    std::string masked() {
        while (mAt < mText.size() && mMasked.size() < longestMasked) step();
        if (mAt < mText.size()) mMasked += "…";
        return std::move(mMasked);
    }

private:
    void step() {
        const char c = mText[mAt];
        if (isOneOf(c, " \t\r\n")) {
            ++mAt;
        } else if (isOneOf(c, "{}[],:")) {
            mMasked += c;
            ++mAt;
            if (isOneOf(c, "}]")) mName = {};  // what follows is not under it
        } else if (c == '"') {
            text();
        } else {
            plain();
        }
    }

    void text() {
        const auto begin = mAt++;
        while (mAt < mText.size() && mText[mAt] != '"') mAt += mText[mAt] == '\\' ? 2 : 1;
        mAt = std::min(mAt + 1, mText.size());
        const auto quoted = mText.substr(begin, mAt - begin);
        const auto value = quoted.size() < 2 ? quoted : quoted.substr(1, quoted.size() - 2);
        const auto next = mText.find_first_not_of(" \t\r\n", mAt);
        if (next != std::string_view::npos && mText[next] == ':') {
            mName = value;
            mMasked += isName(value) ? quoted : "<name>";
        } else {
            mMasked += kavio::masked(mName, value, quoted, "text");
        }
    }

    void plain() {
        const auto end = std::min(mText.find_first_of(" \t\r\n{}[],:\"", mAt), mText.size());
        const auto value = mText.substr(mAt, end - mAt);
        mAt = end;
        const bool isWord = value == "true" || value == "false" || value == "null";
        const bool isNumber = consistsOf(value, 400, [](char c) { return isDigit(c) || isOneOf(c, "+-.eE"); });
        mMasked += isWord ? std::string(value) : kavio::masked(mName, value, value, isNumber ? "number" : "text");
    }

    std::string_view mText;
    std::size_t mAt = 0;
    std::string_view mName;  // under which the values stand
    std::string mMasked;
};

/// Words and small numbers, and an order's identifier.
std::string maskedSegment(std::string_view before, std::string_view segment) {
    const bool isVersion = segment.size() <= 3 && segment.starts_with('v');
    const bool isShown = segment.empty() || isVersion || isName(segment) || isSmallNumber(segment) ||
                         (before == "orders" && isIdentifier(segment));
    return isShown ? std::string(segment) : kind(before == "locators" ? "token" : "text");
}

std::string maskedQuery(std::string_view query) {
    std::string whole;
    split(query, '&', [&](std::string_view entry) {
        const auto equals = std::min(entry.find('='), entry.size());
        const auto name = entry.substr(0, equals);
        if (!whole.empty()) whole += '&';
        whole += isName(name) ? std::string(name) : kind("name");
        if (equals == entry.size()) return;
        const auto value = entry.substr(equals + 1);
        const bool isWord = value == "true" || value == "false";
        whole.append("=").append(isWord ? std::string(value) : masked(name, value, value, "text"));
    });
    return whole;
}

}  // namespace

std::string maskedUrl(std::string_view url) {
    url = url.substr(0, url.find('#'));
    const auto hostAt = std::min(url.find("://"), url.size());
    const auto pathAt = std::min(url.find_first_of("/?", hostAt == url.size() ? 0 : hostAt + 3), url.size());
    const auto queryAt = std::min(url.find('?', pathAt), url.size());
    const auto path = url.substr(pathAt, queryAt - pathAt);
    const auto server = url.substr(0, pathAt);
    std::string whole(server.find('@') == std::string_view::npos ? std::string(server) : kind("text"));
    std::string_view before;
    const auto addSegment = [&](std::string_view segment) {
        whole += '/' + maskedSegment(before, segment);
        before = segment;
    };
    if (!path.empty()) split(path.substr(1), '/', addSegment);
    const auto query = url.substr(std::min(queryAt + 1, url.size()));
    return query.empty() ? whole : whole + "?" + maskedQuery(query);
}

std::string maskedHeaders(const HeaderFields& headers) {
    std::string whole = "[";
    for (const auto& [name, value] : headers) {
        if (whole.size() > 1) whole += ", ";
        whole.append(name).append(": ").append(masked(name, value, value, "text"));
    }
    return whole + "]";
}

std::string maskedBody(std::string_view body) { return body.size() > longestBody ? kind("long") : Body(body).masked(); }

}  // namespace kavio
