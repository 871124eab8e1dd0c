#pragma once

#include <istream>
#include <optional>
#include <string>

namespace kavio::wallet {

/// Reads lines of untrusted input. However long a line is, no more than the limit is held in memory.
class LineReader {
public:
    static constexpr std::size_t maximumBytes = std::size_t{16} * 1024 * 1024;

    struct Line {
        std::string text;
        /// The line was longer; the rest has been dropped.
        bool isCut = false;
    };

    explicit LineReader(std::istream& input);
    /// Absent at the end of input.
    std::optional<Line> next();

private:
    std::streambuf& mInput;
};

}  // namespace kavio::wallet
