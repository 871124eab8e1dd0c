#include "driver/line_reader.h"

namespace kavio::driver {

LineReader::LineReader(std::istream& input) : mInput(*input.rdbuf()) {}

std::optional<std::string> LineReader::next() {
    using Traits = std::streambuf::traits_type;
    std::string line;
    auto character = mInput.sbumpc();
    if (Traits::eq_int_type(character, Traits::eof())) return std::nullopt;
    for (; !Traits::eq_int_type(character, Traits::eof()); character = mInput.sbumpc()) {
        if (character == '\n') break;
        if (line.size() <= maximumBytes) line.push_back(Traits::to_char_type(character));
    }
    return line;
}

}  // namespace kavio::driver
