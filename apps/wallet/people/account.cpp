#include "command_line/help.h"
#include "command_line/translation.h"
#include "people/command.h"
#include "people/payment.h"
#include "people/terminal.h"
#include "wording/language.h"
#include "wording/text.h"

#include <kavio/user_defaults.h>

#include <memory>

namespace kavio::wallet {

namespace {

constexpr int codesToTry = 3;

struct Login {
    std::string countryCode;
    std::string phoneNumber;
    std::string country = ownCountry();
};

/// Whether the code may have been mistyped; nothing else is a reason to ask for it again. There is no session yet that
/// could be refused instead.
bool isWrongCode(const KavioResult& result) {
    return result.cause == Cause::REFUSED_BY_SERVICE || result.cause == Cause::SESSION_REFUSED;
}

/// A session that is lost when the program ends would be useless. One that was stored earlier remains.
void requireStore() {
    if (!userDefaults()->isKept())
        throw Failure(ExitStatus::FAILED,
                      tr("The session cannot be stored: its folder (--store-dir) is not writable."));
}

// The service's challenge is kept only in memory, so the code must be entered in the process that asked for it.
void logIn(Session& session, const Login& login) {
    if (login.country.empty())
        throw Failure(ExitStatus::USAGE, tr("Give the phone's country with --country, such as DE."));
    requireStore();
    session.perform(
        tr("Asking for a code"), [&](Kavio& kavio) { kavio.login(login.countryCode, login.phoneNumber); },
        WhenClockIsWrong::TRY_AGAIN);
    session.say(tr("A code was sent to +{} {}.", login.countryCode, login.phoneNumber));

    for (int attempt = 1;; ++attempt) {
        const auto code = readLine(tr("Code"));
        if (!code || code->empty())
            throw Failure(ExitStatus::REFUSED, tr("No code was entered, so nothing has changed."));
        const auto report = session.ask(
            tr("Checking the code"),
            [&](Kavio& kavio) { kavio.verify(*code, login.country, login.countryCode, login.phoneNumber); },
            WhenClockIsWrong::TRY_AGAIN);
        const auto& result = *report.result;
        if (result.type == ResultType::SUCCESS) break;
        if (!isWrongCode(result)) throw failureOf(result);
        if (attempt == codesToTry)
            throw Failure(ExitStatus::REFUSED, tr("No code was accepted, so nothing has changed."));
        session.warn(sentence(tr("The code was not accepted"), result.message));
    }
    requireStore();
    session.say(tr("You are logged in."));
}

}  // namespace

Command loginCommand(CLI::App& program) {
    auto* const line = program.add_subcommand("login", tr("Log in: sends a code to your phone and asks for it"));
    const auto login = std::make_shared<Login>();
    line->add_option("COUNTRYCODE", login->countryCode, tr("The phone's country code, such as 49"))->required();
    line->add_option("PHONE", login->phoneNumber, tr("The phone number without the country code"))->required();
    line->add_option("--country", login->country, tr("The phone's country, such as DE (default: from your locale)"));
    line->footer(tr("The code is read from standard input if that is not a terminal."));
    command_line::addExamples(*line, {"49 151234567 --country DE", "+1 2125550123 --country US"});
    return {line, [login](Session& session) {
                auto plain = *login;
                if (plain.countryCode.starts_with('+')) plain.countryCode.erase(0, 1);
                logIn(session, plain);
            }};
}

Command statusCommand(CLI::App& program) {
    auto* const line =
        program.add_subcommand("status", tr("Show whether you are logged in, and whether a payment is in doubt"));
    return {line, [](Session& session) {
                if (const auto sentence = unsettledSentence(session); !sentence.empty()) session.say(sentence);
                session.perform(
                    tr("Asking the service"), [](Kavio& kavio) { kavio.isLoggedIn(); }, WhenClockIsWrong::TRY_AGAIN);
                session.say(tr("You are logged in."));
            }};
}

Command logoutCommand(CLI::App& program) {
    auto* const line = program.add_subcommand("logout", tr("Log out"));
    return {line, [](Session& session) {
                session.perform(tr("Logging out"), [](Kavio& kavio) { kavio.logout(); });
                session.say(tr("You are logged out."));
            }};
}

}  // namespace kavio::wallet
