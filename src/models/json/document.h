#pragma once

#include "models/json/decoded_value.h"
#include "models/json/keyed_container.h"

#include <memory>
#include <optional>
#include <string>

namespace kavio {

/// A parsed JSON text. `DecodingError` for a text that is not JSON, is not UTF-8, or nests deeper than 1024 levels.
class Document {
public:
    /// Spare capacity of `json` saves a copy of it.
    explicit Document(const std::string& json);
    ~Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    DecodedValue root() const;

private:
    struct Parser;
    static std::unique_ptr<Parser>& idleParser();

    std::unique_ptr<Parser> mParser;
};

/// A record whose texts are the document's own.
template <class T>
concept BorrowsTexts = requires {
    T::borrowsTexts;
};

/// The payload of a reply; absent for a JSON null. `DecodingError` when the body is not what a `T` decodes from.
template <class T>
std::optional<T> decodeDocument(const std::string& body) {
    static_assert(!BorrowsTexts<T>, "Its texts would be gone with the document.");
    const Document document(body);
    const auto root = document.root();
    if (root.kind() == DecodedValue::Kind::null) return std::nullopt;
    return root.as<T>();
}

}  // namespace kavio
