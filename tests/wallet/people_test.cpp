#include "wallet_process.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>
#include <thread>

namespace kavio::test {

using namespace ::testing;

namespace {

const std::string cardLines = "4111111111111111\n12\n2039\n123\na@b.example\n";
const std::string cardObject =
    R"({"pan":"4111111111111111","month":"12","year":"2039","cvv":"123","email":"a@b.example"})";
const std::string secureLines = "4111111111111111\n12\n2039\n123\nRobin Sample\na@b.example\n";
const std::string coffee = "42100107";

}  // namespace

class WalletCommands : public WalletTest {
protected:
    Json json(const std::string& command, const std::string& input = {}) const {
        return run(command + " --json", input).events().at(0);
    }
    /// Stores a card and returns its ID, as `methods` shows it.
    std::string storedCard() const { return json("add-card", cardLines).at("card").at("id"); }
};

TEST_F(WalletCommands, LogInWithTheCodeThatIsAskedFor) {
    const std::string login = "login +49 151234567 --country DE";
    EXPECT_EQ(run("status").status, 3);
    EXPECT_EQ(run(login).status, 6);
    EXPECT_EQ(run(login, "1\n2\n3\n123456\n").status, 6);

    const auto second = run(login, "000000\n123456\n");
    EXPECT_EQ(second.output, "A code was sent to +49 151234567.\nYou are logged in.\n");
    EXPECT_THAT(second.errors, StartsWith("kavio-wallet: The code was not accepted: "));
    sandbox.setClockOffset(std::chrono::hours{365 * 24});  // harmless: what follows is signed by the service's time
    EXPECT_EQ(run("methods").status, 0);
    EXPECT_EQ(run("logout").output, "You are logged out.\n");
    EXPECT_EQ(run("status").status, 3);

    const auto forgotten = run(login + " --store-dir /dev/null", "123456\n");
    EXPECT_EQ(forgotten.status, 1);
    EXPECT_THAT(forgotten.errors, HasSubstr("--store-dir"));
}

TEST_F(WalletCommands, DescribeTheirRequestsWithoutSecrets) {
    const TemporaryFolder folder;
    const auto file = folder.path() / "requests.log";
    const auto added = run("add-card --request-log " + file.string(), cardLines);
    EXPECT_EQ(added.status, 3) << added.errors;
    logIn();
    EXPECT_EQ(run("add-card --request-log " + file.string(), cardLines).status, 0);
    const auto log = contents(file);
    EXPECT_THAT(log,
                AllOf(HasSubstr("/account/locators ["), HasSubstr("\"number\":<card number>"), HasSubstr(" 200 after "),
                      Not(HasSubstr("4111111111111111")), Not(HasSubstr("a@b.example"))));
    EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(0600));
    EXPECT_EQ(run("status --request-log /dev/full").status, 0) << "a full disk is no reason to fail";
    const auto refused = run("status --request-log /nonexistent/log");
    EXPECT_EQ(refused.status, 2);
    EXPECT_THAT(refused.errors, HasSubstr("/nonexistent/log cannot be written to"));
}

TEST_F(WalletCommands, SayWhyTheyFailed) {
    logIn();
    for (const auto& [fault, status, sentence] : std::vector<std::tuple<sandbox::Fault, int, const char*>>{
             {{.drop = true, .times = -1}, 4, "no usable reply"},
             {{.status = 500}, 7, "The service has a problem"},
             {{.status = 400, .body = R"({"message":"bad"})"}, 6, "refused: bad."},
             {{.status = 502, .body = std::string(9000, '<')}, 7, "<…"},
             {{.body = "?"}, 4, "no usable reply"},
             {{.status = 406}, 3, "not logged in"},
         }) {
        sandbox.clearFaults();
        sandbox.fault("/account", fault);
        const auto failed = run("methods");
        EXPECT_EQ(failed.status, status);
        EXPECT_EQ(failed.output, "");
        EXPECT_THAT(failed.errors, AllOf(StartsWith("kavio-wallet: "), HasSubstr(sentence)));
    }
    sandbox.clearFaults();
    logIn();
    sandbox.fault("/account", {.status = 417});
    EXPECT_EQ(run("methods").status, 0) << "with the right time at the second attempt";
    sandbox.fault("/account", {.status = 417, .times = 2});
    EXPECT_THAT(run("methods").errors, HasSubstr("The clock was wrong"));
    EXPECT_THAT(run("methods --connect-to 127.0.0.1:1").errors, HasSubstr("cannot be reached"));
    EXPECT_EQ(run("methods --connect-to 127.0.0.1:1").status, 4);
    sandbox.expireTokens();
    const auto denied = run("methods");
    EXPECT_EQ(denied.status, 3);
    EXPECT_EQ(denied.errors, "kavio-wallet: You are not logged in. Run `kavio-wallet login` first.\n");
}

