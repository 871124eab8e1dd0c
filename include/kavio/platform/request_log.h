#pragma once

#include <kavio/export.h>
#include <kavio/platform/platform.h>

#include <functional>
#include <string_view>

namespace kavio {

/// Takes a line without its end. It is called on any thread, on several at once, and must not throw or use the library.
using RequestLog = std::function<void(std::string_view line)>;

/// `platform`, each request and reply of which is also described to `write`, in lines that can be pasted into a bug
/// report:
///
///     2026-11-26T15:30:02.123 #2 POST https://api.kavio.example/v1/machines/42100107/orders
///         [X-Zelto-Wallet-Api-Key: <key>, X-Zelto-Sign: <signature>] {"amount":150,"tokenLocator":<token>}
///     2026-11-26T15:30:02.208 #2 200 after 85 ms, 61 bytes {"order":{"id":"184467","paymentSource":<text>}}
///
/// each of which is one line. Of URLs, headers and bodies only what is known to be harmless is shown, such as amounts,
/// statuses and the numbers of machines and orders. In place of everything else stands what it is: `<card number>`,
/// `<security code>`, `<one-time code>`, `<token>`, `<key>`, `<signature>`, `<phone number>`, `<position>`, `<text>`,
/// `<number>`.
///
///     Platform::install(withRequestLog(makeLinuxPlatform(), [](std::string_view line) { appendToFile(line); }));
KAVIO_API Platform withRequestLog(Platform platform, RequestLog write);

}  // namespace kavio
