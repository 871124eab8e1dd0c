// What decoding a reply costs: a bare parse of its bytes, our way to public objects, and the plain way with a general JSON
// library and a general date formatter.

#include <benchmark/benchmark.h>
#include <kavio/platform/platform.h>
#include <simdjson.h>

#include <memory>
#include <string>

#include "models/json/document.h"
#include "models/json/json_value.h"
#include "models/machine_model.h"
#include "models/public_objects.h"

namespace kavio {
namespace {

// All keys of a machine; "@" stands for its number, "$" for its campaigns.
constexpr std::string_view machineText = R"({
    "kavioID":43001@,"operatorName":"Operator of the North","name":10@,"machineName":"Machine @ in the main hall",
    "machineId":10@,"machineConnectivityStatus":"online","machineStatusId":1,"country":"DE","city":"Berlin",
    "zipCode":"10115","longitude":13.40495,"latitude":52.520008,"currency":"EUR","machineType":16,"machineModel":12,
    "isRevalueOnly":false,"isFavorite":true,"customLabel":"Hall","customLabe":"Hall","decimalPlace":2,
    "fullTreeOperatorsField":[1,20,300],"distance":12.75,"campaigns":[$],"isWalletAllowed":true,
    "location":"Friedrichstrasse 100, ground floor","lastOrderDT":"2024-03-05T14:07:09.250","reviewsCount":15,
    "reviewsAvg":4.5,"reviewsCount1":1,"reviewsCount2":2,"reviewsCount3":3,"reviewsCount4":4,"reviewsCount5":5,
    "isPulse":false,"uniQR":990001,"smartStickerIdUrl":"https://nfc.kavio.example/s/@","evNozzle":false,
    "evNozzleLeft":false,"evNozzleRight":true,"supportRevalue":true,"supportKavioAutoPP":false,"actorID":5001,
    "distributorID":6001,"supportDcsImage":true,"supportRemoteVend":true,"multiVendCount":3,
    "machineSerial":"0434334921@","supportDcsImageUpdatedDt":"2024-01-01T00:00:00.000","defaultCredit":"",
    "extraCharge":0.5,"extraChargeType":1,"coordinate":{"latitude":52.520008,"longitude":13.404954}})";

constexpr std::string_view campaignText = R"({
    "campaignId":77,"campaignName":"Coffee club","campaignTitle":"Ten and one","campaignDescription":"Buy ten coffees and
 get the eleventh for free","punched":3,"totalPunches":10,"created":"2023-11-20T08:15:30.125",
    "expiration":"2025-01-01T00:00:00.000","imagesUrl":"https://img.kavio.example/c77","fullTreeOperators":[1,20,300],
    "punchCardId":9,"updated":"2024-02-01T10:00:00.500","lookAndFeel":{"images_url":"https://img.kavio.example/lf",
    "backgroundColor":"#FFAA00","textColor":"#000000","receiptText":"Thank you for your visit",
    "punchCardText":"Collect and win","images":[
        {"file":"logo.png","w":120,"h":80,"wasUploaded":true,"dpi":72,"ios":true}]}})";

/// Every second machine has a campaign. Without the line breaks of the texts above.
std::string machines(std::int64_t count) {
    std::string reply = "[";
    for (std::int64_t number = 0; number < count; ++number) {
        if (number > 0) reply += ',';
        for (const char c : machineText) {
            if (c == '@') {
                reply += std::to_string(1000 + number);
            } else if (c == '$') {
                if (number % 2 == 0) reply += campaignText;
            } else {
                reply += c;
            }
        }
    }
    reply += ']';
    std::erase(reply, '\n');
    return reply;
}

void bareParse(benchmark::State& state) {
    const simdjson::padded_string reply(machines(state.range(0)));
    simdjson::dom::parser parser;
    for (auto _ : state) benchmark::DoNotOptimize(parser.parse(reply).error());
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * reply.size()));
}

void decodeMachines(benchmark::State& state) {
    const auto reply = machines(state.range(0));
    for (auto _ : state) {
        auto objects = publicObjects(*decodeDocument<std::vector<MachineModel>>(reply));
        benchmark::DoNotOptimize(objects);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * reply.size()));
}

BENCHMARK(bareParse)->Arg(500)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);
BENCHMARK(decodeMachines)->Arg(500)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace kavio
