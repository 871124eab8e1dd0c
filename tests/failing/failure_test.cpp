#include "failing/machine.h"
#include "platform/linux/url_session_failure.h"

#include <kavio/testing/boundary.h>

#include <gtest/gtest.h>

#include <new>
#include <optional>
#include <utility>
#include <vector>

namespace kavio::test {
namespace {

/// What is said of a failure while one allocation fails; absent when memory ran out.
std::optional<UrlError> describedWithout(long allocation, CURL* easy, CURLcode code) {
    std::optional<UrlError> error;
    beginToFail(Call::ALLOCATION, allocation, false);
    try {
        const InLibrary entered;
        error = describeFailure(easy, code, false);
    } catch (const std::bad_alloc&) {  // NOLINT(bugprone-empty-catch)
    }
    stopFailing();
    return error;
}

TEST(Failure, MayLackItsSentenceForWantOfMemoryButNotItsCode) {
    const CurlEasy easy(curl_easy_init());
    const std::vector<std::pair<CURLcode, UrlError::Code>> cases{
        {CURLE_COULDNT_CONNECT, UrlError::cannotConnectToHost},
        {CURLE_SSL_CONNECT_ERROR, UrlError::secureConnectionFailed},
        {CURLE_PEER_FAILED_VERIFICATION, UrlError::serverCertificateUntrusted},
        {CURLE_OPERATION_TIMEDOUT, UrlError::timedOut},
    };
    for (const auto& [code, expected] : cases) {
        const auto whole = describedWithout(0, easy.get(), code)->description;
        int incomplete = 0;
        for (long allocation = 1; allocation <= 5; ++allocation) {
            const auto error = describedWithout(allocation, easy.get(), code);
            incomplete += error && error->description == whole ? 0 : 1;
            if (!error) continue;
            EXPECT_EQ(error->code, expected);
            EXPECT_TRUE(error->description == whole || error->description.empty()) << error->description;
        }
        EXPECT_GT(incomplete, 0) << "nothing was missing after " << code;
    }
}

}  // namespace
}  // namespace kavio::test
