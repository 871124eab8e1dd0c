// The cost of decoding a reply to public objects, compared with a bare parse of its bytes and with the plain way.

#include "allocations.h"
#include "models/json/document.h"
#include "models/machine_model.h"
#include "network/payload.h"
#include "plain_decoder.h"

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <simdjson.h>

#include <algorithm>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace kavio::bench {
namespace {

// All keys of a machine, with "@" for its number and "$" for its campaigns.
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

/// A reply with this many machines that have all their keys, and every second one a campaign. It has spare capacity,
/// like a body from the network.
std::string machinesReply(std::int64_t count) {
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
    reply.reserve(reply.size() + 100);
    return reply;
}

Machines decodeMachines(const std::string& reply) { return *decodeDocument<Machines>(reply); }

/// Decodes many small replies at a time, so that stopping the clock does not distort the result.
template <class Work>
void measure(benchmark::State& state, Work work) {
    const auto reply = machinesReply(state.range(0));
    const auto batch = std::max<std::int64_t>(1, 1000 / state.range(0));
    std::vector<decltype(work(reply))> results;
    results.reserve(static_cast<std::size_t>(batch));
    work(reply);  // lets the parser and the heap grow first; the memory figure covers their cost
    while (state.KeepRunningBatch(batch)) {
        for (std::int64_t i = 0; i < batch; ++i) results.push_back(work(reply));
        state.PauseTiming();  // what happens to the result, including freeing it, is up to the application
        results.clear();
        state.ResumeTiming();
    }
}

/// The same when the process must first get the memory from the system.
void decodeInFreshMemory(benchmark::State& state) {
    const auto reply = machinesReply(state.range(0));
    Machines machines;
    for (auto _ : state) {
        state.PauseTiming();
        machines = {};
        ::malloc_trim(0);
        state.ResumeTiming();
        machines = decodeMachines(reply);
    }
}

void bareParse(benchmark::State& state) {
    simdjson::dom::parser parser;
    measure(state, [&parser](const std::string& reply) { return parser.parse(reply).error(); });
}

double processStatus(std::string_view key) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(key)) return std::stod(line.substr(key.size())) * 1024;
    throw std::runtime_error("The system does not tell the memory of a process.");
}

double bytesInUse() {
    const auto counts = ::mallinfo2();
    return static_cast<double>(counts.uordblks + counts.hblkhd);
}

BENCHMARK(bareParse)->Arg(500);
BENCHMARK_CAPTURE(measure, decodePlainly, decodePlainly)->Name("decodePlainly")->Arg(500);
BENCHMARK_CAPTURE(measure, decodeMachines, decodeMachines)
    ->Name("decodeMachines")
    ->Arg(1)
    ->Arg(10)
    ->Arg(100)
    ->Arg(500)
    ->Arg(1000)
    ->Arg(10000);
BENCHMARK(decodeInFreshMemory)->Arg(10000);

}  // namespace

KeptMemory::KeptMemory() {
    ::mallopt(M_MMAP_MAX, 0);
    ::mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
}

KeptMemory::~KeptMemory() {
    ::mallopt(M_MMAP_MAX, 65'536);  // glibc's own limits
    ::mallopt(M_TRIM_THRESHOLD, 128 * 1024);
    ::malloc_trim(0);
}

double decodingBytes(std::int64_t machines) {
    const auto reply = machinesReply(machines);
    std::size_t bytes = 0;
    // On a new thread, which has no buffers from before.
    std::thread([&] { bytes = allocatedBytes([&] { benchmark::DoNotOptimize(decodeMachines(reply)); }); }).join();
    return static_cast<double>(bytes);
}

Residence residenceOfLargeReply() {
    auto reply = machinesReply(10000);
    const auto text = static_cast<double>(reply.size());
    ::malloc_trim(0);
    const auto resident = processStatus("VmRSS:") - text;
    const auto inUse = bytesInUse() - static_cast<double>(reply.capacity());
    std::ofstream("/proc/self/clear_refs") << "5";  // the peak starts from here
    const auto result = decoded<Machines>(RawResult::success(std::move(reply)));
    const auto objects = bytesInUse() - inUse;
    if (!result) throw std::runtime_error("The large reply was not read.");
    return {text, processStatus("VmHWM:") - resident, processStatus("VmRSS:") - resident - objects};
}

}  // namespace kavio::bench
