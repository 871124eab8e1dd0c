#pragma once

#include <string>
#include <string_view>
#include <type_traits>

namespace kavio {

/// A trace message that may be written because it contains no card, token, person or request content.
struct SafeMessage {
    std::string text;
};

/// Whether the library was built with KAVIO_TRACE.
bool isTraceWritten();
/// A line on standard error, stamped with the time since the device started.
void writeTrace(std::string_view tag, std::string_view message);

/// A diagnostic line under the name of the calling class. `message` is a callable that returns a `SafeMessage`, called
/// only in a build with KAVIO_TRACE.
template <class Message>
requires std::is_same_v<std::invoke_result_t<Message>, SafeMessage>
void trace(std::string_view tag, const Message& message) {
    if (isTraceWritten()) writeTrace(tag, message().text);
}

}  // namespace kavio
