#include "terminal.h"

#include "driver/line_reader.h"
#include "host/output.h"

#include <fmt/format.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <iostream>
#include <utility>

namespace kavio::wallet {

namespace {

/// The terminal's original settings; global for the signal handler.
termios terminalBefore{};

void putBackAndEnd(int signal) {
    tcsetattr(STDIN_FILENO, TCSANOW, &terminalBefore);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

/// Turns off the terminal's echo, and on again afterwards, even if the program is ended in between.
class Silence {
public:
    Silence() {
        if (tcgetattr(STDIN_FILENO, &terminalBefore) != 0) return;
        mIsSilent = true;
        for (const int signal : ending) std::signal(signal, putBackAndEnd);
        auto silent = terminalBefore;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
    }
    ~Silence() {
        if (!mIsSilent) return;
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &terminalBefore);
        for (const int signal : ending) std::signal(signal, SIG_DFL);
        writeText(stderr, "\n");  // the one that the user typed was not shown
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

private:
    static constexpr std::array ending{SIGHUP, SIGINT, SIGQUIT, SIGTERM};
    bool mIsSilent = false;
};

std::optional<std::string> nextLine() {
    auto line = driver::LineReader{std::cin}.next();
    if (!line) return std::nullopt;
    if (line->ends_with('\r')) line->pop_back();
    return line;
}

}  // namespace

bool isInputTerminal() { return isatty(STDIN_FILENO) != 0; }

std::optional<std::string> readLine(std::string_view prompt, Echo echo) {
    if (!isInputTerminal()) return nextLine();
    std::optional<Silence> silence;
    if (echo == Echo::OFF) silence.emplace();  // before the prompt: what is typed after it may be secret
    writeText(stderr, fmt::format("{}: ", prompt));
    return nextLine();
}

std::string readRest() {
    std::string text;
    while (text.size() < driver::LineReader::maximumBytes) {
        const auto line = driver::LineReader{std::cin}.next();
        if (!line) break;
        text += *line + '\n';
    }
    return text;
}

Progress::Progress(std::string text)
    : mText(std::move(text)), mIsVisible(!mText.empty() && isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() { clear(); }

void Progress::show() {
    if (!mIsVisible) return;
    const auto elapsed = std::chrono::floor<std::chrono::seconds>(std::chrono::steady_clock::now() - mBegin);
    const auto time = elapsed.count() >= 2 ? fmt::format(" {} s", elapsed.count()) : std::string{};
    writeText(stderr, fmt::format("\r\033[K{}…{}", mText, time));
    mIsShown = true;
}

void Progress::clear() {
    if (mIsShown) writeText(stderr, "\r\033[K");
    mIsShown = false;
}

}  // namespace kavio::wallet
