#include "documentation.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace kavio::command_line {

namespace {

using Options = std::vector<const CLI::Option*>;
using Names = std::vector<std::string>;

bool takesValue(const CLI::Option& option) { return !option.get_type_name().empty(); }

bool takesPath(const CLI::Option& option) {
    const auto type = option.get_type_name();
    return type == "FILE" || type == "DIR";
}

/// What has a place on the command line instead of a name.
Options arguments(const CLI::App& app) {
    return app.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

Options options(const CLI::App& app) {
    return app.get_options([](const CLI::Option* option) { return !option->get_positional(); });
}

std::vector<const CLI::App*> commands(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App*) { return true; });
}

/// Such as "-h" and "--help".
Names names(const CLI::Option& option) {
    Names all;
    for (const auto& name : option.get_snames()) all.push_back("-" + name);
    for (const auto& name : option.get_lnames()) all.push_back("--" + name);
    return all;
}

Names names(const Options& options) {
    Names all;
    for (const auto* option : options) std::ranges::copy(names(*option), std::back_inserter(all));
    return all;
}

Names names(const std::vector<const CLI::App*>& commands) {
    Names all;
    for (const auto* command : commands) all.push_back(command->get_name());
    return all;
}

/// The options that only this command has: those of the whole program may follow it, too.
Options ownOptions(const CLI::App& command) {
    const auto others = names(options(*command.get_parent()));
    auto own = options(command);
    std::erase_if(
        own, [&](const auto* option) { return std::ranges::find(others, names(*option).front()) != others.end(); });
    return own;
}

/// Replaces each character that has an escape.
std::string escaped(std::string_view text, const std::map<char, std::string_view>& escapes) {
    std::string done;
    for (const char c : text) {
        const auto found = escapes.find(c);
        done += found == escapes.end() ? std::string_view(&c, 1) : found->second;
    }
    return done;
}

// The manual page.

std::string roff(std::string_view text) {
    std::string done;
    for (const char c : text) {
        const bool isRequest = (c == '.' || c == '\'') && (done.empty() || done.back() == '\n');
        done += (isRequest ? "\\&" : "") + escaped({&c, 1}, {{'\\', "\\e"}, {'-', "\\-"}, {'`', "\\(ga"}});
    }
    return done;
}

std::string bold(std::string_view text) { return "\\fB" + roff(text) + "\\fR"; }
std::string italic(std::string_view text) { return "\\fI" + roff(text) + "\\fR"; }

std::string manualEntry(const CLI::Option& option) {
    std::string entry = ".TP\n";
    if (option.get_positional()) {
        entry += italic(option.get_name(true));
    } else {
        Names shown;
        for (const auto& name : names(option)) shown.push_back(bold(name));
        entry += fmt::to_string(fmt::join(shown, ", "));
        if (takesValue(option)) entry += " " + italic(option.get_type_name());
    }
    entry += "\n" + roff(option.get_description());
    if (const auto usual = option.get_default_str(); !usual.empty()) entry += roff(" (default: " + usual + ")");
    return entry + "\n";
}

std::string manualEntries(const CLI::App& app) {
    std::string entries;
    for (const auto& group : {arguments(app), options(app)}) {
        for (const auto* option : group) entries += manualEntry(*option);
    }
    return entries;
}

/// Paragraphs, with examples in lines as they are.
std::string manualFooter(const CLI::App& app) {
    std::string page;
    std::istringstream lines{app.get_footer()};
    for (std::string line; std::getline(lines, line);) {
        if (line.empty()) continue;
        page += line.starts_with(' ') ? ".nf\n" + roff(line) + "\n.fi\n" : ".PP\n" + roff(line) + "\n";
    }
    return page;
}

std::string manualSection(const CLI::App& command) {
    auto section = fmt::format(".SS \"{} [{}]...", bold(command.get_name()), italic("OPTION"));
    for (const auto* argument : arguments(command)) {
        const auto shown = italic(argument->get_name(true));
        section += argument->get_required() ? " " + shown : " [" + shown + "]";
    }
    section += fmt::format("\"\n{}\n{}", roff(command.get_description()), manualEntries(command));
    return section + manualFooter(command);
}

std::string manual(const CLI::App& program) {
    const auto& name = program.get_name();
    auto page = fmt::format(".TH {} 1 \"\" Kavio \"User Commands\"\n.SH NAME\n{} \\- {}\n.SH SYNOPSIS\n{} [{}]...",
                            roff(name), roff(name), roff(program.get_description()), bold(name), italic("OPTION"));
    const auto all = commands(program);
    if (!all.empty()) page += fmt::format(" [{} [{}]...]", italic("COMMAND"), italic("ARGUMENT"));
    page += "\n.SH OPTIONS\n" + manualEntries(program);
    if (!all.empty()) page += ".SH COMMANDS\nThe options of the whole program may follow a command, too.\n";
    for (const auto* command : all) page += manualSection(*command);
    const auto footer = manualFooter(program);
    return footer.empty() ? page : page + ".SH NOTES\n" + footer;
}

// Completion in shells. After an option that takes a value, bash is left to complete file names.

/// The function that completes for the program, which may not contain every character of its name.
std::string functionName(const CLI::App& program) { return "_" + escaped(program.get_name(), {{'-', "_"}}); }

