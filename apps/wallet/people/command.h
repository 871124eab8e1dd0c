#pragma once

#include "people/session.h"

#include <CLI/CLI.hpp>

#include <functional>

namespace kavio::wallet {

/// A subcommand for people: its command line, and what it does.
struct Command {
    /// Once the command line has been read, this tells whether the command was chosen.
    CLI::App* line;
    /// Throws `Failure` if the work could not be done.
    std::function<void(Session&)> run;
    /// Whether a page may have to be shown; if so, and if there is a display, a window is opened.
    std::function<bool()> wantsWindow = [] { return false; };
};

// Each adds itself to the program's command line. The values that it reads live as long as the command.
Command loginCommand(CLI::App& program);
Command statusCommand(CLI::App& program);
Command logoutCommand(CLI::App& program);
Command methodsCommand(CLI::App& program);
Command addCardCommand(CLI::App& program);
Command removeCardCommand(CLI::App& program);
Command topUpCommand(CLI::App& program);
Command machinesCommand(CLI::App& program);
Command productsCommand(CLI::App& program);
Command buyCommand(CLI::App& program);
Command orderCommand(CLI::App& program);
Command transactionsCommand(CLI::App& program);
Command unsettledCommand(CLI::App& program);
Command settleCommand(CLI::App& program);
Command forgetCommand(CLI::App& program);

}  // namespace kavio::wallet
