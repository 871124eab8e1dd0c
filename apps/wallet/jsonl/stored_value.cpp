#include "stored_value.h"

#include "json/dates.h"
#include "json/objects.h"

#include <openssl/evp.h>

#include <string_view>

namespace kavio::wallet {

namespace {

std::string base64(const Bytes& bytes) {
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');  // EVP_EncodeBlock ends its text with a zero byte
    const int length =
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), bytes.data(), static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

std::optional<Bytes> bytesFromBase64(std::string_view text) {
    if (text.size() % 4 != 0) return std::nullopt;
    Bytes bytes(text.size() / 4 * 3);
    const int length = EVP_DecodeBlock(bytes.data(), reinterpret_cast<const unsigned char*>(text.data()),
                                       static_cast<int>(text.size()));
    if (length < 0) return std::nullopt;
    // EVP_DecodeBlock counts the padding as bytes.
    const auto padding = text.ends_with("==") ? 2U : text.ends_with('=') ? 1U : 0U;
    bytes.resize(static_cast<std::size_t>(length) - padding);
    // It also passes over white space and stray bits; only what we would write ourselves is meant.
    return base64(bytes) == text ? std::optional{bytes} : std::nullopt;
}

struct Writer {
    Json operator()(const std::string& text) const { return text; }
    Json operator()(Date date) const { return {{"date", date}}; }
    Json operator()(const Bytes& bytes) const { return {{"data", base64(bytes)}}; }
};

[[noreturn]] void refuse() {
    throw Refused(R"("value" must be a text, {"date": ISO text}, {"data": base64 text} or null)");
}

}  // namespace

Json toJson(const std::optional<StoredValue>& value) { return value ? std::visit(Writer{}, *value) : Json(nullptr); }

std::optional<StoredValue> storedValueIn(const Arguments& arguments) {
    const auto value = arguments.member("value");
    if (value.json.is_null()) return std::nullopt;
    if (value.json.is_string()) return value.json.get<std::string>();
    if (!value.json.is_object() || value.json.size() != 1) refuse();

    const Arguments form{value};
    if (const auto date = form.optional<Date>("date")) return *date;
    const auto text = form.optional<std::string>("data");
    if (!text) refuse();
    auto bytes = bytesFromBase64(*text);
    if (!bytes) throw Refused(R"("value.data" must be base64 with padding and without line breaks)");
    return *std::move(bytes);
}

}  // namespace kavio::wallet
