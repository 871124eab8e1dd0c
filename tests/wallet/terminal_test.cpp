#include "wallet_process.h"

#include <gmock/gmock.h>

#include <csignal>

namespace kavio::test {

using namespace ::testing;

using WalletTerminal = WalletTest;

TEST_F(WalletTerminal, DoesNotShowCardNumbers) {
    logIn();
    LiveWallet wallet{options("add-card"), LiveWallet::On::TERMINAL};
    std::string shown;
    for (const auto& [prompt, answer] : std::vector<std::pair<std::string, std::string>>{
             {"Card number", "4111111111111111\n"},
             {"Month of expiry (MM)", "12\n"},
             {"Year of expiry (YYYY)", "2039\n"},
             {"Security code", "987\n"},
             {"E-mail address", "robin@kavio.example\n"},
         }) {
        shown += wallet.read(prompt + ": ");
        wallet.write(answer);
    }
    shown += wallet.read();
    EXPECT_THAT(shown, AllOf(HasSubstr("robin@kavio.example"), HasSubstr("was stored as card:"),
                             Not(HasSubstr("41111")), Not(HasSubstr("987"))));
    EXPECT_EQ(wallet.waitForEnd(), 0);
}

TEST_F(WalletTerminal, IsAsItWasAfterAnInterruption) {
    LiveWallet wallet{options("add-card"), LiveWallet::On::TERMINAL};
    wallet.read("Card number: ");
    EXPECT_FALSE(wallet.showsWhatIsTyped());
    wallet.write("\x03");
    EXPECT_EQ(wallet.waitForEnd(), -SIGINT);
    EXPECT_TRUE(wallet.showsWhatIsTyped());
}

}  // namespace kavio::test