TEST_F(WalletCommands, StoreAndRemoveCards) {
    logIn();
    for (const auto& input : {cardLines, cardObject})
        EXPECT_THAT(run("add-card", input).output, MatchesRegex("The card .*1111 was stored as card:.*\\.\n"));
    EXPECT_EQ(run("add-card --secure", secureLines).output, "The card was stored.\n");
    const std::string before = "4111111111111111\n12\n";
    for (const auto& [command, input, problem] : std::vector<std::tuple<const char*, std::string, const char*>>{
             {"add-card", before, "before it was complete"},
             {"add-card", before + "2020\n", "has expired"},
             {"add-card", "4111111111111112\n", "a digit is wrong"},
             {"add-card", R"({"pan":"4111111111111111"})", "The card could not be read: "},
             {"add-card", R"({"pan":"4111 1111 1111 1112"})", "a digit is wrong"},
             {"add-card", R"({"pan":"4111111111111111",)", "The card could not be read: "},
             {"add-card --secure", "4111111111111111\nMay\n2039\n123\nR\na@b\n", "from 1 to 12"},
             {"add-card --secure", R"({"number":"4111111111111111","month":13})", "from 1 to 12"},
         }) {
        const auto refused = run(command, input);
        EXPECT_EQ(refused.status, 6) << input;
        EXPECT_THAT(refused.errors, AllOf(HasSubstr(problem), Not(HasSubstr("4111"))));
    }
    const auto id = storedCard();
    EXPECT_THAT(run("methods").output, HasSubstr("card:" + id));
    EXPECT_EQ(run("remove-card " + id).output, "The card was removed.\n");
    EXPECT_EQ(run("remove-card " + id).status, 6);
}

TEST_F(WalletCommands, TopUpExactlyWhatIsWritten) {
    logIn();
    const auto card = storedCard();
    const auto balance = [&] { return json("methods").at("paymentMethods").at(0).at("balance").get<std::int64_t>(); };
    const auto before = balance();
    EXPECT_THAT(run("top-up 19.99 --card " + card).output, StartsWith("Added 19.99 EUR to wallet.\n"));
    EXPECT_EQ(balance(), before + 1999);
    EXPECT_EQ(run("top-up 19.999 --card " + card).status, 6);
    const auto prepaid = json("methods").at("paymentMethods").rbegin()[1].at("id").get<std::string>();
    EXPECT_THAT(run("top-up 1 --card " + card + " --to prepaid:" + prepaid).output, EndsWith("16.00 EUR\n"))
        << "with the limit, as methods shows it";
}

