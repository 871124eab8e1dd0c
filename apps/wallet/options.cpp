#include "options.h"

#include "command_line/service_options.h"
#include "command_line/translation.h"
#include "host/device.h"

#include <CLI/CLI.hpp>
#include <unistd.h>

namespace kavio::wallet {

namespace {

/// Empty for a file that can be written to, or made.
std::string checkWritable(const std::string& file) {
    const int opened = openRequestLog(file);
    if (opened < 0) return tr("{} cannot be written to", file);
    ::close(opened);
    return {};
}

}  // namespace

void addOptions(CLI::App& commandLine, Options& options) {
    // So that a script can append its own options to those of an alias. Commands decide about theirs.
    commandLine.option_defaults()->take_last();
    command_line::addServiceOptions(commandLine, options);
    commandLine.add_option("--kavio-key", options.kavioKey, tr("The application's \"KavioKey\""))->type_name("TEXT");
    commandLine.add_option("--bundle-version", options.bundleVersion, tr("The application's \"CFBundleVersion\""))
        ->type_name("TEXT");
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
