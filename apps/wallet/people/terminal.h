#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace kavio::wallet {

/// How wide lines on standard output may be; absent when it is no terminal.
std::optional<std::size_t> outputWidth();

bool isInputTerminal();

/// Whether what is typed shows on the terminal.
enum class Echo { ON, OFF };

/// The next line of standard input; at a terminal the user is asked for it. Absent at the end of input. Ctrl-C ends the
/// program, with the terminal as it was.
std::optional<std::string> readLine(std::string_view prompt, Echo echo = Echo::ON);

/// All that is left of standard input, up to a sensible size.
std::string readRest();

/// A line on standard error that says what is waited for, and from when on for how long. Only a terminal shows it.
class Progress {
public:
    /// Nothing is shown for an empty text.
    explicit Progress(std::string text);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void show();
    /// To be called before anything else is written to the terminal.
    void clear();

private:
    const std::string mText;
    const std::chrono::steady_clock::time_point mBegin = std::chrono::steady_clock::now();
    const bool mIsVisible;
    bool mIsShown = false;
};

}  // namespace kavio::wallet
