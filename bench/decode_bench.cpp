// What decoding a reply costs: a bare parse of its bytes, our way to public objects, and the plain way with a general
// JSON library and a general date formatter.

#include "models/json/document.h"
#include "models/json/json_value.h"
#include "models/machine_model.h"
#include "models/public_objects.h"

#include <kavio/delegate.h>
#include <kavio/platform/platform.h>

#include <benchmark/benchmark.h>
#include <simdjson.h>

#include <memory>
#include <string>

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

/// The plain way: a tree of the whole reply, members looked up by name, dates by the platform's formatter.
class PlainDecoder {
public:
    static Machines decode(const std::string& reply) {
        Machines list;
        for (const auto& entry : JsonValue::parse(reply)) list.push_back(machine(entry));
        return list;
    }

private:
    template <class T>
    static std::optional<T> member(const JsonValue& object, const char* key) {
        const auto found = object.find(key);
        if (found == object.end() || found->is_null()) return std::nullopt;
        return found->get<T>();
    }
    template <class T>
    static void check(const JsonValue& object, std::initializer_list<const char*> keys) {
        for (const auto* key : keys) benchmark::DoNotOptimize(member<T>(object, key));
    }
    static std::optional<Date> date(const JsonValue& object, const char* key) {
        static const DateFormat format{"yyyy-MM-dd'T'HH:mm:ss.SSS", "en_US_POSIX", "UTC"};
        const auto text = member<std::string>(object, key);
        return text ? Platform::current().dateFormatter->parse(format, *text) : std::nullopt;
    }

    static std::shared_ptr<const LookAndFeel> lookAndFeel(const JsonValue& in) {
        Images images;
        for (const auto& image : in.at("images")) {
            images.push_back(std::make_shared<Image>(image.at("file").get<std::string>(), image.at("w").get<int>(),
                                                     image.at("h").get<int>(), image.at("wasUploaded").get<bool>(),
                                                     image.at("dpi").get<int>(), image.at("ios").get<bool>()));
        }
        const auto text = [&in](const char* key) { return member<std::string>(in, key).value_or(""); };
        return std::make_shared<LookAndFeel>(text("images_url"), text("backgroundColor"), text("textColor"),
                                             text("receiptText"), text("punchCardText"), std::move(images));
    }

    static std::shared_ptr<const Campaign> campaign(const JsonValue& in) {
        check<std::vector<std::int64_t>>(in, {"fullTreeOperators"});
        const auto text = [&in](const char* key) { return in.at(key).get<std::string>(); };
        const auto integer = [&in](const char* key) { return in.at(key).get<std::int64_t>(); };
        return std::make_shared<Campaign>(integer("campaignId"), text("campaignName"), text("campaignTitle"),
                                          text("campaignDescription"), integer("punched"), integer("totalPunches"),
                                          date(in, "created"), date(in, "updated"), date(in, "expiration"),
                                          member<std::string>(in, "imagesUrl"), integer("punchCardId"),
                                          lookAndFeel(in.at("lookAndFeel")));
    }

    static std::shared_ptr<const Machine> machine(const JsonValue& in) {
        check<std::string>(in, {"machineConnectivityStatus", "zipCode", "currency", "location", "customLabel",
                                "customLabe", "smartStickerIdUrl", "supportDcsImageUpdatedDt", "defaultCredit"});
        check<std::int64_t>(in, {"name", "machineModel", "decimalPlace", "reviewsCount", "reviewsCount1",
                                 "reviewsCount2", "reviewsCount3", "reviewsCount4", "reviewsCount5", "uniQR", "actorID",
                                 "distributorID", "extraChargeType"});
        check<double>(in, {"distance", "reviewsAvg", "extraCharge", "latitude", "longitude"});
        check<bool>(in, {"isRevalueOnly", "isFavorite", "isPulse", "evNozzle", "evNozzleLeft", "evNozzleRight",
                         "supportRevalue", "supportKavioAutoPP", "supportDcsImage"});
        check<std::vector<double>>(in, {"fullTreeOperatorsField"});
        benchmark::DoNotOptimize(date(in, "lastOrderDT"));
        Campaigns campaigns;
        for (const auto& entry : in.at("campaigns")) campaigns.push_back(campaign(entry));
        const auto& coordinate = in.at("coordinate");
        return std::make_shared<Machine>(
            in.at("machineId").get<std::int64_t>(), member<std::int64_t>(in, "kavioID").value_or(0),
            member<std::string>(in, "operatorName"), member<bool>(in, "isWalletAllowed").value_or(true),
            coordinate.at("latitude").get<double>(), coordinate.at("longitude").get<double>(),
            Machine::machineType(in.at("machineType").get<int>()).value_or(Machine::MachineType::OTHER),
            std::move(campaigns), member<std::string>(in, "machineName"), member<std::string>(in, "country"),
            member<std::string>(in, "city"), member<std::string>(in, "machineSerial"),
            member<bool>(in, "supportRemoteVend").value_or(false),
            member<std::int64_t>(in, "multiVendCount").value_or(0), member<int>(in, "machineStatusId") == 1);
    }
};

template <class Work>
void measure(benchmark::State& state, Work work) {
    const auto reply = machines(state.range(0));
    for (auto _ : state) {
        auto result = work(reply);
        benchmark::DoNotOptimize(result);
        state.PauseTiming();  // what the application does with the result, and its end, are its own
        result = {};
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(reply.size()));
}

void bareParse(benchmark::State& state) {
    simdjson::dom::parser parser;
    measure(state, [&parser](const std::string& reply) { return parser.parse(reply).error(); });
}

void decodeMachines(benchmark::State& state) {
    measure(state,
            [](const std::string& reply) { return publicObjects(*decodeDocument<std::vector<MachineModel>>(reply)); });
}

void decodePlainly(benchmark::State& state) { measure(state, PlainDecoder::decode); }

BENCHMARK(bareParse)->Arg(500)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);
BENCHMARK(decodeMachines)->Arg(500)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);
BENCHMARK(decodePlainly)->Arg(500)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace kavio
