#include "command_line/service_options.h"

#include "command_line/translation.h"
#include "driver/names.h"

namespace kavio::command_line {

namespace {

/// Empty for "HOST:PORT", otherwise what is wrong.
std::string checkAddress(const std::string& address) {
    return driver::isAddress(address) ? std::string{} : tr("'{}' is not HOST:PORT", address);
}

Kavio::EnvironmentType required(const std::string& name) {
    if (const auto environment = driver::environmentNamed(name)) return *environment;
    throw CLI::ValidationError("--environment", tr("'{}' is not TEST, TESTS or PROD", name));
}

}  // namespace

void addServiceOptions(CLI::App& program, driver::Options& options) {
    program.add_option("--api-key", options.apiKey, tr("API key (default: demo-key)"))->type_name("KEY");
    program
        .add_option_function<std::string>(
            "--environment", [&options](const std::string& name) { options.environment = required(name); },
            tr("Service to use: TEST, TESTS or PROD (default: TEST)"))
        ->type_name("NAME");
    program
        .add_option("--store-dir", options.storeDirectory,
                    tr("Folder that holds the session (default: the program's own folder in the user's data folder)"))
        ->type_name("DIR");
    program.add_option("--connect-to", options.connectTo, tr("Connect to this address, whatever host a URL names"))
        ->type_name("HOST:PORT")
        ->check(checkAddress);
    program
        .add_option("--ca-file", options.certificateAuthorities,
                    tr("PEM file of certificate authorities to trust instead of the system's"))
        ->type_name("FILE")
        ->check(CLI::Validator(CLI::ExistingFile).description(""));
}

}  // namespace kavio::command_line