TEST_F(WalletCommands, BuyAndShowWhatWasBought) {
    logIn();
    const auto bought = run("buy --amount 1.50 " + coffee);
    EXPECT_EQ(bought.status, 0) << bought.errors;
    EXPECT_THAT(bought.output, AllOf(HasSubstr(" was placed.\n"), HasSubstr(" is complete.\n"),
                                     HasSubstr("Paid 1.50 EUR at "), HasSubstr("New balance: ")));
    EXPECT_THAT(run("buy --product 11:2 --product 12 " + coffee).output, HasSubstr("Paid 5.20 EUR"));
    EXPECT_THAT(run("products " + coffee).output, AllOf(HasSubstr("Espresso"), HasSubstr("1.50 EUR")));
    EXPECT_THAT(run("transactions").output, AllOf(HasSubstr("1.50 EUR"), HasSubstr("5.20 EUR")));
    const auto id = json("transactions").at("transactions").at(0).at("id").get<std::string>();
    EXPECT_THAT(run("order " + id).output, HasSubstr(id));
    EXPECT_EQ(run("order x").errors,
              "kavio-wallet: 'x' is not the number of an order: `kavio-wallet transactions` lists yours.\n");
    EXPECT_THAT(run("products !!").errors, HasSubstr("neither a machine's code nor the text of a QR code"));
    const auto card = "card:" + storedCard();
    EXPECT_THAT(run("buy --amount 240 --pay " + card + " 42101570").output, HasSubstr("Paid 240 JPY"));
    for (const auto& [filter, finds] : std::map<std::string, bool>{{"--method wallet", true},
                                                                   {"--method " + card, true},
                                                                   {"--method prepaid:1", false},
                                                                   {"--before 2020-01-01", false}})
        EXPECT_EQ(run("transactions " + filter).output != "There are no orders.\n", finds) << filter;
    EXPECT_THAT(run("transactions --limit 1").output, EndsWith("240 JPY      0\n")) << "which moved no balance";
}

TEST_F(WalletCommands, RefuseAPurchaseBeforeAnyMoneyMoves) {
    logIn();
    const auto prepaid = json("methods").at("paymentMethods").back().at("id").get<std::string>();
    const auto prepaidWithAmount = "buy --amount 1 --pay prepaid:" + prepaid + " " + coffee;
    const auto yenWithDecimals = "buy --amount 1.5 --pay card:" + storedCard() + " 42101570";
    for (const auto& [command, status] : std::map<std::string, int>{
             {"buy " + coffee, 2},
             {"buy 1 --amount 1", 6},
             {"buy --product 99 " + coffee, 6},
             {"buy --product 14 " + coffee, 6},  // sold out
             {"buy --amount 1 --pay card:x " + coffee, 6},
             {"buy --amount 1.505 " + coffee, 6},
             {"buy --amount 1.5 42101570", 6},  // in yen
             {"buy --amount 1 42102343", 6},    // does not take the wallet
             {yenWithDecimals, 6},
             {prepaidWithAmount, 2},
         }) {
        const auto refused = run(command);
        EXPECT_EQ(refused.status, status) << command;
        EXPECT_EQ(refused.output, "");
    }
    EXPECT_THAT(sandbox.state().at("purchases"), SizeIs(0));
}

TEST_F(WalletCommands, WarnOfAPaymentThatMayHaveBeenMadeAllTheSame) {
    logIn();
    const auto card = storedCard();
    for (const auto& [fault, warns] : std::vector<std::pair<sandbox::Fault, bool>>{
             {{.drop = true, .handled = true}, true},
             {{.cutAfter = 0}, true},
             {{.status = 500, .body = R"({"message":"?"})"}, true},
             {{.status = 408, .body = "<html>slow"}, false},
             {{.body = "null"}, true},
             {{.status = 402, .body = R"({"message":"declined"})"}, false},
         }) {
        for (const auto* path : {"/machines/*/orders", "/deposits/"}) sandbox.fault(path, fault);
        for (const auto& command : {"buy --amount 1.50 " + coffee, "top-up 1 --card " + card}) {
            const auto errors = run(command).errors;
            EXPECT_EQ(errors.find("may have been ") != std::string::npos, warns) << errors;
        }
    }
}

TEST_F(WalletCommands, TellHowAnOrderThatFailedEnded) {
    logIn();
    for (const auto& [purchase, status] : std::map<std::string, int>{
             {"1 42102416", 1},  // cancelled
             {"1 42102833", 0},  // freeTransaction
             {"1 42102695", 1},  // expired
             {"1 42101570", 1},  // currencyMismatch
         })
        EXPECT_EQ(run("buy --amount " + purchase).status, status) << purchase;
    EXPECT_THAT(run("buy --amount 9999 " + coffee).errors, HasSubstr("canceled: the balance is too small."));
    EXPECT_THAT(run("buy --amount 1 42102416").errors, HasSubstr("canceled.\n"));
    const auto late = run("buy --amount 1 42102343 --pay card:" + storedCard());  // timedOut
    EXPECT_EQ(late.status, 5);
    EXPECT_THAT(late.errors, HasSubstr("is out of service"));
}

