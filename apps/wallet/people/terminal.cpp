#include "terminal.h"

#include "jsonl/line_reader.h"
#include "people/failure.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <iostream>
#include <iterator>
#include <utility>

namespace kavio::wallet {

namespace {

volatile std::sig_atomic_t wasInterrupted = 0;

/// The terminal without echo. SIGINT is noted meanwhile, because the terminal must be put back before the program ends.
class Silence {
public:
    Silence() {
        if (tcgetattr(STDIN_FILENO, &mBefore) != 0) return;
        mIsSilent = true;
        struct sigaction note {};
        note.sa_handler = [](int) { wasInterrupted = 1; };  // without SA_RESTART: the read under way must end
        sigaction(SIGINT, &note, &mBeforeSignal);
        auto silent = mBefore;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
    }
    ~Silence() {
        if (!mIsSilent) return;
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &mBefore);
        sigaction(SIGINT, &mBeforeSignal, nullptr);
        fmt::print(stderr, "\n");  // the one that the user typed did not show
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

private:
    termios mBefore{};
    struct sigaction mBeforeSignal {};
    bool mIsSilent = false;
};

std::optional<std::string> nextLine() {
    auto line = LineReader{std::cin}.next();
    if (wasInterrupted != 0) throw Failure(ExitStatus::INTERRUPTED, "Interrupted.");
    if (!line) return std::nullopt;
    if (line->text.ends_with('\r')) line->text.pop_back();
    return std::move(line->text);
}

}  // namespace

std::optional<std::size_t> outputWidth() {
    winsize size{};
    if (isatty(STDOUT_FILENO) == 0 || ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) {
        return std::nullopt;
    }
    return size.ws_col;
}

bool isInputTerminal() { return isatty(STDIN_FILENO) != 0; }

std::optional<std::string> readLine(std::string_view prompt, Echo echo) {
    if (!isInputTerminal()) return nextLine();
    fmt::print(stderr, "{}: ", prompt);
    if (echo == Echo::ON) return nextLine();
    const Silence silence;
    return nextLine();
}

std::string readRest() {
    std::string text;
    while (text.size() < LineReader::maximumBytes) {
        const auto line = LineReader{std::cin}.next();
        if (!line) break;
        text += line->text + '\n';
    }
    return text;
}

Progress::Progress(std::string text)
    : mText(std::move(text)), mIsVisible(!mText.empty() && isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() { clear(); }

void Progress::show() {
    if (!mIsVisible) return;
    const auto elapsed = std::chrono::floor<std::chrono::seconds>(std::chrono::steady_clock::now() - mBegin);
    fmt::print(stderr, "\r\033[K{}…", mText);
    if (elapsed.count() >= 2) fmt::print(stderr, " {} s", elapsed.count());
    mIsShown = true;
}

void Progress::clear() {
    if (mIsShown) fmt::print(stderr, "\r\033[K");
    mIsShown = false;
}

}  // namespace kavio::wallet
