#include "help.h"

#include "columns.h"
#include "mistakes.h"
#include "translation.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <memory>

namespace kavio::command_line {

namespace {

/// On a terminal narrower than this, descriptions stand below the names instead of beside them.
constexpr std::size_t narrow = 60;

class HelpFormatter final : public CLI::Formatter {
public:
    explicit HelpFormatter(std::optional<std::size_t> width) : mWidth(width) {
        column_width(width && *width < narrow ? 6 : 30);
        label("Usage", tr("Usage"));
        label("OPTIONS", tr("OPTIONS"));
        label("Positionals", tr("Arguments"));
        label("SUBCOMMAND", tr("COMMAND"));
    }

    std::string make_description(const CLI::App* app) const override {
        return wrapped(app->get_description() + '\n', mWidth);
    }
    std::string make_usage(const CLI::App* app, std::string name) const override {
        return wrapped(Formatter::make_usage(app, std::move(name)), mWidth, 2);
    }
    std::string make_option(const CLI::Option* option, bool isPositional) const override {
        return wrapped(Formatter::make_option(option, isPositional), mWidth, column_width_);
    }
    /// Descriptions say what goes with what.
    std::string make_option_opts(const CLI::Option* option) const override {
        if (option->get_positional() || option->get_type_name().empty()) return {};
        const auto& standard = option->get_default_str();
        return ' ' + option->get_type_name() + (standard.empty() ? "" : '=' + standard);
    }
    std::string make_subcommand(const CLI::App* command) const override {
        return wrapped(Formatter::make_subcommand(command), mWidth, column_width_);
    }
    std::string make_footer(const CLI::App* app) const override {
        const auto footer = Formatter::make_footer(app);
        return wrapped(footer, mWidth, footer.starts_with(' ') ? 4 : 0);
    }

private:
    const std::optional<std::size_t> mWidth;
};

const CLI::App& commandNamed(const CLI::App& program, const std::string& name) {
    const auto names = commandNames(program);
    if (std::ranges::find(names, name) != names.end()) return *program.get_subcommand(name);
    throw CLI::ParseError(tr("There is no command '{}'{}", name, didYouMean(name, names)), CLI::ExitCodes::ExtrasError);
}

}  // namespace

void addHelpCommands(CLI::App& program) {
    auto* const help = program.add_subcommand("help", tr("Show help on the program or on a command"));
    const auto topic = std::make_shared<std::string>();
    help->add_option("COMMAND", *topic, tr("The command to show help on"));
    help->parse_complete_callback([&program, topic] {
        const auto& formatter = *program.get_formatter();
        std::cout << (topic->empty() ? formatter.make_help(&program, program.get_name(), CLI::AppFormatMode::Normal)
                                     : commandNamed(program, *topic).help(program.get_name()));
        throw CLI::Success();
    });
    auto* const version = program.add_subcommand("version", tr("Show the program's version"));
    version->parse_complete_callback([&program] {
        std::cout << program.version() << '\n';
        throw CLI::Success();
    });
}

void addExamples(CLI::App& command, std::initializer_list<std::string_view> examples) {
    auto text = command.get_footer();
    if (!text.empty()) text += "\n\n";
    text += tr("Examples:");
    for (const auto example : examples)
        text += fmt::format("\n  {} {}{}{}", command.get_parent()->get_name(), command.get_name(),
                            example.empty() ? "" : " ", example);
    command.footer(text);
}

void prepareHelp(CLI::App& program) {
    const auto formatter = std::make_shared<HelpFormatter>(outputWidth());
    auto apps = program.get_subcommands([](CLI::App*) { return true; });
    for (auto* command : apps) command->group(tr("Commands"));
    apps.push_back(&program);
    for (auto* app : apps) {
        app->formatter(formatter);
        for (auto* option : app->get_options()) option->group(tr("Options"));
        app->get_help_ptr()->description(tr("Show this help and exit"));
    }
}

}  // namespace kavio::command_line
