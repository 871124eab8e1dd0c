#include "models/json/document.h"

#include "models/json/decoding_error.h"
#include "models/json/simdjson_element.h"
#include "models/json/tolerated_text.h"

#include <string>
#include <string_view>
#include <utility>

namespace kavio {

struct Document::Parser {
    simdjson::dom::parser parser;
    simdjson::dom::document document;
    simdjson::dom::element root;
};

namespace {

// The buffers are several times the size of what has been parsed. Those for more than this much text go: what only
// parsing needs before the values are read, the rest with the document. Others are kept for the next one.
constexpr std::size_t keptCapacity = std::size_t{1024} * 1024;

}  // namespace

// Each thread keeps a parser. A document takes it out while using it, since decoding a text inside a reply
// parses again.
std::unique_ptr<Document::Parser>& Document::idleParser() {
    thread_local std::unique_ptr<Parser> idle;
    return idle;
}

Document::Document(const std::string& json) : mParser(std::move(idleParser())) {
    if (json.empty()) throw DecodingError("empty");
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (json.starts_with(byteOrderMark)) {
        parse(json.substr(byteOrderMark.size()));
    } else {
        parse(json);
    }
}

void Document::parse(const std::string& json) {
    if (!mParser) mParser = std::make_unique<Parser>();
    auto& parser = mParser->parser;
    const auto outcome = [&](const std::string& text) {
        return parser.parse_into_document(mParser->document, text).get(mParser->root);
    };
    auto error = outcome(json);
    if (error == simdjson::NUMBER_ERROR || error == simdjson::STRING_ERROR) error = outcome(toleratedText(json));
    if (error != simdjson::SUCCESS) throw DecodingError(simdjson::error_message(error));
    if (parser.capacity() > keptCapacity) parser = simdjson::dom::parser();
}

Document::~Document() {
    if (mParser && mParser->document.capacity() <= keptCapacity) idleParser() = std::move(mParser);
}

void Document::chooseParser() { static_cast<void>(simdjson::get_active_implementation()->name()); }

DecodedValue Document::root() const { return {fromDom(mParser->root), {}}; }

}  // namespace kavio
