#pragma once

#include <kavio/date.h>

#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace kavio {

// A value as a debug text shows it.
std::string debugText(std::int64_t value);
/// The shortest decimal text that reads back to the same value: 12.0 is "12".
std::string debugText(double value);
std::string debugText(Date value);
inline std::string debugText(std::same_as<bool> auto value) { return value ? "true" : "false"; }
inline std::string debugText(const std::string& value) { return value; }
std::string debugText(const std::optional<std::string>& value);

/// In double quotes, with a backslash before anything that would end the text or its line.
std::string quoted(std::string_view text);
/// Marks the text of a value that could have been absent.
std::string wrapped(std::string_view text);

/// An enumerator's own name.
template <class T>
requires std::is_enum_v<T> std::string debugText(T value) { return std::string(name(value)); }

template <class T>
std::string debugText(const std::shared_ptr<const T>& object) {
    return object ? wrapped(object->debugDescription()) : "nil";
}

template <class T>
std::string debugText(const std::optional<T>& value) {
    return value ? wrapped(debugText(*value)) : "nil";
}

template <class T>
std::string debugText(const std::vector<std::shared_ptr<const T>>& list) {
    std::string text = "[";
    for (const auto& object : list)
        text.append(text.size() > 1 ? ", " : "").append(object ? object->debugDescription() : "nil");
    return text + "]";
}

/// The debug text of an object, with each member on its own line.
class DebugText {
public:
    explicit DebugText(std::string before = {}) : mText(std::move(before)) {}

    template <class T>
    DebugText& line(std::string_view label, const T& value, std::string_view end = ",") {
        return add(label, debugText(value), end);
    }
    operator std::string() { return std::move(mText); }  // NOLINT(google-explicit-constructor): ends each description

private:
    DebugText& add(std::string_view label, std::string_view value, std::string_view end);

    std::string mText;
};

}  // namespace kavio
