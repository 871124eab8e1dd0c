#include "models/json/document.h"

#include "models/json/decoding_error.h"
#include "models/json/simdjson_element.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string>
#include <utility>

namespace kavio {

struct Document::Parser {
    simdjson::dom::parser parser;
    simdjson::dom::element root;
};

namespace {

// A parser keeps its buffers, several times the size of what it parsed. Those for more than this much text go when the
// thread next parses a text that needs less than half of them.
constexpr std::size_t keptCapacity = std::size_t{2} * 1024 * 1024;

bool isOversized(std::size_t capacity, std::size_t needed) { return capacity > keptCapacity && capacity / 2 > needed; }

template <class Integer>
bool holds(std::string_view literal) {
    Integer value = 0;
    return std::from_chars(literal.data(), literal.data() + literal.size(), value).ec == std::errc();
}

// The double next below the smallest integer.
constexpr std::string_view belowIntegers = "-9223372036854777856";

/// Whether a literal too small for an integer would, as a double, be the smallest one.
bool roundsToAnInteger(std::string_view literal) {
    double value = 0;
    std::from_chars(literal.data(), literal.data() + literal.size(), value);
    return value == -0x1p63;
}

/// The same text with every integer beyond 64 bits spelled as a double: the parser refuses the whole text because of
/// such a literal, even where no record reads it.
std::string withLargeIntegersAsDoubles(std::string_view json) {
    std::string result;
    result.reserve(json.size() + json.size() / 8);
    std::size_t position = 0;
    const auto copyTo = [&](std::size_t end) {
        end = std::min(end, json.size());
        result.append(json, position, end - position);
        position = end;
    };
    while (position < json.size()) {
        const auto start = json.find_first_of("\"-0123456789", position);
        copyTo(start);
        if (position == json.size()) break;
        if (json[position] == '"') {
            auto end = json.find_first_of("\"\\", position + 1);
            while (end != std::string_view::npos && json[end] == '\\') end = json.find_first_of("\"\\", end + 2);
            copyTo(end == std::string_view::npos ? end : end + 1);
        } else {
            copyTo(json.find_first_not_of("+-.0123456789Ee", position));
            const auto literal = std::string_view(json).substr(start, position - start);
            const bool isInteger = literal.find_first_of(".Ee") == std::string_view::npos;
            if (isInteger && !holds<std::int64_t>(literal) && !holds<std::uint64_t>(literal)) {
                if (roundsToAnInteger(literal))
                    result.replace(result.size() - literal.size(), literal.size(), belowIntegers);
                result += "e0";
            }
        }
    }
    return result;
}

}  // namespace

// Each thread keeps a parser. It is taken out while a document uses it, since decoding a text inside a reply parses
// again.
std::unique_ptr<Document::Parser>& Document::idleParser() {
    thread_local std::unique_ptr<Parser> idle;
    return idle;
}

Document::Document(const std::string& json) : mParser(std::move(idleParser())) {
    if (json.empty()) throw DecodingError("empty");
    if (!mParser || isOversized(mParser->parser.capacity(), json.size())) mParser = std::make_unique<Parser>();
    const auto parse = [this](const std::string& text) { return mParser->parser.parse(text).get(mParser->root); };
    auto error = parse(json);
    if (error == simdjson::NUMBER_ERROR) error = parse(withLargeIntegersAsDoubles(json));
    if (error != simdjson::SUCCESS) throw DecodingError(simdjson::error_message(error));
}

Document::~Document() { idleParser() = std::move(mParser); }

DecodedValue Document::root() const { return {fromDom(mParser->root), {}}; }

}  // namespace kavio
