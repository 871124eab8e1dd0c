#pragma once

#include <kavio/result.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace kavio::wallet {

/// The program's exit statuses, which docs/wallet.md explains.
enum class ExitStatus : int {
    OK = 0,
    FAILED = 1,
    USAGE = 2,
    NOT_LOGGED_IN = 3,
    NO_NETWORK = 4,
    TIMED_OUT = 5,
    REFUSED = 6,
    SERVICE_FAILED = 7,
    INTERRUPTED = 130,  ///< what a shell reports when Ctrl-C ends a program
};

/// Why a command could not do its work, as a sentence for people.
struct Failure : std::runtime_error {
    Failure(ExitStatus exitStatus, const std::string& sentence) : std::runtime_error(sentence), status(exitStatus) {}

    ExitStatus status;
    /// Whether it may have been done anyway.
    bool leavesOpen = false;

    /// Why the library says that it failed; `NONE` if the command itself gave up.
    Cause cause = Cause::NONE;

    /// The sentence instead, if that was the cause.
    Failure saying(Cause why, const std::string& sentence) const;
    /// The same, followed by the hint if it may have been done anyway.
    Failure withHint(std::string_view hint) const;
};

/// "what: message." or, without a message, "what."; a message that is too long is cut.
std::string sentence(std::string_view what, const std::optional<std::string>& message);

/// What a result other than `SUCCESS` means for the user.
Failure failureOf(const KavioResult& result);

}  // namespace kavio::wallet
