#include "wallet_process.h"

#include <gmock/gmock.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>

namespace kavio::test {

using namespace ::testing;

namespace {

/// A kavio-wallet on a terminal, with somebody at the keyboard.
class Terminal {
public:
    explicit Terminal(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), KAVIO_WALLET);
        std::vector<char*> pointers;
        for (auto& argument : arguments) pointers.push_back(argument.data());
        pointers.push_back(nullptr);
        mProcess = forkpty(&mTerminal, nullptr, nullptr, nullptr);
        if (mProcess == 0) {
            execv(KAVIO_WALLET, pointers.data());
            _exit(127);
        }
    }
    ~Terminal() { close(mTerminal); }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /// Waits until the program asks for `prompt`, and types.
    void type(const std::string& prompt, const std::string& text) {
        while (mShown.find(prompt + ": ") == std::string::npos && readMore()) {
        }
        EXPECT_EQ(::write(mTerminal, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    bool showsWhatIsTyped() const {
        termios settings{};
        return tcgetattr(mTerminal, &settings) == 0 && (settings.c_lflag & static_cast<tcflag_t>(ECHO)) != 0;
    }
    /// All that was shown, once the program has ended.
    const std::string& shown() {
        while (readMore()) {
        }
        return mShown;
    }
    /// The status as waitpid gives it.
    int end() const {
        int status = 0;
        waitpid(mProcess, &status, 0);
        return status;
    }

private:
    bool readMore() {
        char character = 0;
        const bool isRead = ::read(mTerminal, &character, 1) == 1;
        if (isRead) mShown += character;
        return isRead;
    }

    int mTerminal = -1;
    pid_t mProcess = -1;
    std::string mShown;
};

}  // namespace

using WalletTerminal = WalletTest;

TEST_F(WalletTerminal, DoesNotShowCardNumbers) {
    logIn();
    Terminal terminal{options({"add-card"})};
    terminal.type("Card number", "4111111111111111\n");
    terminal.type("Month of expiry (MM)", "12\n");
    terminal.type("Year of expiry (YYYY)", "2039\n");
    terminal.type("Security code", "987\n");
    terminal.type("E-mail address", "robin@kavio.example\n");
    EXPECT_THAT(terminal.shown(), AllOf(HasSubstr("robin@kavio.example"), HasSubstr("was stored as card:"),
                                        Not(HasSubstr("41111")), Not(HasSubstr("987"))));
    EXPECT_EQ(terminal.end(), 0);
}

TEST_F(WalletTerminal, IsAsItWasAfterAnInterruption) {
    Terminal terminal{options({"add-card"})};
    terminal.type("Card number", "\x03");
    const auto status = terminal.end();
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << status;
    EXPECT_TRUE(terminal.showsWhatIsTyped());
}

}  // namespace kavio::test
