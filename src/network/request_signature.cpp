#include "network/request_signature.h"

#include "models/ascii_text.h"
#include "platform/wipe.h"
#include "time/reliable_clock.h"

#include <kavio/platform/platform.h>

#include <algorithm>

namespace kavio {
namespace {

constexpr std::size_t signedBodyCharacters = 32;

void removeAll(std::string& text, std::string_view part) {
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at)) text.erase(at, part.size());
}

// Services in right-to-left scripts put these marks into texts that end up in URLs; the service drops them too.
std::string signedUrl(std::string_view url) {
    std::string text(url);
    removeAll(text, "%E2%80%8F");
    removeAll(text, "\u00E2");
    return lowercased(std::move(text));
}

Digest::Sha1 sha1(std::string_view bytes) { return Platform::current().digest->sha1(bytes); }

std::string_view bytesOf(const Digest::Sha1& digest) {
    return {reinterpret_cast<const char*>(digest.data()), digest.size()};
}

}  // namespace

std::string signRequest(std::string_view url, std::string_view body) {
    return signRequest(url, body, serverTimeStamp());
}

std::string signRequest(std::string_view url, std::string_view body, std::string_view stamp) {
    const auto urlDigest = sha1(signedUrl(url));
    const auto& characters = *Platform::current().characters;
    auto wellFormed = characters.wellFormed(body);
    const bool isText = wellFormed == body;
    wipe(wellFormed);  // it may hold a card number
    const auto bodyDigest = sha1(isText ? characters.prefix(body, signedBodyCharacters) : std::string_view());
    const auto stampDigest = sha1(stamp);

    std::string bytes;
    bytes.reserve(3 * urlDigest.size());
    for (const auto& digest : {urlDigest, bodyDigest, stampDigest}) bytes += bytesOf(digest);
    const auto all = sha1(bytes);

    bytes = bytesOf(urlDigest).substr(0, 1);
    bytes += bytesOf(all);
    return urlTokenEncode(bytes).append(stamp.substr(stamp.size() - std::min<std::size_t>(4, stamp.size())));
}

std::string urlTokenEncode(std::string_view bytes) {
    auto text = Platform::current().base64->encode(bytes);
    text.reserve(text.size() + 8);  // for what is appended to it
    const auto padding = std::count(text.begin(), text.end(), '=');
    text.resize(text.size() - static_cast<std::size_t>(padding));
    std::replace(text.begin(), text.end(), '+', '-');
    std::replace(text.begin(), text.end(), '/', '_');
    return text.append(std::to_string(padding));
}

}  // namespace kavio
