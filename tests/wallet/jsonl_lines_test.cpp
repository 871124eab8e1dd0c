#include "wallet_process.h"

#include <gmock/gmock.h>

#include <regex>

namespace kavio::test {

using namespace ::testing;

using WalletLines = WalletTest;

namespace {

/// Operations with all of their arguments, all valid; those with "?" may be left out.
const std::vector<std::string> operations{
    R"({"op":"create","apiKey":"k","environment":"TEST"})",
    R"({"op":"sleep","milliseconds":0})",
    R"({"op":"release","other?":true})",
    R"({"op":"storeGet","key":"k"})",
    R"({"op":"login","countryCode":"49","phoneNumber":"1"})",
    R"({"op":"verify","otp":"1","country":"DE","countryCode":"49","phoneNumber":"1"})",
    R"({"op":"getMachines","filter?":{"value?":"1","latitude?":1,"longitude?":1.5,"country?":"DE","radius?":1,
        "operatorId?":1,"hwSerial?":"1","limit?":1}})",
    R"({"op":"getMachineProducts","machineId":1})",
    R"({"op":"getTransactions","filter?":{"machineId?":1,"paymentMethodId?":"1","paymentType?":"KAVIO","limit?":1,
        "transactionsBefore?":"2024-03-05T14:07:09.250Z"}})",
    R"({"op":"getOrder","orderId":"1"})",
    R"({"op":"placeOrder","kavioId":1,"amount":1,"paymentMethod":{"id":"0","number":"1","type":"KAVIO"},
        "products?":[{"codeInMap":1,"quantity":1,"pulseLineNumber":0}]})",
    R"({"op":"addCreditCard","card":{"pan":"4","month":"1","year":"2030","cvv":"1","email":"a@b"}})",
    R"({"op":"addCreditCardTDSecure","paymentCard":{"number":"4","month":1,"year":2030,"securityCode":1},
        "cardHolder":{"name":"n","email":"a@b","streetNumber?":1,"streetName?":"s","city?":"c","territory?":"t",
        "country?":"DE","postal?":"1"}})",
    R"({"op":"removeCard","id":"1"})",
    R"({"op":"settlePayment","id":"1"})",
    R"({"op":"forgetPayment","id":"1"})",
    R"({"op":"deposit","amount":1.5,"chargedCardId":"1","depositCard":{"id":"0","number":"1","type":"KAVIO",
        "balance":1,"currency":"EUR","currencyDecimalDigits":2}})",
};

/// Every place below the object that holds an argument, parents first.
void collect(const Json& value, const std::string& pointer, Words& places) {
    if (!pointer.empty() && pointer != "/op") places.push_back(pointer);
    for (const auto& [key, member] : value.items()) {
        if (value.is_structured()) collect(member, std::string(pointer).append("/").append(key), places);
    }
}

std::string withoutMarks(const std::string& text) { return std::regex_replace(text, std::regex{R"(\?)"}, ""); }

/// How errors write the place that a JSON pointer names, such as "products[0].quantity".
std::string written(const std::string& pointer) {
    const auto path = std::regex_replace(withoutMarks(pointer.substr(1)), std::regex{"/0"}, "[0]");
    return '"' + std::regex_replace(path, std::regex{"/"}, ".") + '"';
}

}  // namespace

TEST_F(WalletLines, MayBeOfAnyLengthAndWithAnyEnd) {
    const std::string tooLong(17'000'000, 'x');  // NOLINT(bugprone-string-constructor): meant to be that long
    const std::vector<std::pair<std::string, const char*>> cases{
        {"", "not a JSON object"},
        {R"({"op":"getVersion"})" + std::string(1, '\0'), "NUL"},
        {R"({"op":"getVersion","x":")" + tooLong + "\"}", "too long"},
        {R"({"op":"addCreditCard","card":"4333333333333333)", "not a JSON object"},
    };
    std::string input;
    for (const auto& [text, message] : cases) input += text + '\n' + line("getVersion") + "\r\n";
    input.resize(input.size() - 2);  // the last line may lack its end
    const auto answers = run("--jsonl", input);
    EXPECT_EQ(answers.status, 0);
    EXPECT_THAT(answers.output + answers.errors, Not(HasSubstr("4333")));
    const auto events = answers.events();
    ASSERT_THAT(events, SizeIs(2 * cases.size()));
    for (std::size_t i = 0; i < cases.size(); ++i) {
        EXPECT_THAT(events[2 * i].value("message", ""), HasSubstr(cases[i].second));
        EXPECT_EQ(events[2 * i + 1].at("event"), "return");
    }
}

