#pragma once

#include <kavio/result.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace kavio::wallet {

/// What the program tells the shell; docs/wallet.md lists them for scripts.
enum class ExitStatus : int {
    OK = 0,
    FAILED = 1,
    USAGE = 2,
    NOT_LOGGED_IN = 3,
    NO_NETWORK = 4,
    TIMED_OUT = 5,
    REFUSED = 6,
    SERVICE_FAILED = 7,
};

/// Why a command ends without having done its work, as a sentence for people.
struct Failure : std::runtime_error {
    Failure(ExitStatus exitStatus, const std::string& sentence) : std::runtime_error(sentence), status(exitStatus) {}

    ExitStatus status;
    /// Whether what was asked for may have happened all the same: no reply says that it did not.
    bool leavesOpen = false;

    /// The same, followed by what to look at when it may have happened.
    Failure withHint(std::string_view hint) const;
};

/// "what: message." or, without a message, "what."; the message is cut where it is no sentence.
std::string sentence(std::string_view what, const std::optional<std::string>& message);

/// What a result other than `SUCCESS` means to the user.
Failure failureOf(const KavioResult& result);

}  // namespace kavio::wallet
