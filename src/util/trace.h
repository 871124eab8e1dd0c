#pragma once

#include <string>
#include <string_view>
#include <type_traits>

namespace kavio {

/// A trace message that names no card, token, person or request content, so that it may be written.
struct SafeMessage {
    std::string text;
};

/// Whether the library was built with KAVIO_TRACE.
bool isTraceWritten();
/// A line on standard error, stamped with the time since the device started.
void writeTrace(std::string_view tag, std::string_view message);

/// A diagnostic line under the name of the calling class. `message` is a callable, asked only where the line goes
/// somewhere: in a build with KAVIO_TRACE, and only when it gives a `SafeMessage`. A plain text is never written.
template <class Message>
void trace([[maybe_unused]] std::string_view tag, [[maybe_unused]] const Message& message) {
    if constexpr (std::is_same_v<std::invoke_result_t<Message>, SafeMessage>) {
        if (isTraceWritten()) writeTrace(tag, message().text);
    }
}

}  // namespace kavio
