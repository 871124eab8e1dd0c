#include "wallet_process.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace kavio::test {

using namespace ::testing;

namespace {

/// An operation with all of its arguments as they should be, and those that may be left out.
struct Row {
    const char* line;
    std::vector<std::string> optional = {};
};

const std::vector<Row> rows{
    {R"({"op":"create","apiKey":"k","environment":"TEST"})"},
    {R"({"op":"sleep","milliseconds":0})"},
    {R"({"op":"release","other":true})", {"/other"}},
    {R"({"op":"storeGet","key":"k"})"},
    {R"({"op":"login","countryCode":"49","phoneNumber":"1"})"},
    {R"({"op":"verify","otp":"1","country":"DE","countryCode":"49","phoneNumber":"1"})"},
    {R"({"op":"getMachines","filter":{"value":"1","latitude":1,"longitude":1.5,"country":"DE","radius":1,"operatorId":1,)"
     R"("hwSerial":"1","limit":1}})",
     {"/filter", "/filter/value", "/filter/latitude", "/filter/longitude", "/filter/country", "/filter/radius",
      "/filter/operatorId", "/filter/hwSerial", "/filter/limit"}},
    {R"({"op":"getMachineProducts","machineId":1})"},
    {R"({"op":"getTransactions","filter":{"machineId":1,"paymentMethodId":"1","paymentType":"KAVIO","limit":1,)"
     R"("transactionsBefore":"2024-03-05T14:07:09.250Z"}})",
     {"/filter", "/filter/machineId", "/filter/paymentMethodId", "/filter/paymentType", "/filter/limit",
      "/filter/transactionsBefore"}},
    {R"({"op":"getOrder","orderId":"1"})"},
    {R"({"op":"placeOrder","kavioId":1,"amount":1,"paymentMethod":{"id":"0","number":"1","type":"KAVIO"},)"
     R"("products":[{"codeInMap":1,"quantity":1,"pulseLineNumber":0}]})",
     {"/products", "/products/0"}},
    {R"({"op":"addCreditCard","card":{"pan":"4","month":"1","year":"2030","cvv":"1","email":"a@b"}})"},
    {R"({"op":"addCreditCardTDSecure","paymentCard":{"number":"4","month":1,"year":2030,"securityCode":1},)"
     R"("cardHolder":{"name":"n","email":"a@b","streetNumber":1,"streetName":"s","city":"c","territory":"t",)"
     R"("country":"DE","postal":"1"}})",
     {"/cardHolder/streetNumber", "/cardHolder/streetName", "/cardHolder/city", "/cardHolder/territory",
      "/cardHolder/country", "/cardHolder/postal"}},
    {R"({"op":"removeCard","id":"1"})"},
    {R"({"op":"deposit","amount":1.5,"chargedCardId":"1","depositCard":{"id":"0","number":"1","type":"KAVIO",)"
     R"("balance":1,"currency":"EUR","currencyDecimalDigits":2}})"},
};

/// How errors write the place that a JSON pointer names: "products[0].quantity".
std::string written(std::string pointer) {
    pointer.erase(0, 1);
    std::string path;
    for (const char c : pointer) path += c == '/' ? '.' : c;
    if (const auto index = path.find(".0"); index != std::string::npos) path.replace(index, 2, "[0]");
    return '"' + path + '"';
}

/// Every place below the object that holds an argument, parents first.
void collect(const Json& value, const std::string& pointer, std::vector<std::string>& places) {
    if (!pointer.empty() && pointer != "/op") places.push_back(pointer);
    for (const auto& [key, member] : value.items()) {
        if (value.is_structured()) collect(member, pointer + '/' + key, places);
    }
}

}  // namespace

TEST(WalletArguments, AreNamedWhenTheyAreMissingOrMistyped) {
    struct Expected {
        std::string line;
        std::string place;
    };
    std::vector<Expected> expected;
    for (const auto& row : rows) {
        const auto valid = Json::parse(row.line);
        std::vector<std::string> places;
        collect(valid, "", places);
        for (const auto& place : places) {
            const Json::json_pointer pointer{place};
            auto mistyped = valid;
            mistyped[pointer] = valid[pointer].is_boolean() ? Json(1) : Json(true);
            expected.push_back({mistyped.dump(), written(place)});
            if (std::ranges::count(row.optional, place) != 0) continue;
            auto missing = valid;
            missing[pointer.parent_pointer()].erase(pointer.back());
            expected.push_back({missing.dump(), written(place)});
        }
    }
    std::string input;
    for (const auto& e : expected) input += e.line + '\n';

    const TemporaryFolder store;
    const auto run = runWallet({"--jsonl", "--store-dir", store.path(), "--connect-to", "127.0.0.1:1"}, input);
    const auto events = run.events();
    ASSERT_THAT(events, SizeIs(expected.size()));
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(events[i].at("event"), "error") << expected[i].line;
        EXPECT_THAT(events[i].value("message", ""), HasSubstr(expected[i].place)) << expected[i].line;
    }
}

TEST(WalletArguments, AreTakenAsAnyNumberThatIsAnInteger) {
    const TemporaryFolder store;
    std::vector<std::string> lines;
    for (const auto* number : {"0", "0.0", "0e5", "-0.0"}) {
        lines.push_back(std::string{R"({"op":"sleep","milliseconds":)"} + number + "}");
    }
    for (const auto* number : {"0.5", "-1", "1e19", "9223372036854775808", "\"0\"", "false"}) {
        lines.push_back(std::string{R"({"op":"sleep","milliseconds":)"} + number + "}");
    }
    const auto run = runWallet({"--jsonl", "--store-dir", store.path()}, joined(lines));
    EXPECT_THAT(run.summary(), ElementsAre("error", "error", "error", "error", "error", "error"));
}

}  // namespace kavio::test
