#include "wallet_process.h"

#include <gmock/gmock.h>

#include <regex>

namespace kavio::test {

using namespace ::testing;

using WalletArguments = WalletTest;

namespace {

/// Operations with all of their arguments as they should be; those with "?" may be left out.
const std::vector<std::string> operations{
    R"({"op":"create","apiKey":"k","environment":"TEST"})",
    R"({"op":"sleep","milliseconds":0})",
    R"({"op":"release","other?":true})",
    R"({"op":"storeGet","key":"k"})",
    R"({"op":"login","countryCode":"49","phoneNumber":"1"})",
    R"({"op":"verify","otp":"1","country":"DE","countryCode":"49","phoneNumber":"1"})",
    R"({"op":"getMachines","filter?":{"value?":"1","latitude?":1,"longitude?":1.5,"country?":"DE","radius?":1,)"
    R"("operatorId?":1,"hwSerial?":"1","limit?":1}})",
    R"({"op":"getMachineProducts","machineId":1})",
    R"({"op":"getTransactions","filter?":{"machineId?":1,"paymentMethodId?":"1","paymentType?":"KAVIO","limit?":1,)"
    R"("transactionsBefore?":"2024-03-05T14:07:09.250Z"}})",
    R"({"op":"getOrder","orderId":"1"})",
    R"({"op":"placeOrder","kavioId":1,"amount":1,"paymentMethod":{"id":"0","number":"1","type":"KAVIO"},)"
    R"("products?":[{"codeInMap":1,"quantity":1,"pulseLineNumber":0}]})",
    R"({"op":"addCreditCard","card":{"pan":"4","month":"1","year":"2030","cvv":"1","email":"a@b"}})",
    R"({"op":"addCreditCardTDSecure","paymentCard":{"number":"4","month":1,"year":2030,"securityCode":1},)"
    R"("cardHolder":{"name":"n","email":"a@b","streetNumber?":1,"streetName?":"s","city?":"c","territory?":"t",)"
    R"("country?":"DE","postal?":"1"}})",
    R"({"op":"removeCard","id":"1"})",
    R"({"op":"deposit","amount":1.5,"chargedCardId":"1","depositCard":{"id":"0","number":"1","type":"KAVIO",)"
    R"("balance":1,"currency":"EUR","currencyDecimalDigits":2}})",
};

/// Every place below the object that holds an argument, parents first.
void collect(const Json& value, const std::string& pointer, Words& places) {
    if (!pointer.empty() && pointer != "/op") places.push_back(pointer);
    for (const auto& [key, member] : value.items()) {
        if (value.is_structured()) collect(member, pointer + '/' + key, places);
    }
}

std::string withoutMarks(const std::string& text) { return std::regex_replace(text, std::regex{R"(\?)"}, ""); }

/// How errors write the place that a JSON pointer names: "products[0].quantity".
std::string written(const std::string& pointer) {
    const auto path = std::regex_replace(withoutMarks(pointer.substr(1)), std::regex{"/0"}, "[0]");
    return '"' + std::regex_replace(path, std::regex{"/"}, ".") + '"';
}

}  // namespace

TEST_F(WalletArguments, AreNamedWhenTheyAreMissingOrMistyped) {
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

TEST_F(WalletArguments, AreTakenAsAnyNumberThatIsAnInteger) {
    Words lines;
    for (const std::string number : {"0", "0.0", "0e5", "-0.0"})
        lines.push_back(R"({"op":"sleep","milliseconds":)" + number + "}");
    EXPECT_EQ(drive(lines).output, "");
    lines.clear();
    for (const std::string number : {"0.5", "-1", "1e19", "9223372036854775808", "\"0\"", "false"})
        lines.push_back(R"({"op":"sleep","milliseconds":)" + number + "}");
    EXPECT_EQ(drive(lines).summary(), Words(lines.size(), "error"));
}

}  // namespace kavio::test
