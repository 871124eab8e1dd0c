#include "start.h"

#include "documentation.h"
#include "help.h"
#include "mistakes.h"

#include <CLI/CLI.hpp>
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string_view>

namespace kavio::command_line {

namespace {

constexpr int wrongUse = 2;

/// A descriptor opened later must not take the number of a standard one that is closed. Reading from a closed one then
/// ends at once, and writing fails.
void openStandardDescriptors() {
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(standard, F_GETFD) < 0) static_cast<void>(open("/dev/null", O_RDONLY));  // takes the lowest number
    }
}

bool isOutputComplete() {
    std::cout.flush();
    return std::cout && std::ferror(stdout) == 0;
}

}  // namespace

int start(const std::function<int()>& work, const std::function<void(const std::string&)>& complain) {
    openStandardDescriptors();
    std::signal(SIGPIPE, SIG_IGN);  // a reader that leaves must not end the program in the middle of its work
    std::ios::sync_with_stdio(false);
    try {
        const int status = work();
        if (status != EXIT_SUCCESS || isOutputComplete()) return status;
        complain("Not everything could be written to standard output.");
    } catch (const CLI::ParseError& problem) {
        complain(problem.what());
        return wrongUse;
    } catch (const std::exception& problem) {
        complain(problem.what());
    }
    return EXIT_FAILURE;
}

bool parse(CLI::App& program, int argc, char** argv) {
    prepareHelp(program);
    if (argc == 3 && std::string_view(argv[1]) == "--write-documentation") {
        writeDocumentation(program, argv[2]);
        return false;
    }
    try {
        program.parse(argc, argv);
        return true;
    } catch (const CLI::Success& request) {
        program.exit(request);
        return false;
    } catch (const CLI::ParseError& problem) {
        throw CLI::ParseError(mistakeIn(program, problem), CLI::ExitCodes::InvalidError);
    }
}

}  // namespace kavio::command_line
