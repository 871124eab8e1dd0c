#include "command_line/help.h"
#include "command_line/start.h"
#include "command_line/translation.h"
#include "driver/driver.h"
#include "host/host.h"
#include "host/output.h"
#include "options.h"
#include "people/command.h"
#include "people/interruption.h"
#include "wording/language.h"
#include "wording/text.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <vector>

namespace kavio::wallet {

namespace {

std::string closingWords() {
    return tr(
        "Log in first: kavio-wallet login 49 151234567 --country DE\n"
        "For help on a command: kavio-wallet help COMMAND\n\n"
        "Exit status: 0 done, 1 failed, 2 wrong usage, 3 not logged in, 4 no usable reply, 5 took too long, "
        "6 input refused, 7 the service failed, 130 interrupted.");
}

/// What the user asks for.
struct CommandLine {
    Options options;
    bool isDriver = false;
    bool isJson = false;
    std::vector<Command> commands;
    CLI::App program{tr("Pay at unattended vending points from the terminal."), "kavio-wallet"};

    CommandLine() {
        // A command passes on options that it does not know, so that those of the whole program may follow it.
        program.fallthrough();
        program.set_version_flag("-V,--version", KAVIO_WALLET_VERSION, tr("Show the program's version and exit"));
        addOptions(program, options);
        program.add_flag("--jsonl", isDriver, tr("For programs: read operations and write reports as JSON lines"));
        for (const auto make : {loginCommand, statusCommand, logoutCommand, methodsCommand, addCardCommand,
                                removeCardCommand, topUpCommand, machinesCommand, productsCommand, buyCommand,
                                orderCommand, transactionsCommand, unsettledCommand, settleCommand, forgetCommand}) {
            commands.push_back(make(program));
            commands.back().line->add_flag("--json", isJson, tr("Write reports as JSON lines, like --jsonl"));
        }
        command_line::addHelpCommands(program);
        program.footer(closingWords());  // last: commands would inherit it
        program.require_subcommand(0, 1);
    }

    /// Null if none was given.
    const Command* command() const {
        const auto chosen = std::ranges::find_if(commands, [](const Command& c) { return c.line->parsed(); });
        return chosen == commands.end() ? nullptr : &*chosen;
    }
};

/// Writes one line, whatever the sentence quotes.
void complain(std::string_view sentence) { writeText(stderr, fmt::format("kavio-wallet: {}\n", printable(sentence))); }

std::unique_ptr<Host> makeHost(const CommandLine& line) {
    const auto* const command = line.command();
    if (line.options.withWindow || (command != nullptr && command->wantsWindow())) {
        std::string reason;
        if (auto host = makeWindowHost(line.options, reason)) return host;
        // A program learns from the reports that there is no window; a person who asked for one should be told why.
        if (line.options.withWindow && !line.isDriver) throw Failure(ExitStatus::USAGE, "--window: " + reason);
    }
    return makeTerminalHost(line.options);
}

int serve(Host& host, const Options& options) {
    driver::Facades facades{writeLine};
    if (!options.withoutFacade) facades.create("main", options.apiKey, options.environment);
    driver::drive(std::cin, facades, [&](const auto& done, auto limit) { return host.runUntil(done, limit); });
    // At once, as when an application quits, without waiting for work under way.
    std::_Exit(EXIT_SUCCESS);
}

/// What programs read must not depend on the language.
bool isForPrograms(int argc, char** argv) {
    return std::any_of(argv, argv + argc, [](const char* word) { return std::string_view{word} == "--jsonl"; });
}

int run(int argc, char** argv) {
    if (!isForPrograms(argc, argv)) speakOwnLanguage();
    CommandLine line;
    if (!command_line::parse(line.program, argc, argv)) return EXIT_SUCCESS;
    const auto* const command = line.command();
    try {
        if (line.isDriver == (command != nullptr))
            throw Failure(ExitStatus::USAGE, tr("Give either a command or --jsonl; see kavio-wallet help."));
        const auto host = makeHost(line);
        if (line.isDriver) return serve(*host, line.options);
        Session session{*host, line.options, line.isJson};
        command->run(session);
        return EXIT_SUCCESS;
    } catch (const Failure& failure) {
        complain(failure.what());
        if (failure.status == ExitStatus::INTERRUPTED) endInterrupted();
        return static_cast<int>(failure.status);
    }
}

}  // namespace

}  // namespace kavio::wallet

int main(int argc, char** argv) {
    return kavio::command_line::start([&] { return kavio::wallet::run(argc, argv); }, kavio::wallet::complain);
}