std::string bash(const CLI::App& program) {
    const auto all = commands(program);
    auto withValue = options(program);
    for (const auto* command : all) std::ranges::copy(options(*command), std::back_inserter(withValue));
    std::erase_if(withValue, [](const auto* option) { return !takesValue(*option); });
    const auto valuedNames = names(withValue);
    const auto valued = fmt::to_string(fmt::join(std::set(valuedNames.begin(), valuedNames.end()), "|"));

    std::string cases;
    for (const auto* command : all)
        cases +=
            fmt::format("    {}) words+=' {}' ;;\n", command->get_name(), fmt::join(names(ownOptions(*command)), " "));
    return fmt::format(R"({function}() {{
    local command='' i words='{options}'
    for ((i = 1; i < COMP_CWORD; ++i)); do
        case ${{COMP_WORDS[i]}} in
        {valued}) ((++i)) ;;
        -*) ;;
        *) command=${{COMP_WORDS[i]}} && break ;;
        esac
    done
    case ${{COMP_WORDS[COMP_CWORD - 1]}} in
    {valued}) return ;;
    esac
    case $command in
    '') words+=' {commands}' ;;
{cases}    esac
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "${{COMP_WORDS[COMP_CWORD]}}")
}}
complete -o default -F {function} {program}
)",
                       fmt::arg("function", functionName(program)), fmt::arg("program", program.get_name()),
                       fmt::arg("options", fmt::join(names(options(program)), " ")), fmt::arg("valued", valued),
                       fmt::arg("commands", fmt::join(names(all), " ")), fmt::arg("cases", cases));
}

std::string zshQuoted(std::string_view text) { return "'" + escaped(text, {{'\'', "'\\''"}}) + "'"; }

/// As a part of what `_arguments` is told.
std::string zshPart(std::string_view text) {
    return escaped(text, {{'\\', "\\\\"}, {':', "\\:"}, {'[', "\\["}, {']', "\\]"}});
}

std::string zshOptions(const Options& options) {
    std::string all;
    for (const auto* option : options) {
        const auto value = !takesValue(*option) ? ""
                                                : fmt::format(":{}:{}", zshPart(option->get_type_name()),
                                                              takesPath(*option) ? "_files" : "");
        for (const auto& name : names(*option))
            all += " " + zshQuoted(fmt::format("{}[{}]{}", name, zshPart(option->get_description()), value));
    }
    return all;
}

std::string zsh(const CLI::App& program) {
    const auto all = commands(program);
    const auto head =
        fmt::format("#compdef {}\nlocal -a everywhere=({})\n", program.get_name(), zshOptions(options(program)));
    if (all.empty()) return head + "_arguments $everywhere\n";
    std::string described;
    std::string cases;
    for (const auto* command : all) {
        described += " " + zshQuoted(command->get_name() + ":" + command->get_description());
        cases += fmt::format("    {}) _arguments $everywhere{}", command->get_name(), zshOptions(ownOptions(*command)));
        for (const auto* argument : arguments(*command)) cases += " " + zshQuoted(":" + argument->get_name(true) + ":");
        cases += " ;;\n";
    }
    return fmt::format(R"({head}local -a commands=({described})
local context state state_descr line
typeset -A opt_args
_arguments -C $everywhere ': :->command' '*:: :->arguments' && return
case $state in
command) _describe command commands ;;
arguments)
    case $words[1] in
{cases}    esac
    ;;
esac
)",
                       fmt::arg("head", head), fmt::arg("described", described), fmt::arg("cases", cases));
}

std::string fishQuoted(std::string_view text) { return "'" + escaped(text, {{'\'', "\\'"}, {'\\', "\\\\"}}) + "'"; }

std::string fishOptions(const std::string& begin, const Options& options) {
    std::string all;
    for (const auto* option : options) {
        all += begin;
        for (const auto& name : option->get_snames()) all += " -s " + name;
        for (const auto& name : option->get_lnames()) all += " -l " + name;
        if (takesValue(*option)) all += takesPath(*option) ? " -r -F" : " -x";
        all += " -d " + fishQuoted(option->get_description()) + "\n";
    }
    return all;
}

std::string fish(const CLI::App& program) {
    const auto begin = "complete -c " + program.get_name();
    const auto all = commands(program);
    auto script = begin + " -f\n" + fishOptions(begin, options(program));
    if (!all.empty()) script += fmt::format("set -l commands {}\n", fmt::join(names(all), " "));
    for (const auto* command : all) {
        script += fmt::format("{} -n \"not __fish_seen_subcommand_from $commands\" -a {} -d {}\n", begin,
                              command->get_name(), fishQuoted(command->get_description()));
        script += fishOptions(fmt::format("{} -n '__fish_seen_subcommand_from {}'", begin, command->get_name()),
                              ownOptions(*command));
    }
    return script;
}

void write(const std::filesystem::path& file, std::string_view text) {
    std::filesystem::create_directories(file.parent_path());
    if (!(std::ofstream(file) << text << std::flush)) throw std::runtime_error(file.string() + " cannot be written.");
}

}  // namespace

void writeDocumentation(const CLI::App& program, const std::filesystem::path& folder) {
    const auto& name = program.get_name();
    write(folder / "man/man1" / (name + ".1"), manual(program));
    write(folder / "bash-completion/completions" / name, bash(program));
    write(folder / "zsh/site-functions" / ("_" + name), zsh(program));
    write(folder / "fish/vendor_completions.d" / (name + ".fish"), fish(program));
}

}  // namespace kavio::command_line