TEST_F(WalletLines, NameTheArgumentsThatAreMissingOrMistyped) {
    Words lines;
    Words named;
    for (const auto& operation : operations) {
        const auto valid = Json::parse(operation);
        Words places;
        collect(valid, "", places);
        for (const auto& place : places) {
            const Json::json_pointer pointer{place};
            auto changed = valid;
            changed[pointer] = valid[pointer].is_boolean() ? Json(1) : Json(true);
            lines.push_back(withoutMarks(changed.dump()));
            named.push_back(written(place));
            if (place.ends_with('?') || place.ends_with("/0")) continue;
            changed[pointer.parent_pointer()].erase(pointer.back());
            lines.push_back(withoutMarks(changed.dump()));
            named.push_back(written(place));
        }
    }
    const auto events = drive(lines).events();
    ASSERT_THAT(events, SizeIs(lines.size()));
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(events[i].at("event"), "error") << lines[i];
        EXPECT_THAT(events[i].value("message", ""), HasSubstr(named[i])) << lines[i];
    }
    EXPECT_THAT(sandbox.requests(), IsEmpty());
}

TEST_F(WalletLines, TakeOnlyIntegersAndTheStoresOwnForms) {
    EXPECT_EQ(drive({"sleep milliseconds=0e5", "sleep milliseconds=-0.0"}).output, "");
    Words wrong{"sleep milliseconds=0.5", "sleep milliseconds=-1", "sleep milliseconds=1e19", "storeSet key=k"};
    for (const std::string form : {"{}", R"({"date":"2024-02-30T00:00:00.000Z"})", R"({"data":"AA"})"})
        wrong.push_back(R"({"op":"storeSet","key":"k","value":)" + form + "}");
    EXPECT_EQ(drive(wrong).summary(), Words(wrong.size(), "error"));
}

using WalletFacades = WalletTest;

namespace {

const std::string login = R"(login countryCode="49" phoneNumber="151234567")";

}  // namespace

TEST_F(WalletFacades, AwaitTheirOwnCallbacksOfTheOperationsOwnKind) {
    // The second login is refused at once, which counts; the first one's outcome is the second callback awaited.
    EXPECT_THAT(drive({login + " await=0", login + " await=2", "isLoggedIn"}).summary(),
                ElementsAre("main onLogin BUSY", "main onLogin SUCCESS", "main onCheckIsUserLogin FAILURE"));
}

TEST_F(WalletFacades, AreSilentOnceTheyOrTheirDelegatesAreGone) {
    for (const std::string end : {"dropDelegate", "release other=true", "create apiKey=other-key environment=TEST"}) {
        const auto run = drive({"create facade=b apiKey=demo-key environment=TEST", login + " await=0", end,
                                login + " facade=b", login + " facade=b"});
        EXPECT_THAT(run.summary(), AllOf(Contains("b onLogin SUCCESS").Times(2), Not(Contains("main onLogin SUCCESS"))))
            << end;
    }
}

TEST_F(WalletFacades, LeaveWorkUnderWayAtTheEndOfInput) {
    sandbox.fault("/account/challenge/", {.delay = std::chrono::minutes{5}});
    const auto run = drive({login + " await=0", "sleep milliseconds=200"});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.summary(), IsEmpty());
}

}  // namespace kavio::test
