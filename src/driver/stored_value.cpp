#include "driver/stored_value.h"

#include "driver/dates.h"
#include "driver/objects.h"

#include <kavio/platform/platform.h>

#include <string_view>

namespace kavio::driver {

namespace {

std::string base64(const Bytes& bytes) {
    return Platform::current().base64->encode({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

/// Absent for anything but the form that we write ourselves.
std::optional<Bytes> bytesFromBase64(std::string_view text) {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    Bytes bytes;
    std::size_t bits = 0;
    int count = 0;
    for (const char digit : text.substr(0, text.find('='))) {
        bits = bits << 6 | (digits.find(digit) & 63);
        count += 6;
        if (count < 8) continue;
        count -= 8;
        bytes.push_back(static_cast<Bytes::value_type>(bits >> count & 255));
    }
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

}  // namespace kavio::driver
