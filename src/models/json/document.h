#pragma once

#include "models/json/decoded_value.h"
#include "models/json/decoding_error.h"
#include "models/json/keyed_container.h"

#include <concepts>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

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

/// Whether the texts of a value are the document's own. Records that have such texts say so, in a member of this name.
template <class T>
inline constexpr bool borrowsTexts = std::same_as<T, std::string_view>;
template <class T>
requires requires { T::borrowsTexts; }
inline constexpr bool borrowsTexts<T> = T::borrowsTexts;
template <class T>
inline constexpr bool borrowsTexts<std::vector<T>> = borrowsTexts<T>;

/// The payload of a reply; absent for a JSON null. `DecodingError` when the body is not what a `T` decodes from, and
/// when it unfolds to more than there is memory.
template <class T>
std::optional<T> decodeDocument(const std::string& body) {
    static_assert(!borrowsTexts<T>, "Its texts would be gone with the document.");
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
