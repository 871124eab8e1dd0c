#include "command_line/help.h"
#include "command_line/numbers.h"
#include "command_line/translation.h"
#include "driver/arguments.h"
#include "people/command.h"
#include "people/terminal.h"
#include "wording/card_fields.h"
#include "wording/text.h"

#include <kavio/platform/platform.h>

#include <algorithm>
#include <chrono>
#include <initializer_list>
#include <memory>
#include <utility>

namespace kavio::wallet {

using driver::Refused;
using driver::Value;

namespace {

/// One thing that the user enters.
struct Entry {
    CardField field;
    std::string_view member;
    const char* prompt;
    Echo echo = Echo::ON;
    bool isInteger = false;
};
using Entries = std::initializer_list<Entry>;

const Entries plainEntries{
    {CardField::NUMBER, "pan", later("Card number"), Echo::OFF},
    {CardField::MONTH, "month", later("Expiry month (MM)")},
    {CardField::YEAR, "year", later("Expiry year (YYYY)")},
    {CardField::SECURITY_CODE, "cvv", later("Security code"), Echo::OFF},
    {CardField::ADDRESS, "email", later("E-mail address")},
};
const Entries secureEntries{
    {CardField::NUMBER, "number", later("Card number"), Echo::OFF},
    {CardField::MONTH, "month", later("Expiry month (MM)"), Echo::ON, true},
    {CardField::YEAR, "year", later("Expiry year (YYYY)"), Echo::ON, true},
    {CardField::SECURITY_CODE, "securityCode", later("Security code"), Echo::OFF, true},
    {CardField::NAME, "name", later("Name on the card")},
    {CardField::ADDRESS, "email", later("E-mail address")},
};

CardJudge judge() {
    const auto now = std::chrono::sys_seconds(
        std::chrono::duration_cast<std::chrono::seconds>(Platform::current().clock->now().time_since_epoch()));
    const std::chrono::year_month_day today{std::chrono::floor<std::chrono::days>(now)};
    return CardJudge{today.year() / today.month()};
}

std::string requiredLine(const Entry& entry) {
    if (auto line = readLine(gettext(entry.prompt), entry.echo)) return *std::move(line);
    throw Failure(ExitStatus::REFUSED, tr("The card was not stored: the input ended before it was complete."));
}

/// Asks until the answer can be right; what does not come from a terminal has only one chance.
std::string entered(const Session& session, const Entry& entry, CardJudge& judge, std::string line) {
    for (;;) {
        auto text = tidied(entry.field, line);
        const auto problem = judge.problemWith(entry.field, text);
        if (problem.empty()) return text;
        if (!isInputTerminal()) throw Failure(ExitStatus::REFUSED, problem);
        session.warn(problem);
        line = requiredLine(entry);
    }
}

/// A card that came as one JSON object.
driver::Input judged(const Session& session, driver::Input card, Entries entries) {
    auto judge = wallet::judge();
    for (const auto& entry : entries) {
        const auto member = card.find(entry.member);
        if (member == card.end()) continue;
        if (member->is_string()) *member = entered(session, entry, judge, member->get<std::string>());
        // The zeros at the front of a security code.
        if (member->is_number_integer())
            entered(session, entry, judge, fmt::format("{:03}", member->get<std::int64_t>()));
    }
    return card;
}

/// Reads the card as an object with the entries' members, line by line or, if not from a terminal, as one JSON object.
driver::Input readCard(const Session& session, Entries entries) {
    auto judge = wallet::judge();
    auto card = driver::Input::object();
    for (const auto& entry : entries) {
        const auto line = requiredLine(entry);
        const auto begin = std::min(line.find_first_not_of(" \t"), line.size());
        if (card.empty() && !isInputTerminal() && line.substr(begin).starts_with('{'))
            return judged(session, driver::parseLine(line + readRest()), entries);
        const auto text = entered(session, entry, judge, line);
        auto& member = card[std::string{entry.member}];
        if (entry.isInteger)
            member = command_line::numberFrom<std::int64_t>(text).value_or(0);
        else
            member = text;
    }
    return card;
}

CardReport storing(Session& session, std::string what, const Session::Operation& operation) {
    try {
        return session.fetch<CardReport>(std::move(what), operation);
    } catch (const Failure& failure) {
        throw failure.withHint(
            tr("It may have been stored anyway: check `kavio-wallet methods` before you try again."));
    }
}

void addPlain(Session& session) {
    const auto input = readCard(session, plainEntries);
    std::shared_ptr<const Card> card;
    read(Value{input, "card"}, card);
    const auto added = storing(session, tr("Storing the card"), [&](Kavio& kavio) { kavio.addCreditCard(card); });
    session.say(added ? tr("The card {} was stored as card:{}.", printable(added->number), printable(added->id))
                      : tr("The card was stored."));
}

void addSecure(Session& session) {
    const auto input = readCard(session, secureEntries);
    TDSPaymentCard card;
    TDSCardHolder holder;
    read(Value{input, "card"}, card);
    read(Value{input, "card"}, holder);
    storing(session, tr("Storing the card; please answer the issuer's page if one opens"),
            [&](Kavio& kavio) { kavio.addCreditCardTDSecure(card, holder); });
    session.say(tr("The card was stored."));
}

void addCard(Session& session, bool isSecure) {
    try {
        isSecure ? addSecure(session) : addPlain(session);
    } catch (const Refused& problem) {
        throw Failure(ExitStatus::REFUSED, tr("The card could not be read: {}.", problem.what()));
    }
}

}  // namespace

Command addCardCommand(CLI::App& program) {
    auto* const line =
        program.add_subcommand("add-card", tr("Store a credit card: asks for it, or reads it from standard input"));
    const auto isSecure = std::make_shared<bool>(false);
    line->add_flag("--secure", *isSecure, tr("Let the issuer check the card with 3-D Secure (opens a window)"));
    line->footer(
        tr("Card data is never taken from the command line, where others could see it. If standard input is not a "
           "terminal, the card is read from there: either one line each for number, month, year, security code and "
           "e-mail address (with --secure, the name comes before the address), or one JSON object with pan, month, "
           "year, cvv and email; with --secure, with number, month, year, securityCode, name, email and optionally the "
           "holder's address as streetNumber, streetName, city, territory, country and postal."));
    command_line::addExamples(*line, {"", "--secure", "< card.txt"});
    return {line, [isSecure](Session& session) { addCard(session, *isSecure); }, [isSecure] { return *isSecure; }};
}

}  // namespace kavio::wallet
