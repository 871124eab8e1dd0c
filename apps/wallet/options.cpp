#include "options.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <map>

namespace kavio::wallet {

namespace {

const std::map<std::string, Kavio::EnvironmentType> environments{
    {"TEST", Kavio::EnvironmentType::TEST},
    {"TESTS", Kavio::EnvironmentType::TESTS},
    {"PROD", Kavio::EnvironmentType::PROD},
};

/// Empty for "HOST:PORT", else what is wrong.
std::string checkAddress(const std::string& address) {
    const auto colon = address.rfind(':');
    std::uint16_t port = 0;
    if (colon != std::string::npos && colon > 0) {
        const char* const end = address.data() + address.size();
        const auto read = std::from_chars(address.data() + colon + 1, end, port);
        if (read.ec == std::errc{} && read.ptr == end && port != 0) return {};
    }
    return "'" + address + "' is not HOST:PORT";
}

Kavio::EnvironmentType required(const std::string& name) {
    if (const auto environment = environmentNamed(name)) return *environment;
    throw CLI::ValidationError("--environment", "'" + name + "' is not TEST, TESTS or PROD");
}

}  // namespace

void addOptions(CLI::App& commandLine, Options& options) {
    const std::initializer_list<CLI::Option*> valued{
        commandLine.add_option("--api-key", options.apiKey, "API key (default: demo-key)")->type_name("KEY"),
        commandLine
            .add_option_function<std::string>(
                "--environment", [&options](const std::string& name) { options.environment = required(name); },
                "Which service: TEST, TESTS or PROD (default: TEST)")
            ->type_name("NAME"),
        commandLine
            .add_option("--store-dir", options.storeDirectory,
                        "Folder that keeps the session (default: "
                        "$XDG_DATA_HOME/kavio)")
            ->type_name("DIR"),
        commandLine.add_option("--kavio-key", options.kavioKey, "The application's \"KavioKey\"")->type_name("TEXT"),
        commandLine.add_option("--bundle-version", options.bundleVersion, "The application's \"CFBundleVersion\"")
            ->type_name("TEXT"),
        commandLine.add_option("--connect-to", options.connectTo, "Address that every connection goes to")
            ->type_name("HOST:PORT")
            ->check(checkAddress),
        commandLine
            .add_option("--ca-file", options.certificateAuthorities,
                        "Certificate authorities to trust, in PEM, instead "
                        "of the system's")
            ->type_name("FILE")
            ->check(CLI::Validator(CLI::ExistingFile).description("")),
    };
    // So that a script can append its own options to those of an alias.
    for (auto* option : valued) option->take_last();
    commandLine.add_flag("--no-facade", options.withoutFacade, "With --jsonl: create no facade at start");
    commandLine.add_flag("--window", options.withWindow, "Open a window on which 3-D Secure pages can be shown");
}

std::optional<Kavio::EnvironmentType> environmentNamed(const std::string& name) {
    const auto found = environments.find(name);
    if (found == environments.end()) return std::nullopt;
    return found->second;
}

}  // namespace kavio::wallet