// The service leaves things out or spells them badly.
TEST_F(WalletCommands, ClaimNothingThatTheServiceDoesNotSay) {
    logIn();
    const Json order{{"id", "7"},       {"orderType", "vending"},    {"orderStatus", "completed"},
                     {"amount", 15000}, {"createdUTC", "yesterday"}, {"paymentSource", "ecommerce"}};
    const auto body = Json{{"order", order}}.dump();
    sandbox.fault("/machines/*/orders", {.body = body});
    sandbox.fault("/orders/7", {.body = body, .times = -1});
    const auto bought = run("buy --amount 15000 --pay card:" + storedCard() + " 42101570");
    EXPECT_THAT(bought.output, HasSubstr("Paid 15000 JPY at ")) << bought.errors;
    EXPECT_THAT(run("order 7").output, AllOf(HasSubstr("15000 smallest units"), Not(HasSubstr(":"))));

    Json machine{{"name", 1},        {"machineId", 1},    {"machineName", "Nobody's"}, {"machineType", 1},
                 {"isPulse", false}, {"reviewsCount", 0}, {"isRevalueOnly", false},    {"reviewsAvg", 0}};
    for (int stars = 1; stars <= 5; ++stars) machine["reviewsCount" + std::to_string(stars)] = 0;
    sandbox.fault("/machines/byValue", {.body = Json::array({machine}).dump()});
    const auto refused = run("buy --amount 1 " + coffee);
    EXPECT_EQ(refused.status, 6);
    EXPECT_THAT(refused.errors, HasSubstr("You cannot pay at Nobody's"));
}

// Each stage of a purchase, named by the request that is waiting when the person presses Ctrl-C.
TEST_F(WalletCommands, SayWhatIsTrueOfAPurchaseThatIsInterrupted) {
    sandbox::Sandbox impatient{{.orderStep = std::chrono::hours{1}, .sampleLifetime = std::chrono::seconds{0}}};
    const auto elsewhere = " --connect-to " + impatient.address() + " --ca-file " + impatient.authorityFile().string();
    ASSERT_EQ(run("login 49 151234567 --country DE" + elsewhere, "123456\n").status, 0);
    struct Stage {
        const char* path;
        int before;  // how many such requests the purchase makes before
        const char* sentence;
        std::size_t unsettled;
    };
    std::size_t purchases = 0;
    for (const auto& [path, before, sentence, unsettled] : std::vector<Stage>{
             {"/account", 0, "Nothing was sent, so nothing was paid.", 0},
             {"/time", 2, "Nothing was sent, so nothing was paid.", 0},
             {"/machines/*/orders", 0, "The order may have been placed: find out with `kavio-wallet settle ", 1},
             {"/orders/*", 0, " goes on: `kavio-wallet order ", 2},
         }) {
        SCOPED_TRACE(path);
        if (before > 0) impatient.fault(path, {.times = before});
        impatient.fault(path, {.delay = std::chrono::hours{1}});
        impatient.clearRequests();
        LiveWallet wallet{options("buy --amount 1 " + coffee + elsewhere)};
        const auto waits = [&] {
            const auto requests = impatient.requests();
            const std::string end = std::string{path}.substr(std::string{path}.rfind('*') + 1);
            return std::ranges::count_if(requests, [&](const auto& request) {
                       const auto target = request.target.substr(0, request.target.find('?'));
                       return end.empty() ? target.find("/orders/") != std::string::npos : target.ends_with(end);
                   }) > before;
        };
        while (!waits()) std::this_thread::yield();
        wallet.write("\x03");
        EXPECT_THAT(wallet.read(), HasSubstr(sentence));
        EXPECT_EQ(wallet.waitForEnd(), -SIGINT);
        impatient.clearFaults();
        purchases += unsettled > purchases ? 1 : 0;
        EXPECT_THAT(impatient.state().at("purchases"), SizeIs(purchases));
        EXPECT_THAT(json("unsettled" + elsewhere).at("value"), SizeIs(unsettled));
    }
    EXPECT_THAT(run("status" + elsewhere).output, HasSubstr("2 payments are not known to be over"));
}

