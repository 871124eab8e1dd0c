#pragma once

#include <istream>
#include <optional>
#include <string>

namespace kavio::driver {

/// Reads lines of untrusted input. However long a line is, no more is held in memory than shows that it is too long.
class LineReader {
public:
    static constexpr std::size_t maximumBytes = std::size_t{16} * 1024 * 1024;

    explicit LineReader(std::istream& input);
    /// Absent at the end of input. A line that is longer than the limit is cut off just past it.
    std::optional<std::string> next();

private:
    std::streambuf& mInput;
};

}  // namespace kavio::driver
