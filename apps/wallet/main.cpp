#include "host.h"
#include "jsonl/driver.h"
#include "options.h"
#include "output.h"
#include "people/command.h"
#include "people/text.h"

#include <CLI/CLI.hpp>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <vector>

namespace kavio::wallet {

namespace {

constexpr auto about = "Pay at unattended vending points from the terminal.";

constexpr auto exitStatuses =
    "Exit status: 0 done, 1 failed, 2 wrong use, 3 not logged in, 4 no reply, 5 took too long, 6 refused input,\n"
    "7 the service failed.\n"
    "Log in first: kavio-wallet login 49 151234567 --country DE\n"
    "`kavio-wallet COMMAND --help` explains a command.";

/// What the command line asks for.
struct CommandLine {
    Options options;
    bool isDriver = false;
    bool isJson = false;
    std::vector<Command> commands;
    CLI::App program{about, "kavio-wallet"};

    CommandLine() {
        // A command passes on what it does not know, so that options of the whole program may stand behind it.
        program.fallthrough();
        program.set_version_flag("--version", KAVIO_WALLET_VERSION);
        addOptions(program, options);
        program.add_flag("--jsonl", isDriver, "For programs: operations in, reports out, as JSON lines");
        for (const auto make :
             {loginCommand, statusCommand, logoutCommand, methodsCommand, addCardCommand, removeCardCommand,
              topUpCommand, machinesCommand, productsCommand, buyCommand, orderCommand, transactionsCommand}) {
            commands.push_back(make(program));
            commands.back().line->add_flag("--json", isJson, "Write the reports as JSON lines, as --jsonl does");
        }
        program.footer(exitStatuses);  // last: commands would take it over
        program.require_subcommand(0, 1);
    }

    /// Null when none was given.
    const Command* command() const {
        const auto chosen = std::ranges::find_if(commands, [](const Command& c) { return c.line->parsed(); });
        return chosen == commands.end() ? nullptr : &*chosen;
    }
};

/// One line, whatever the sentence quotes.
int complain(ExitStatus status, std::string_view sentence) {
    writeText(stderr, fmt::format("kavio-wallet: {}\n", printable(sentence)));
    return static_cast<int>(status);
}

/// A descriptor of the library's must not take the number of a standard one that is closed. Reading such a one ends at
/// once, writing fails.
void openStandardDescriptors() {
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(standard, F_GETFD) < 0) static_cast<void>(open("/dev/null", O_RDONLY));  // takes the lowest number
    }
}

/// The work is done, but whoever is to read of it must know that this is not all.
int succeed() {
    if (isOutputComplete()) return static_cast<int>(ExitStatus::OK);
    return complain(ExitStatus::FAILED, "Standard output took no more: not all is shown.");
}

std::unique_ptr<Host> makeHost(const CommandLine& line) {
    const auto* const command = line.command();
    if (line.options.withWindow || (command != nullptr && command->wantsWindow())) {
        std::string reason;
        if (auto host = makeWindowHost(line.options, reason)) return host;
        // A program learns from the reports that there is no window; a person who asked for one wants to know why.
        if (line.options.withWindow && !line.isDriver) throw Failure(ExitStatus::USAGE, "--window: " + reason);
    }
    return makeTerminalHost(line.options);
}

int drive(Host& host, const Options& options) {
    Driver driver{host, std::cin};
    if (!options.withoutFacade) driver.create("main", options.apiKey, options.environment);
    driver.run();
    // At once, as when an application quits: work under way is not waited for.
    std::_Exit(EXIT_SUCCESS);
}

int run(int argc, char** argv) {
    CommandLine line;
    try {
        line.program.parse(argc, argv);
    } catch (const CLI::ParseError& problem) {
        if (problem.get_exit_code() != 0) return complain(ExitStatus::USAGE, problem.what());
        line.program.exit(problem);  // --help and --version
        return succeed();
    }
    const auto* const command = line.command();
    if (line.isDriver == (command != nullptr)) {
        return complain(ExitStatus::USAGE, "give either one command or --jsonl; see kavio-wallet --help");
    }
    try {
        const auto host = makeHost(line);
        if (line.isDriver) return drive(*host, line.options);
        Session session{*host, line.options, line.isJson};
        command->run(session);
        return succeed();
    } catch (const Failure& failure) {
        return complain(failure.status, failure.what());
    }
}

}  // namespace

}  // namespace kavio::wallet

int main(int argc, char** argv) {
    kavio::wallet::openStandardDescriptors();
    std::signal(SIGPIPE, SIG_IGN);  // a reader that leaves must not end the program in the middle of an order
    std::ios::sync_with_stdio(false);
    try {
        return kavio::wallet::run(argc, argv);
    } catch (const std::exception& problem) {
        return kavio::wallet::complain(kavio::wallet::ExitStatus::FAILED, problem.what());
    }
}
