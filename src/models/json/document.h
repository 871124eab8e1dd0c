#pragma once

#include "models/json/decoded_value.h"
#include "models/json/decoding_error.h"
#include "models/json/keyed_container.h"

#include <memory>
#include <new>
#include <optional>
#include <string>

namespace kavio {

/// A parsed JSON text. `DecodingError` for a text that is not JSON, is not UTF-8, or nests deeper than 1024 levels.
/// What is merely odd is accepted, so that a member that nobody reads never costs the whole reply: a byte order mark,
/// numbers of any size, and half of a surrogate pair, which reads as U+FFFD.
class Document {
public:
    /// If `json` has spare capacity, it is not copied.
    explicit Document(const std::string& json);
    ~Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    DecodedValue root() const;

    /// Chooses the parser for this processor, which is done once and, if there is no memory for it, ends the process.
    static void chooseParser();

private:
    struct Parser;
    void parse(const std::string& json);
    static std::unique_ptr<Parser>& idleParser();

    std::unique_ptr<Parser> mParser;
};

/// The payload of a reply; absent for a JSON null. `DecodingError` when the body is not what a `T` decodes from, and
/// when it unfolds to more than memory can hold.
template <class T>
std::optional<T> decodeDocument(const std::string& body) {
    try {
        const Document document(body);
        const auto root = document.root();
        if (root.kind() == DecodedValue::Kind::null) return std::nullopt;
        return root.as<T>();
    } catch (const std::bad_alloc&) {
        throw DecodingError("too large for the memory");
    }
}

}  // namespace kavio
