#include "network/session.h"

#include "models/json/decoding_error.h"
#include "models/json/document.h"
#include "models/json/json_value.h"
#include "models/json/keyed_container.h"
#include "storage/kavio_user_defaults.h"
#include "storage/suites.h"
#include "util/shared_instance.h"

#include <kavio/platform/platform.h>

#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace kavio {
namespace {

constexpr std::string_view noteKey = "session";

struct SessionNote {
    std::string token;  // its digest
    std::string service;
    std::string owner;

    static SessionNote decode(const KeyedContainer& in) {
        return {
            .token = in.required("token"),
            .service = in.required("service"),
            .owner = in.required("owner"),
        };
    }
};

std::string digestOf(std::string_view text) {
    const auto digest = Platform::current().digest->sha1(text);
    return Platform::current().base64->encode({reinterpret_cast<const char*>(digest.data()), digest.size()});
}

std::optional<SessionNote> storedNote() {
    const auto text = recordsSuite()->string(noteKey);
    if (!text) return std::nullopt;
    try {
        return decodeDocument<SessionNote>(*text);
    } catch (const DecodingError&) {
        return std::nullopt;
    }
}

/// The note of the token that was asked for last. It is written before its token and never changes, so it is looked up
/// only once.
class KnownNote {
public:
    std::shared_ptr<const SessionNote> of(const std::string& token) {
        {
            const std::lock_guard lock(mMutex);
            if (token == mToken) return mNote;
        }
        auto note = storedNote();  // without the lock: the store may report to the host
        // None is not kept: it may have been unreadable only now.
        if (!note || note->token != digestOf(token)) return std::make_shared<const SessionNote>();
        auto known = std::make_shared<const SessionNote>(*std::move(note));
        const std::lock_guard lock(mMutex);
        mToken = token;
        mNote = known;
        return known;
    }

private:
    std::mutex mMutex;
    std::optional<std::string> mToken;
    std::shared_ptr<const SessionNote> mNote;
};

std::shared_ptr<const SessionNote> noteOf(const std::string& token) { return sharedInstance<KnownNote>()->of(token); }

}  // namespace

void openSession(const std::string& token, ApiType service, const std::string& phoneNumber) {
    const auto note = serialise(
        {{"token", digestOf(token)}, {"service", std::string(name(service))}, {"owner", digestOf(phoneNumber)}});
    // A crash in between leaves a note without a token, which is harmless, and never a token without its note.
    const auto defaults = KavioUserDefaults::shared();
    if (!defaults->sessionToken().empty()) defaults->defualt->set(keys::sessionToken, std::string());
    if (note) recordsSuite()->set(noteKey, *note);
    defaults->defualt->set(keys::sessionToken, token);
}

void endSession(const std::optional<std::string>& refusedToken) {
    const auto defaults = KavioUserDefaults::shared();
    if (refusedToken && *refusedToken != defaults->sessionToken()) return;
    defaults->defualt->set(keys::sessionToken, std::string());
}

SessionToken withIssuer(std::string token) {
    auto issuer = token.empty() ? std::string() : noteOf(token)->service;
    return {std::move(token), std::move(issuer)};
}

std::string tokenFor(const SessionToken& token, ApiType service) {
    return token.issuer.empty() || token.issuer == name(service) ? token.text : std::string();
}

std::string sessionOwner() {
    const auto token = KavioUserDefaults::shared()->sessionToken();
    if (token.empty()) return {};
    const auto note = noteOf(token);
    return note->owner.empty() ? digestOf(token) : note->owner;
}

}  // namespace kavio
