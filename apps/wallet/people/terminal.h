#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace kavio::wallet {

bool isInputTerminal();

/// Whether the terminal shows what is typed.
enum class Echo { ON, OFF };

/// Reads the next line of standard input, and asks the user for it if that is a terminal. Absent at the end of input.
/// Ctrl-C ends the program and leaves the terminal as it was.
std::optional<std::string> readLine(std::string_view prompt, Echo echo = Echo::ON);

/// Reads the rest of standard input, up to a sensible size.
std::string readRest();

/// A line on standard error that says what the program is waiting for, and for how long. Shown only on a terminal.
class Progress {
public:
    /// An empty text shows nothing.
    explicit Progress(std::string text);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void show();
    /// Must be called before anything else is written to the terminal.
    void clear();

private:
    const std::string mText;
    const std::chrono::steady_clock::time_point mBegin = std::chrono::steady_clock::now();
    const bool mIsVisible;
    bool mIsShown = false;
};

}  // namespace kavio::wallet
