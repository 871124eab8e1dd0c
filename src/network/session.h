#pragma once

#include "network/environments.h"

#include <optional>
#include <string>

/// The session: its token, which the application may see in the store, and next to it a note of the service that issued
/// the token, and to whom. The note names the token by its digest, so that it never applies to another one; a token
/// without a note is used as it is.
namespace kavio {

/// Keeps the token that `service` issued after the one-time code for that telephone number.
void openSession(const std::string& token, ApiType service, const std::string& phoneNumber);
/// Ends the session of a token that was refused; a session begun in the meantime stays. Without a token, ends
/// any session.
void endSession(const std::optional<std::string>& refusedToken = std::nullopt);

/// A session's token, and the name of the service that issued it; empty where that is not known.
struct SessionToken {
    std::string text;
    std::string issuer;
};

/// The token of the session that is open, with what is known of it.
SessionToken withIssuer(std::string token);
/// A token as it may be sent to `service`: empty if another service issued it.
std::string tokenFor(const SessionToken& token, ApiType service);
/// Tells persons apart without naming them; empty if it is not known who is signed in.
std::string sessionOwner();

}  // namespace kavio
