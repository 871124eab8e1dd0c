#include "line_reader.h"

namespace kavio::wallet {

LineReader::LineReader(std::istream& input) : mInput(*input.rdbuf()) {}

std::optional<LineReader::Line> LineReader::next() {
    using Traits = std::streambuf::traits_type;
    Line line;
    auto character = mInput.sbumpc();
    if (Traits::eq_int_type(character, Traits::eof())) return std::nullopt;
    for (; !Traits::eq_int_type(character, Traits::eof()); character = mInput.sbumpc()) {
        if (character == '\n') break;
        if (line.text.size() < maximumBytes) {
            line.text.push_back(Traits::to_char_type(character));
        } else {
            line.isCut = true;
        }
    }
    return line;
}

}  // namespace kavio::wallet
