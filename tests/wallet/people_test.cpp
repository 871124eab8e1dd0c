#include "wallet_process.h"

#include <gmock/gmock.h>

namespace kavio::test {

using namespace ::testing;

namespace {

const std::string cardLines = "4111111111111111\n12\n2039\n123\na@b.example\n";
const std::string cardObject =
    R"({"pan":"4111111111111111","month":"12","year":"2039","cvv":"123","email":"a@b.example"})";
const std::string secureLines = "4111111111111111\n12\n2039\n123\nRobin Sample\na@b.example\n";

}  // namespace

class WalletCommands : public WalletTest {
protected:
    /// The code of a machine in Berlin that sells coffee.
    std::string machineCode() const {
        const auto found = run({"machines", "--near", "52.5219,13.4132", "--limit", "9", "--json"}).events();
        for (const auto& machine : found.at(0).at("machines")) {
            if (machine.at("type") == "HOT_DRINKS") return machine.at("kavioId").dump();
        }
        return "none";
    }
    /// Its ID, as `methods` shows it.
    std::string storedCard() const {
        const auto events = run({"add-card", "--json"}, cardLines).events();
        return events.at(0).at("card").at("id");
    }
};

TEST_F(WalletCommands, LogInWithTheCodeThatIsAskedFor) {
    const std::vector<std::string> login{"login", "+49", "151234567", "--country", "DE"};
    EXPECT_EQ(run({"status"}).status, 3);
    EXPECT_EQ(run(login).status, 6);
    EXPECT_EQ(run(login, "1\n2\n3\n123456\n").status, 6);

    const auto second = run(login, "000000\n123456\n");
    EXPECT_EQ(second.status, 0);
    EXPECT_EQ(second.output, "A code was sent to +49 151234567.\nYou are logged in.\n");
    EXPECT_EQ(second.errors, "kavio-wallet: The code was not accepted.\n");

    EXPECT_EQ(run({"status"}).output, "You are logged in.\n");
    EXPECT_EQ(run({"logout"}).output, "You are logged out.\n");
    EXPECT_EQ(run({"status"}).status, 3);
}

TEST_F(WalletCommands, SayWhyTheyFailed) {
    sandbox::Fault lost;
    lost.drop = true;
    lost.times = -1;
    sandbox::Fault broken;
    broken.status = 500;
    sandbox::Fault refused;
    refused.status = 400;
    struct Case {
        const char* name;
        std::optional<sandbox::Fault> fault;
        int status;
        const char* sentence;
    };
    logIn();
    for (const auto& c : std::initializer_list<Case>{
             {"connection lost", lost, 4, "cannot be reached"},
             {"service broken", broken, 7, "The service has a problem"},
             {"refused", refused, 6, "refused"},
         }) {
        SCOPED_TRACE(c.name);
        sandbox.clearFaults();
        sandbox.fault("/account", *c.fault);
        const auto failed = run({"methods"});
        EXPECT_EQ(failed.status, c.status);
        EXPECT_EQ(failed.output, "");
        EXPECT_THAT(failed.errors, AllOf(StartsWith("kavio-wallet: "), HasSubstr(c.sentence)));
    }
    sandbox.clearFaults();
    sandbox.expireTokens();
    const auto denied = run({"methods"});
    EXPECT_EQ(denied.status, 3);
    EXPECT_EQ(denied.errors, "kavio-wallet: You are not logged in. Run `kavio-wallet login` first.\n");
}

TEST_F(WalletCommands, StoreAndRemoveCards) {
    logIn();
    for (const auto& input : {cardLines, cardObject}) {
        EXPECT_THAT(run({"add-card"}, input).output, MatchesRegex("The card .*1111 was stored as card:.*\\.\n"));
    }
    EXPECT_EQ(run({"add-card", "--secure"}, secureLines).output, "The card was stored.\n");
    struct Case {
        const char* name;
        std::vector<std::string> arguments;
        std::string input;
    };
    for (const auto& c : std::initializer_list<Case>{
             {"too few lines", {"add-card"}, "4111111111111111\n12\n"},
             {"an object that lacks a member", {"add-card"}, R"({"pan":"4111111111111111"})"},
             {"no object", {"add-card"}, "{"},
             {"a month that is no number", {"add-card", "--secure"}, "4111111111111111\nMay\n2039\n123\nR\na@b\n"},
         }) {
        SCOPED_TRACE(c.name);
        const auto refused = run(c.arguments, c.input);
        EXPECT_EQ(refused.status, 6);
        EXPECT_THAT(refused.errors, AllOf(HasSubstr("The card was not read"), Not(HasSubstr("4111"))));
    }
    const auto id = storedCard();
    EXPECT_THAT(run({"methods"}).output, HasSubstr("card:" + id));
    EXPECT_EQ(run({"remove-card", id}).output, "The card was removed.\n");
    EXPECT_THAT(run({"methods"}).output, Not(HasSubstr("card:" + id)));
    EXPECT_EQ(run({"remove-card", id}).status, 6);
}

TEST_F(WalletCommands, TopUpExactlyWhatIsWritten) {
    logIn();
    const auto card = storedCard();
    const auto balance = [&] {
        return run({"methods", "--json"}).events().at(0).at("paymentMethods").at(0).at("balance").get<std::int64_t>();
    };
    const auto before = balance();
    EXPECT_THAT(run({"top-up", "19.99", "--card", card}).output, StartsWith("19.99 EUR were added to wallet.\n"));
    EXPECT_EQ(balance(), before + 1999);
    for (const auto* amount : {"19.999", "0", "-1", "1e3", "ten", ""}) {
        EXPECT_EQ(run({"top-up", "--card", card, "--", amount}).status, 6) << amount;
    }
}

TEST_F(WalletCommands, BuyAndShowWhatWasBought) {
    logIn();
    const auto code = machineCode();
    const auto bought = run({"buy", code, "--amount", "1.50"});
    EXPECT_EQ(bought.status, 0) << bought.errors;
    EXPECT_THAT(bought.output, AllOf(HasSubstr(": created\n"), HasSubstr(": completed\n"),
                                     HasSubstr("Paid 1.50 EUR at "), HasSubstr("New balance: ")));
    EXPECT_THAT(run({"buy", code, "--product", "11:2", "--product", "12"}).output, HasSubstr("Paid 5.20 EUR"));
    EXPECT_THAT(run({"products", code}).output, AllOf(HasSubstr("Espresso"), HasSubstr("1.50")));
    EXPECT_THAT(run({"transactions"}).output, AllOf(HasSubstr("1.50 EUR"), HasSubstr("5.20 EUR")));
    EXPECT_THAT(run({"transactions", "--before", "2001-01-01"}).output, "There are no orders.\n");
    const auto id = run({"transactions", "--json"}).events().at(0).at("transactions").at(0).at("id").get<std::string>();
    EXPECT_THAT(run({"order", id}).output, HasSubstr(id));
    EXPECT_EQ(run({"order", "x"}).status, 6);
}

TEST_F(WalletCommands, RefuseAPurchaseBeforeAnyMoneyMoves) {
    logIn();
    const auto code = machineCode();
    struct Case {
        const char* name;
        std::vector<std::string> arguments;
        int status;
    };
    for (const auto& c : std::initializer_list<Case>{
             {"no amount", {"buy", code}, 2},
             {"no such machine", {"buy", "1", "--amount", "1"}, 6},
             {"no machine's code", {"buy", "coffee", "--amount", "1"}, 6},
             {"no such product", {"buy", code, "--product", "99"}, 6},
             {"no such card", {"buy", code, "--amount", "1", "--pay", "card:x"}, 6},
             {"half a cent", {"buy", code, "--amount", "1.505"}, 6},
         }) {
        SCOPED_TRACE(c.name);
        const auto refused = run(c.arguments);
        EXPECT_EQ(refused.status, c.status);
        EXPECT_EQ(refused.output, "");
    }
    EXPECT_THAT(sandbox.state().at("purchases"), SizeIs(0));
}

TEST_F(WalletCommands, TellHowAnOrderThatFailedEnded) {
    logIn();
    const auto machines = run({"machines", "--near", "52.63,13.55", "--limit", "40", "--json"}).events().at(0);
    std::map<std::string, int> endings{
        {"Ends as cancelled", 1}, {"Ends as timedOut", 5}, {"Ends as freeTransaction", 0}, {"Ends as expired", 1}};
    for (const auto& machine : machines.at("machines")) {
        const auto ending = endings.extract(machine.at("name").get<std::string>());
        if (ending.empty()) continue;
        EXPECT_EQ(run({"buy", machine.at("kavioId").dump(), "--amount", "1"}).status, ending.mapped()) << ending.key();
    }
    EXPECT_THAT(endings, IsEmpty());
}

TEST_F(WalletCommands, NeedADisplayForAWindow) {
    const auto refused = run({"status", "--window"});
    EXPECT_EQ(refused.status, 2);
    EXPECT_THAT(refused.errors, StartsWith("kavio-wallet: --window: "));
    // A program learns from the reports instead.
    EXPECT_THAT(drive({R"({"op":"getVersion"})"}, {"--window"}).summary(), ElementsAre("main return getVersion"));
}

}  // namespace kavio::test
