#pragma once

#include "times.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace kavio::sandbox {

/// 32 hexadecimal digits.
std::string randomText();

/// Every member has an initialiser, so that a designated initialiser list may leave it out without a warning.
struct Options {
    /// Port of the HTTPS service on 127.0.0.1; 0 for a free one.
    std::uint16_t port = 0;
    /// Port of the issuer's pages over plain HTTP, for a web view that does not trust our authority; 0 for a free one,
    /// absent for pages over HTTPS only.
    std::optional<std::uint16_t> issuerPort{};
    /// File for the authority's PEM; empty for a temporary file, removed at the end.
    std::filesystem::path authorityFile{};
    /// The only API key accepted; empty for any.
    std::string apiKey{};
    /// The one-time code for every login, unless `setCode` sets another one for a number.
    std::string code = "123456";
    /// How long an order stays in each of its statuses.
    std::chrono::milliseconds orderStep{1000};
    /// Whether the HTTPS service speaks HTTP/2 instead of HTTP/1.1.
    bool http2 = false;
    /// How long a connection may be idle before it is closed, with a TLS close notification.
    std::chrono::seconds idleLimit{60};
    std::chrono::seconds tokenLifetime{std::chrono::hours{24}};
    /// How long a client may use the time sample in a reply of "/time".
    std::chrono::seconds sampleLifetime{std::chrono::hours{1}};
    /// How far a signature's time may be from the service's clock, in either direction.
    std::chrono::seconds signatureWindow{std::chrono::minutes{5}};
    /// The clock for everything except certificates and the delays of faults. Called on the service's threads.
    std::function<TimePoint()> clock = std::chrono::system_clock::now;
    /// A text that nobody can guess, for tokens and identifiers. Called on the service's threads.
    std::function<std::string()> unguessableText = randomText;
    /// Receives what the phone would: "code for +49 151234567 is 123456". Called on the service's threads.
    std::function<void(const std::string&)> message{};
};

}  // namespace kavio::sandbox
