#pragma once

#include "reply.h"
#include "request.h"
#include "times.h"
#include "verdict.h"

#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace kavio::sandbox {

/// A text of which only the start is kept.
struct Excerpt {
    std::string text;
    std::size_t size = 0;  // of the whole text
};

/// A request and what became of it.
struct Exchange {
    struct Answer {
        int status = 0;
        Excerpt body;
        std::chrono::milliseconds delay{0};
        std::uint64_t fault = 0;  // 0 for none
        bool isLost = false;
    };
    std::uint64_t number = 0;
    std::uint64_t change = 0;  // rises with every change of any exchange
    TimePoint arrived;
    Request request;  // with the start of its body
    std::size_t bodySize = 0;
    std::optional<Verdict> verdict;  // absent where no signature is asked for
    std::optional<Answer> answer;    // absent until there is one
};

/// The last requests, each cut to a few kilobytes. Safe from any thread.
class Journal {
public:
    static constexpr std::size_t mostExchanges = 300;
    static constexpr std::size_t mostText = 8192;

    /// Returns the request's number.
    std::uint64_t begin(Request request, TimePoint arrived);
    void end(std::uint64_t number, const Reply& reply, std::optional<Verdict> verdict);
    void clear();
    /// Those that have changed since, oldest first; all of them after change 0.
    std::vector<Exchange> changedSince(std::uint64_t change) const;
    /// The number of the oldest one, or of the next if there is none.
    std::uint64_t first() const;

private:
    mutable std::mutex mMutex;
    std::deque<Exchange> mExchanges;
    std::uint64_t mLastNumber = 0;
    std::uint64_t mLastChange = 0;
};

}  // namespace kavio::sandbox
