#include "options.h"

#include "command_line/translation.h"
#include "driver/names.h"
#include "host/device.h"

#include <CLI/CLI.hpp>
#include <unistd.h>

namespace kavio::wallet {

namespace {

/// Empty for "HOST:PORT", otherwise what is wrong.
std::string checkAddress(const std::string& address) {
    return driver::isAddress(address) ? std::string{} : tr("'{}' is not HOST:PORT", address);
}

/// Empty for a file that can be written to, or made.
std::string checkWritable(const std::string& file) {
    const int opened = openRequestLog(file);
    if (opened < 0) return tr("{} cannot be written to", file);
    ::close(opened);
    return {};
}

Kavio::EnvironmentType required(const std::string& name) {
    if (const auto environment = driver::environmentNamed(name)) return *environment;
    throw CLI::ValidationError("--environment", tr("'{}' is not TEST, TESTS or PROD", name));
}

}  // namespace

void addOptions(CLI::App& commandLine, Options& options) {
    // So that a script can append its own options to those of an alias. Commands decide about theirs.
    commandLine.option_defaults()->take_last();
    commandLine.add_option("--api-key", options.apiKey, tr("API key (default: demo-key)"))->type_name("KEY");
    commandLine
        .add_option_function<std::string>(
            "--environment", [&options](const std::string& name) { options.environment = required(name); },
            tr("Service to use: TEST, TESTS or PROD (default: TEST)"))
        ->type_name("NAME");
    commandLine
        .add_option("--store-dir", options.storeDirectory,
                    tr("Folder that holds the session (default: the program's own folder in the user's data folder)"))
        ->type_name("DIR");
    commandLine.add_option("--kavio-key", options.kavioKey, tr("The application's \"KavioKey\""))->type_name("TEXT");
    commandLine.add_option("--bundle-version", options.bundleVersion, tr("The application's \"CFBundleVersion\""))
        ->type_name("TEXT");
    commandLine.add_option("--connect-to", options.connectTo, tr("Connect to this address, whatever host a URL names"))
        ->type_name("HOST:PORT")
        ->check(checkAddress);
    commandLine
        .add_option("--ca-file", options.certificateAuthorities,
                    tr("PEM file of certificate authorities to trust instead of the system's"))
        ->type_name("FILE")
        ->check(CLI::Validator(CLI::ExistingFile).description(""));
    commandLine
        .add_option("--request-log", options.requestLog,
                    tr("Add each request and reply to this file, without secrets, for a bug report"))
        ->type_name("FILE")
        ->check(checkWritable);
    commandLine.add_flag("--no-facade", options.withoutFacade, tr("With --jsonl: do not create a facade at start"));
    commandLine.add_flag("--window", options.withWindow, tr("Open a window for 3-D Secure pages"));
    commandLine.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::Throw);
}

}  // namespace kavio::wallet
