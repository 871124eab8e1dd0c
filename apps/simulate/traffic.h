#pragma once

#include <kavio/testing/device.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>

namespace kavio::simulate {

/// What has gone over the network: which session tokens the library holds and where it may send them.
class Traffic {
public:
    /// A reply has been handed to the library.
    void note(const test::Device& device, const UrlRequest& request, const UrlReply& reply);
    /// The library has reported a logout.
    void noteLogout(const test::Device& device);
    /// Whether the library has had a reply to a payment of this amount, from which it knows what became of it.
    bool hasAnsweredPayment(std::int64_t amount) const { return mAnswered.contains(amount); }
    /// Throws a Violation if a token went elsewhere, or was used after its end.
    void check(const test::Device& device) const;

private:
    void countRequests(const test::Device& device);
    void end(const test::Device& device, const std::string& token);

    std::map<std::string, std::string> mHosts;  // of the service that gave the token
    /// When a token has ended, and how many requests there were a while later: what was asked for before may still have
    /// waited for the service's time.
    struct End {
        std::chrono::nanoseconds time{0};
        std::map<test::Network::Session, std::size_t> requests{};
    };
    std::map<std::string, End> mEnds;
    std::string mLastToken;
    std::set<std::int64_t> mAnswered;
};

}  // namespace kavio::simulate
