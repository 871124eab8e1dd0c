#include "models/json/json_value.h"

#include "platform/wipe.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <ostream>
#include <streambuf>
#include <utility>

namespace kavio {
namespace {

// The JSON library writes such a number as null, which the service would take for an absent value.
bool isFinite(const JsonValue& value) {
    if (value.is_number_float()) return std::isfinite(value.get<double>());
    return std::all_of(value.begin(), value.end(), [](const JsonValue& element) {
        return !(element.is_structured() || element.is_number_float()) || isFinite(element);
    });
}

void wipeAll(JsonValue& value) {
    if (auto* text = value.get_ptr<std::string*>()) return wipe(*text);
    if (auto* number = value.get_ptr<std::int64_t*>()) return wipe(number, sizeof *number);
    if (!value.is_structured()) return;
    for (auto& element : value) wipeAll(element);
    value.clear();  // a destructor that finds elements asks for memory
}

/// A value whose texts and integers are wiped from memory with it.
struct SecretValue {
    JsonValue value;
    ~SecretValue() { wipeAll(value); }
};

/// Collects a text and, unlike a string, leaves nothing of it behind when it outgrows its storage.
class SecretBuffer final : public std::streambuf {
public:
    ~SecretBuffer() override { wipe(mText); }
    std::string take() { return std::exchange(mText, {}); }

protected:
    int_type overflow(int_type character) override {
        const char c = traits_type::to_char_type(character);
        xsputn(&c, 1);
        return character;
    }
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        const auto needed = mText.size() + static_cast<std::size_t>(size);
        if (needed > mText.capacity()) {
            std::string larger;
            larger.reserve(std::max(needed, 2 * mText.capacity()));
            larger = mText;
            mText.swap(larger);
            wipe(larger);
        }
        mText.append(text, static_cast<std::size_t>(size));
        return size;
    }

private:
    std::string mText;
};

}  // namespace

std::optional<std::string> serialise(JsonObject object, int indent) {
    const SecretValue value{std::move(object)};
    if (!isFinite(value.value)) return std::nullopt;
    SecretBuffer text;
    std::ostream stream(&text);
    stream.exceptions(std::ios::badbit);  // or lack of memory would cut the text short
    try {
        stream << std::setw(indent) << value.value;
        return text.take();
    } catch (const JsonValue::type_error&) {  // ill-formed UTF-8
        return std::nullopt;
    }
}

void wipe(JsonObject& object) noexcept {
    for (auto& [key, value] : object) wipeAll(value);
    object.clear();
}

const JsonValue* find(const JsonObject& object, std::string_view key) {
    const auto found = object.find(key);
    return found == object.end() ? nullptr : &found->second;
}

std::optional<std::int64_t> integerAt(const JsonObject& object, std::string_view key) {
    const auto* value = find(object, key);
    if (!value || !value->is_number_integer()) return std::nullopt;
    return value->get<std::int64_t>();
}

std::optional<std::string> textAt(const JsonObject& object, std::string_view key) {
    const auto* value = find(object, key);
    if (!value || !value->is_string()) return std::nullopt;
    return value->get<std::string>();
}

}  // namespace kavio