TEST_F(WalletCommands, SettleAndForgetPaymentsInDoubt) {
    logIn();
    EXPECT_EQ(run("unsettled").output, "Every payment is known to be over.\n");
    sandbox.fault("/machines/*/orders", {.drop = true, .handled = true});
    EXPECT_EQ(run("buy --amount 1.50 " + coffee).status, 4);
    sandbox.fault("/deposits/", {.drop = true});
    EXPECT_EQ(run("top-up 1 --card " + storedCard()).status, 4);
    EXPECT_THAT(run("unsettled").output, AllOf(HasSubstr("purchase at " + coffee), HasSubstr("top-up of wallet"),
                                               HasSubstr("1.00 EUR"), HasSubstr("in doubt")));
    const auto settled = run("settle --all");
    EXPECT_EQ(settled.status, 1) << "the top-up may still arrive";
    EXPECT_THAT(settled.output, HasSubstr("The purchase at " + coffee + " is over.\n"));
    EXPECT_THAT(run("status").output, StartsWith("One payment is not known to be over"));
    const auto id = json("unsettled").at("value").at(0).at("id").get<std::string>();
    EXPECT_EQ(run("settle " + id).status, 1);
    EXPECT_EQ(run("forget " + id).status, 0);
    for (const std::string command : {"settle ", "forget "}) EXPECT_EQ(run(command + id).status, 6);
    EXPECT_THAT(run("status").output, StartsWith("You are logged in"));
    EXPECT_THAT(sandbox.state().at("purchases"), SizeIs(1));
}

TEST_F(WalletCommands, FindAMachineByAPictureOfItsQrCode) {
    logIn();
    const TemporaryFolder folder;
    const auto picture = [&](const std::string& name, const std::string& text, const std::string& options = {}) {
        const auto file = folder.path() / name;
        const auto command = "qrencode " + options + " -o " + file.string() + " " + text;
        EXPECT_EQ(endOf(std::system(command.c_str())), 0) << "The package `qrencode` is missing.";
        return file.string();
    };
    const auto machine = picture("machine.png", "https://qr.kavio.example/m/" + coffee);
    for (const auto& file : {machine, picture("small.png", coffee, "-s 1 -m 1"),
                             picture("inverted.png", coffee, "--foreground=ffffff --background=000000")}) {
        EXPECT_THAT(run("products --qr " + file).output, HasSubstr("Espresso")) << file;
        EXPECT_THAT(run("machines --qr " + file).output, HasSubstr(coffee)) << file;
    }
    EXPECT_THAT(run("buy --amount 1 --qr " + machine).output, HasSubstr("Paid 1.00 EUR"));

    const auto path = folder.path().string();
    const auto both = path + "/both.png";
    const auto append =
        "convert " + machine + " " + picture("foreign.png", "https://menu.example") + " +append " + both;
    ASSERT_EQ(endOf(std::system(append.c_str())), 0) << "The package `imagemagick` is missing.";
    ASSERT_EQ(endOf(std::system(("convert -size 99x99 xc:white " + path + "/white.png").c_str())), 0);
    std::ofstream{path + "/text.png"} << "text";
    std::ofstream{path + "/cut.png"} << contents(machine).substr(0, 100);
    for (const auto& [name, problem] : std::map<std::string, const char*>{
             {"none.png", "There is no file"},
             {"", "There is no file"},
             {"text.png", "is not a picture"},
             {"cut.png", "cannot be read"},
             {"white.png", "There is no QR code in"},
             {"both.png", "There are 2 QR codes in"},
             {"foreign.png", "is not a machine's."},
         }) {
        const auto refused = run("products --qr " + path + "/" + name);
        EXPECT_EQ(refused.status, 6);
        EXPECT_THAT(refused.errors, HasSubstr(problem));
    }
}

