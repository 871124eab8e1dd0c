#include "support/world.h"
#include "util/kavio_utils.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/sha.h>

#include <algorithm>
#include <array>

namespace kavio::test {
namespace {

std::string hexSha1(const std::string& bytes) {
    std::array<unsigned char, SHA_DIGEST_LENGTH> digest{};
    SHA1(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), digest.data());
    std::string hex;
    for (const auto byte : digest) {
        std::array<char, 3> digits{};
        std::snprintf(digits.data(), digits.size(), "%02x", byte);
        hex += digits.data();
    }
    return hex;
}

std::string fromHex(const std::string& hex) {
    std::string bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2)
        bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    return bytes;
}

// The same signature in the long way, over hexadecimal texts. `url` and `body` are what of them is signed.
std::string longSignature(const std::string& url, const std::string& body, const std::string& stamp) {
    const auto h1 = hexSha1(url);
    const auto d = hexSha1(fromHex(h1 + hexSha1(body) + hexSha1(stamp)));
    const auto bytes = fromHex(h1.substr(0, 2) + d);
    std::string text(29, '\0');
    EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), reinterpret_cast<const unsigned char*>(bytes.data()),
                    static_cast<int>(bytes.size()));
    text.pop_back();
    std::replace(text.begin(), text.end(), '+', '-');
    std::replace(text.begin(), text.end(), '/', '_');
    return text + "0" + stamp.substr(10);
}

std::string repeated(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) all += text;
    return all;
}

TEST(Signature, CoversUrlBodyAndTime) {
    World world;
    world.device().clock->advance(std::chrono::seconds(754));
    const std::string letters = "abcdefghijklmnopqrstuvwxyz";
    const std::string family = "\U0001F468\u200D\U0001F469\u200D\U0001F467";  // one character of five code points
    struct Case {
        const char* name;
        std::string url, body, signedUrl, signedBody;
    };
    for (const auto& c : std::vector<Case>{
             {"no body", "https://h/v1/time?", "", "https://h/v1/time?", ""},
             {"letter case", "HTTPS://H/V1/Time?A=B", "", "https://h/v1/time?a=b", ""},
             {"marks", "https://h/a%E2%80%8Fb\u00E2c", "", "https://h/abc", ""},
             {"31 characters", "u", letters + "01234", "u", letters + "01234"},
             {"33 characters", "u", letters + "0123456", "u", letters + "012345"},
             {"two bytes a character", "u", "\u00E4" + letters + "012345", "u", "\u00E4" + letters + "01234"},
             {"a line break is one", "u", letters + "\r\n0123456", "u", letters + "\r\n01234"},
             {"code points that make one", "u", repeated(family, 40), "u", repeated(family, 32)},
         }) {
        SCOPED_TRACE(c.name);
        const auto signature = KavioUtils::signRequest(c.url, c.body);
        EXPECT_EQ(signature, longSignature(c.signedUrl, c.signedBody, "20240101001234"));
        EXPECT_EQ(signature.size(), 33U);
    }
}

TEST(Signature, EncodesBytesForUrls) {
    World world;
    for (const auto& [bytes, text] : std::vector<std::pair<std::string, std::string>>{
             {"", "0"}, {"a", "YQ2"}, {"ab", "YWI1"}, {"abc", "YWJj0"}, {"\xfb\xff\xfe", "-__-0"}}) {
        EXPECT_EQ(KavioUtils::urlTokenEncode(bytes), text);
    }
}

TEST(KavioUtils, FindsMatches) {
    World world;
    EXPECT_EQ(KavioUtils::matches("a(b)", "abab"), (std::vector<std::string>{"ab", "ab"}));
    EXPECT_EQ(KavioUtils::matches("(", "abab"), std::vector<std::string>{});
    EXPECT_EQ(KavioUtils::firstGroup("a(b?)", "xab"), "b");
    EXPECT_EQ(KavioUtils::firstGroup("a(b)", "x"), std::nullopt);
}

}  // namespace
}  // namespace kavio::test
