#pragma once

#include "network/environments.h"

#include <optional>
#include <string>

/// The session: its token, which the application may see in the store, and beside it a note of the service that gave
/// the token, and to whom. The note names the token by its digest, so that it never speaks for another one; a token
/// without a note is used as it is.
namespace kavio {

/// Keeps the token that `service` gave after the one-time code for that telephone number.
void openSession(const std::string& token, ApiType service, const std::string& phoneNumber);
/// The session of a token that was refused is over; one that has begun in the meantime stays. Without a token: whatever
/// session there is.
void endSession(const std::optional<std::string>& refusedToken = std::nullopt);

/// `token` as it may be sent to `service`: empty where another one gave it.
std::string tokenFor(const std::string& token, ApiType service);
/// Tells persons apart without naming them; empty where it is not known who is signed in.
std::string sessionOwner();

}  // namespace kavio