TEST_F(WalletCommands, SpeakTheLanguageOfTheEnvironment) {
    logIn();
    for (int i = 0; i < 2; ++i) {
        sandbox.fault("/machines/*/orders", {.drop = true, .handled = true});
        EXPECT_EQ(run("buy --amount 1.50 " + coffee).status, 4);
    }
    const TemporaryFolder locales;
    setenv("LOCPATH", locales.path().c_str(), 1);
    for (const auto& [language, told, balance] : std::vector<std::tuple<std::string, const char*, const char*>>{
             {"de_DE", "Von 2 Zahlungen ist nicht bekannt, dass sie zu Ende sind", "47,00 EUR"},
             {"ja_JP", "支払いが 2 件あります", "47.00 EUR"},
             {"ar_EG", "2 payments are not known to be over", "٤٧٫٠٠ EUR"},
         }) {
        const auto made = locales.path() / (language + ".UTF-8");
        ASSERT_EQ(endOf(std::system(("localedef -i " + language + " -f UTF-8 " + made.string()).c_str())), 0)
            << "The package `locales` is missing.";
        setenv("LC_ALL", (language + ".UTF-8").c_str(), 1);
        EXPECT_THAT(run("status").output, HasSubstr(told));
        EXPECT_THAT(run("methods").output, HasSubstr(balance));
        EXPECT_EQ(json("methods").at("paymentMethods").at(0).at("balance"), 4700);
        EXPECT_THAT(run("--jsonl --frobnicate").errors, HasSubstr("There is no option"));
        unsetenv("LC_ALL");
    }
    unsetenv("LOCPATH");
}

TEST_F(WalletCommands, DoNotShowCardNumbersOnATerminal) {
    logIn();
    LiveWallet wallet{options("add-card")};
    std::string shown;
    for (const auto& [prompt, answer] : std::vector<std::pair<std::string, std::string>>{
             {"Card number", "4111111111111112\n"},
             {"swapped.\r\nCard number", "4111111111111111\n"},
             {"Expiry month (MM)", "13\n"},
             {"from 1 to 12.\r\nExpiry month (MM)", "12\n"},
             {"Expiry year (YYYY)", "2039\n"},
             {"Security code", "987\n"},
             {"E-mail address", "robin@kavio.example\n"},
         }) {
        shown += wallet.read(prompt + ": ");
        wallet.write(answer);
    }
    shown += wallet.read();
    const auto identifier = shown.find("was stored as card:");  // this is random and may contain any digits
    ASSERT_NE(identifier, std::string::npos) << shown;
    EXPECT_THAT(shown.substr(0, identifier),
                AllOf(HasSubstr("robin@kavio.example"), Not(HasSubstr("41111")), Not(HasSubstr("987"))));
    EXPECT_EQ(wallet.waitForEnd(), 0);
}

TEST_F(WalletCommands, LeaveATerminalAsItWasWhenInterrupted) {
    LiveWallet wallet{options("add-card")};
    wallet.read("Card number: ");
    EXPECT_FALSE(wallet.showsWhatIsTyped());
    wallet.write("\x03");
    EXPECT_EQ(wallet.waitForEnd(), -SIGINT);
    EXPECT_TRUE(wallet.showsWhatIsTyped());
}

TEST_F(WalletCommands, NeedADisplayForAWindow) {
    unsetenv("DISPLAY");
    unsetenv("WAYLAND_DISPLAY");
    const auto refused = run("status --window");
    EXPECT_EQ(refused.status, 2);
    EXPECT_THAT(refused.errors, StartsWith("kavio-wallet: --window: "));
    // A program learns from the reports instead.
    EXPECT_THAT(drive({"getVersion"}, "--window").summary(), ElementsAre("main return getVersion"));
}

using WalletOptions = WalletTest;

TEST_F(WalletOptions, WorkWithStandardChannelsThatAreClosedOrFull) {
    std::string command = KAVIO_WALLET;
    for (const auto& word : options("")) command += " '" + word + "'";
    EXPECT_EQ(endOf(std::system((command + " --jsonl <&-").c_str())), 0);
    EXPECT_EQ(endOf(std::system((command + " --help >/dev/full 2>&1").c_str())), 1);

    logIn();
    const TemporaryFolder folder;
    const auto status = folder.path() / "status";
    command = "(" + command + " buy --amount 1 " + coffee + "; echo $? >" + status.string() + ") 2>/dev/null | true";
    EXPECT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(contents(status), "1\n") << "followed to its end, although nobody reads about it";
}

