#include "signature.h"

#include <fmt/chrono.h>
#include <openssl/evp.h>
#include <unicode/brkiter.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <memory>

namespace kavio::sandbox {
namespace {

constexpr std::size_t digestSize = 20;
constexpr int signedCharacters = 32;

std::string sha1(std::string_view bytes) {
    // Fetched once, because checking a time request may try thousands of hours.
    static const auto* const algorithm = EVP_MD_fetch(nullptr, "SHA1", nullptr);
    std::array<unsigned char, digestSize> digest{};
    EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, algorithm, nullptr);
    return {digest.begin(), digest.end()};
}

std::string base64Token(std::string_view bytes) {
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
    const int length = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                                       reinterpret_cast<const unsigned char*>(bytes.data()), int(bytes.size()));
    text.resize(std::size_t(length));
    const auto padding = std::count(text.begin(), text.end(), '=');
    text.resize(text.size() - std::size_t(padding));
    std::replace(text.begin(), text.end(), '+', '-');
    std::replace(text.begin(), text.end(), '/', '_');
    return text + std::to_string(padding);
}

void eraseAll(std::string& text, std::string_view part) {
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at)) text.erase(at, part.size());
}

std::string canonical(std::string url) {
    eraseAll(url, "%E2%80%8F");
    eraseAll(url, "\xC3\xA2");
    std::transform(url.begin(), url.end(), url.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return url;
}

bool isUtf8(std::string_view text) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = std::int32_t(text.size());
    for (std::int32_t at = 0; at < length;) {
        UChar32 c = 0;
        U8_NEXT(bytes, at, length, c);
        if (c < 0) return false;
    }
    return true;
}

/// The first 32 characters as a person counts them: a letter and its accents are one.
std::string signedPart(std::string_view body) {
    if (!isUtf8(body)) return {};
    const auto text = icu::UnicodeString::fromUTF8(icu::StringPiece(body.data(), std::int32_t(body.size())));
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::BreakIterator> characters(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    characters->setText(text);
    const auto end = characters->next(signedCharacters);
    std::string part;
    return text.tempSubStringBetween(0, end == icu::BreakIterator::DONE ? text.length() : end).toUTF8String(part);
}

/// The part of a signature that does not depend on the time.
class Signer {
public:
    Signer(std::string url, std::string_view body)
        : mUrlDigest(sha1(canonical(std::move(url)))), mBodyDigest(sha1(signedPart(body))) {}

    std::string at(std::string_view stamp) const {
        const auto digest = sha1(mUrlDigest + mBodyDigest + sha1(stamp));
        return base64Token(mUrlDigest[0] + digest).append(stamp.substr(stamp.size() - 4));
    }

private:
    std::string mUrlDigest;
    std::string mBodyDigest;
};

}  // namespace

std::string sign(std::string url, std::string_view body, std::string_view stamp) {
    return Signer(std::move(url), body).at(stamp);
}

std::string timeStamp(TimePoint time) {
    return fmt::format("{:%Y%m%d%H%M%S}", fmt::gmtime(std::chrono::system_clock::to_time_t(time)));
}

SignatureCheck checkSignature(const std::string& signature, const std::string& url, std::string_view body,
                              TimePoint now, std::chrono::seconds window, std::chrono::hours reach) {
    using namespace std::chrono;
    if (signature.size() != 33) return SignatureCheck::wrong;
    const int clear = std::atoi(signature.c_str() + 29);
    const auto inHour = minutes{clear / 100} + seconds{clear % 100};
    const Signer signer(url, body);
    const auto fits = [&](TimePoint time) { return signer.at(timeStamp(time)) == signature; };
    const auto judged = [&](TimePoint time) {
        return abs(time - floor<seconds>(now)) <= window ? SignatureCheck::valid : SignatureCheck::stale;
    };

    const TimePoint nearest = floor<hours>(now) + inHour;
    // The first character depends on the URL alone, so a wrong URL does not need a try for every hour.
    if (signer.at(timeStamp(nearest)).front() != signature.front()) return SignatureCheck::wrong;
    for (hours distance{0}; distance <= reach; ++distance) {
        if (fits(nearest - distance)) return judged(nearest - distance);
        if (fits(nearest + distance)) return judged(nearest + distance);
    }
    return SignatureCheck::wrong;
}

}  // namespace kavio::sandbox
