#include "command_line/help.h"
#include "command_line/numbers.h"
#include "driver/arguments.h"
#include "people/command.h"
#include "people/terminal.h"
#include "people/text.h"

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <utility>

namespace kavio::wallet {

using driver::Refused;
using driver::Value;

namespace {

/// One line that the user enters.
struct Field {
    std::string_view member;
    std::string_view prompt;
    Echo echo = Echo::ON;
    bool isInteger = false;
};
using Fields = std::initializer_list<Field>;

const Fields plainFields{
    {"pan", "Card number", Echo::OFF},   {"month", "Expiry month (MM)"}, {"year", "Expiry year (YYYY)"},
    {"cvv", "Security code", Echo::OFF}, {"email", "E-mail address"},
};
const Fields secureFields{
    {"number", "Card number", Echo::OFF},
    {"month", "Expiry month (MM)", Echo::ON, true},
    {"year", "Expiry year (YYYY)", Echo::ON, true},
    {"securityCode", "Security code", Echo::OFF, true},
    {"name", "Name on the card"},
    {"email", "E-mail address"},
};

driver::Input valueOf(const Field& field, const std::string& text) {
    if (!field.isInteger) return text;
    if (const auto number = command_line::numberFrom<std::int64_t>(text)) return *number;
    throw Refused(fmt::format("\"{}\" must be an integer", field.member));
}

/// Reads the card as an object with the fields' members, line by line or, if not from a terminal, as one JSON object.
driver::Input readCard(Fields fields) {
    auto card = driver::Input::object();
    for (const auto& field : fields) {
        const auto line = readLine(field.prompt, field.echo);
        if (!line) throw Refused(fmt::format("\"{}\" is missing", field.member));
        const auto begin = std::min(line->find_first_not_of(" \t"), line->size());
        if (card.empty() && !isInputTerminal() && line->substr(begin).starts_with('{'))
            return driver::parseLine(*line + readRest());
        card[std::string{field.member}] = valueOf(field, *line);
    }
    return card;
}

CardReport storing(Session& session, std::string what, const Session::Operation& operation) {
    try {
        return session.fetch<CardReport>(std::move(what), operation);
    } catch (const Failure& failure) {
        throw failure.withHint("It may have been stored anyway: check `kavio-wallet methods` before you try again.");
    }
}

void addPlain(Session& session) {
    const auto input = readCard(plainFields);
    std::shared_ptr<const Card> card;
    read(Value{input, "card"}, card);
    const auto added = storing(session, "Storing the card", [&](Kavio& kavio) { kavio.addCreditCard(card); });
    session.say(added
                    ? fmt::format("The card {} was stored as card:{}.", printable(added->number), printable(added->id))
                    : "The card was stored.");
}

void addSecure(Session& session) {
    const auto input = readCard(secureFields);
    TDSPaymentCard card;
    TDSCardHolder holder;
    read(Value{input, "card"}, card);
    read(Value{input, "card"}, holder);
    storing(session, "Storing the card; please answer the issuer's page if one opens",
            [&](Kavio& kavio) { kavio.addCreditCardTDSecure(card, holder); });
    session.say("The card was stored.");
}

void addCard(Session& session, bool isSecure) {
    try {
        isSecure ? addSecure(session) : addPlain(session);
    } catch (const Refused& problem) {
        throw Failure(ExitStatus::REFUSED, fmt::format("The card could not be read: {}.", problem.what()));
    }
}

}  // namespace

Command addCardCommand(CLI::App& program) {
    auto* const line =
        program.add_subcommand("add-card", "Store a credit card: asks for it, or reads it from standard input");
    const auto isSecure = std::make_shared<bool>(false);
    line->add_flag("--secure", *isSecure, "Let the issuer check the card with 3-D Secure (opens a window)");
    line->footer(
        "Card data is never taken from the command line, where others could see it. If standard input is not a "
        "terminal, the card is read from there: either one line each for number, month, year, security code and "
        "e-mail address (with --secure, the name comes before the address), or one JSON object with pan, month, "
        "year, cvv and email; with --secure, with number, month, year, securityCode, name, email and optionally the "
        "holder's address as streetNumber, streetName, city, territory, country and postal.");
    command_line::addExamples(*line, {"", "--secure", "< card.txt"});
    return {line, [isSecure](Session& session) { addCard(session, *isSecure); }, [isSecure] { return *isSecure; }};
}

}  // namespace kavio::wallet