TEST_F(WalletOptions, EndWithStatusTwoAndOneLineWhenTheyAreWrong) {
    for (const std::string row : {
             "-> --jsonl",
             "--jsonl --frobnicate -> There is no option '--frobnicate'.",
             "machins -> There is no command 'machins'; did you mean 'machines'?",
             "trans -> did you mean 'transactions'?",
             "help machins -> did you mean 'machines'?",
             "machines --neer=1,2 -> There is no option '--neer'; did you mean '--near'?",
             "login 49 1 --contry DE -> did you mean '--country'?",
             "-- -x- -> There is no option '-x-'.",
             "--jsonl surplus -> surplus",
             "--jsonl --api-key -> --api-key",
             "--jsonl --environment QA -> QA",
             "--jsonl --connect-to host:99999 -> 99999",
             "--jsonl --ca-file /nonexistent.pem -> /nonexistent.pem",
             "--jsonl status -> --jsonl",
             "status logout -> logout",
             "login 49 -> PHONE",
             "products -> MACHINE or --qr",
             "buy 1 --qr x -> cannot be used together",
             "settle -> ID or --all",
             "settle 1 --all -> --all",
             "buy 1 --product 5:0 -> 5:0",
             "buy 1 --product 5 6 -> 6",
             "buy 1 --pay cash -> cash",
             "transactions --before yesterday -> yesterday",
             "transactions --limit 9223372036854775808 -> 9223372036854775808",
             "transactions --before 24-3-5 --method wallet -> 24-3-5",
             "transactions --method card: -> card:",
             "machines --limit 501 -> 501",
             "machines --near nan,1 -> nan",
             "machines --near 91,1 -> latitude",
             "machines --operator 1 --limit 3 -> --operator",
         }) {
        SCOPED_TRACE(row);
        const auto arrow = row.find("-> ");
        const auto wrong = run(row.substr(0, arrow));
        EXPECT_EQ(wrong.status, 2);
        EXPECT_EQ(wrong.output, "");
        EXPECT_THAT(wrong.errors, HasSubstr(row.substr(arrow + 3)));
        EXPECT_EQ(std::ranges::count(wrong.errors, '\n'), 1) << wrong.errors;
    }
}

TEST_F(WalletOptions, AskForHelpAndTheVersionInAnyForm) {
    for (const auto& [one, other] : std::map<std::string, std::string>{
             {"help", "--help"}, {"help buy", "buy --help"}, {"version", "-V"}, {"version --version", "--version"}}) {
        const auto shown = run(one);
        EXPECT_EQ(shown.status, 0);
        EXPECT_NE(shown.output, "");
        EXPECT_EQ(shown.output, run(other).output);
    }
    setenv("COLUMNS", "40", 1);
    std::istringstream lines{run("help").output};
    unsetenv("COLUMNS");
    for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 40U) << line;
}

TEST_F(WalletOptions, StandOnEitherSideOfWhatIsToBeDone) {
    for (const std::string command : {"--jsonl --environment PROD --api-key -k-", "--api-key -k- --jsonl"})
        EXPECT_EQ(run(command, line("storeGet key=api_key")).events().at(0).at("value"), "-k-") << command;
}

TEST_F(WalletOptions, SayWhatTheHostApplicationIs) {
    const auto stored = [&](const std::string& key) {
        return drive({"storeGet key=k"}, key).events().at(0).at("value");
    };
    drive({"storeSet key=k value=a"}, "--kavio-key a");
    EXPECT_EQ(stored("--kavio-key a"), "a");
    EXPECT_EQ(stored("--kavio-key b"), nullptr) << "a suite of its own";
    EXPECT_EQ(stored(""), nullptr);
    const auto build = drive({"getBuild"}).output;
    EXPECT_EQ(drive({"getBuild"}, "--bundle-version 45000").output, build) << "the library has a build of its own";
}

}  // namespace kavio::test
