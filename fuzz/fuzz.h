#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace kavio::fuzz {

/// What has come from outside, taken piece by piece. Beyond its end, everything is empty.
class Input {
public:
    explicit Input(std::string_view bytes) : mRest(bytes) {}

    bool isEmpty() const { return mRest.empty(); }
    std::uint8_t byte() {
        const auto taken = take(1, 0);
        return taken.empty() ? std::uint8_t{0} : static_cast<std::uint8_t>(taken.front());
    }
    /// Up to the end of the line, or to whatever else ends the piece.
    std::string line(std::string_view end = "\n") { return take(mRest.find(end), end.size()); }
    std::string rest() { return take(mRest.size(), 0); }

private:
    std::string take(std::size_t size, std::size_t end) {
        std::string taken(mRest.substr(0, size));
        mRest.remove_prefix(std::min(mRest.size(), taken.size() + end));
        return taken;
    }

    std::string_view mRest;
};

/// What holds for any input. Where it does not, the fuzzer has found something.
inline void must(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "Does not hold: %s\n", what);
    std::abort();
}

/// Each fuzzer's own. An exception that leaves it is something found, too.
void tryInput(Input input);

}  // namespace kavio::fuzz
