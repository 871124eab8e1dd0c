#include "network/url_request.h"

#include <gtest/gtest.h>

#include <tuple>

namespace kavio::test {
namespace {

TEST(UrlRequest, AppendsPathComponents) {
    const std::string base = "https://h:443/v1";
    for (const auto& [component, url] : std::vector<std::pair<std::string, std::string>>{
             {"machines/7/products", base + "/machines/7/products"},
             {"/account/challenge/", base + "/account/challenge/"},
             {"/a b?c#d%e", base + "/a%20b%3Fc%23d%25e"},
             {"/ä\u200F", base + "/%C3%A4%E2%80%8F"},
             {"/a\"<>[]^`{|}\\\n", base + "/a%22%3C%3E%5B%5D%5E%60%7B%7C%7D%5C%0A"},
         }) {
        EXPECT_EQ(appendingPathComponent(base, component), url);
        EXPECT_EQ(appendingPathComponent(base + "/", component), url);
    }
}

TEST(UrlRequest, SetsTheQuery) {
    for (const auto& [url, query, expected] : std::vector<std::tuple<std::string, std::string, std::string>>{
             {"https://h/p", "", "https://h/p?"},
             {"https://h/p", "a=1&b=x y", "https://h/p?a=1&b=x%20y"},
             {"https://h/p?old=1#f?", "a=1", "https://h/p?a=1#f?"},
             {"https://h/p#f", "a=%#\"<>ä", "https://h/p?a=%25%23%22%3C%3E%C3%A4#f"},
         }) {
        EXPECT_EQ(settingQuery(url, query), expected);
    }
}

TEST(UrlRequest, TellsUrlsFromOtherTexts) {
    for (const std::string url : {"about:blank", "HTTPS://h/%20?a=b#c"}) EXPECT_TRUE(isUrl(url)) << url;
    for (const std::string text : {"", "https:", "://h", "https://h/a b", "https://h/ä"})
        EXPECT_FALSE(isUrl(text)) << text;
}

}  // namespace
}  // namespace kavio::test
