#pragma once

#include <nlohmann/json.hpp>

#include <functional>
#include <memory>

namespace kavio::test {

using Json = nlohmann::json;
using Tell = std::function<void(const Json&)>;

/// Starts programs, each in a process of its own in which no library has done anything yet.
class Launcher {
public:
    /// What is told reaches the test at once.
    using Program = void (*)(const Json& task, const Tell& tell);

    /// The only one, from before the first thread of the process: it is asked for before anything else.
    static Launcher& get();
    /// Runs the program to its end. Returns 0, or what has ended it: a signal's number, or minus an exit status.
    int run(Program program, const Json& task, const Tell& hear);

private:
    Launcher();
    ~Launcher();
    Launcher(const Launcher&) = delete;
    Launcher& operator=(const Launcher&) = delete;

    struct Process;
    const std::unique_ptr<Process> mProcess;
};

}  // namespace kavio::test
