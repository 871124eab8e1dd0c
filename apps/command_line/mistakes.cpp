#include "mistakes.h"

#include "translation.h"

#include <algorithm>
#include <optional>

namespace kavio::command_line {

namespace {

using Words = std::vector<std::string>;

/// How many letters must be added, left out, replaced or swapped with their neighbour.
std::size_t distance(const std::string& from, const std::string& to) {
    std::vector<std::vector<std::size_t>> steps(from.size() + 1, std::vector<std::size_t>(to.size() + 1));
    for (std::size_t i = 0; i <= from.size(); ++i) {
        for (std::size_t j = 0; j <= to.size(); ++j) {
            auto& here = steps[i][j];
            if (i == 0 || j == 0) {
                here = i + j;
                continue;
            }
            const bool isSame = from[i - 1] == to[j - 1];
            here = std::min({steps[i - 1][j] + 1, steps[i][j - 1] + 1, steps[i - 1][j - 1] + (isSame ? 0 : 1)});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1])
                here = std::min(here, steps[i - 2][j - 2] + 1);
        }
    }
    return steps[from.size()][to.size()];
}

bool isOption(const std::string& word) { return word.size() > 1 && word.front() == '-'; }

/// What stands before, and what after, the words that the command line library puts between two names.
std::pair<std::string, std::string> around(const std::string& between, const std::string& text) {
    const auto at = text.find(between);
    return at == std::string::npos ? std::pair{text, std::string{}}
                                   : std::pair{text.substr(0, at), text.substr(at + between.size())};
}

Words optionNames(const CLI::App& app) {
    Words names;
    for (const auto* option : app.get_options()) {
        for (const auto& name : option->get_lnames()) names.push_back("--" + name);
    }
    return names;
}

std::string unknownOption(const CLI::App& program, const std::string& word) {
    const auto name = word.substr(0, word.find('='));
    auto known = optionNames(program);
    for (const auto* command : program.get_subcommands())
        std::ranges::copy(optionNames(*command), std::back_inserter(known));
    return tr("There is no option '{}'{}", name, didYouMean(name, known));
}

std::string surplus(const CLI::App& program, const std::string& word) {
    const auto names = commandNames(program);
    if (names.empty() || !program.get_subcommands().empty()) return tr("'{}' is one word too many.", word);
    return tr("There is no command '{}'{}", word, didYouMean(word, names));
}

template <class Problem>
bool is(const CLI::ParseError& problem) {
    return dynamic_cast<const Problem*>(&problem) != nullptr;
}

/// The library's own messages, in the person's language.
std::string translated(const CLI::ParseError& problem) {
    std::string text = problem.what();
    if (is<CLI::RequiredError>(problem)) return tr("{} is missing.", around(" is required", text).first);
    if (is<CLI::ArgumentMismatch>(problem)) {
        const auto name = around(":", text).first;
        return text.find("At Most") == std::string::npos ? tr("{} is not followed by what it needs.", name)
                                                         : tr("{} was given more than once.", name);
    }
    if (is<CLI::ExcludesError>(problem)) {
        const auto [one, other] = around(" excludes ", text);
        return tr("{} and {} cannot be used together.", one, other);
    }
    if (is<CLI::RequiresError>(problem)) {
        const auto [one, other] = around(" requires ", text);
        return tr("{} can only be used with {}.", one, other);
    }
    return text.ends_with('.') || text.ends_with(tr(".")) ? text : text + tr(".");
}

}  // namespace

std::string didYouMean(const std::string& typed, const Words& known) {
    const auto farness = [&](const std::string& word) { return word.starts_with(typed) ? 0 : distance(typed, word); };
    const auto nearest = std::ranges::min_element(known, {}, farness);
    const bool isNear = nearest != known.end() && typed.size() > 1 && farness(*nearest) <= 1 + typed.size() / 4;
    return isNear ? tr("; did you mean '{}'?", *nearest) : tr(".");
}

Words commandNames(const CLI::App& program) {
    Words names;
    for (const auto* command : program.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(command->get_name());
    return names;
}

std::string mistakeIn(const CLI::App& program, const CLI::ParseError& problem) {
    auto unknown = program.remaining(true);
    std::erase(unknown, "--");
    // An option that nothing takes explains why the word after it is one too many, or why another is missing.
    const auto option = std::ranges::find_if(unknown, isOption);
    if (option != unknown.end()) return unknownOption(program, *option);
    if (dynamic_cast<const CLI::ExtrasError*>(&problem) != nullptr) return surplus(program, unknown.front());
    return translated(problem);
}

}  // namespace kavio::command_line
