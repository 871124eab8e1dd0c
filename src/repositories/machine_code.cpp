#include "repositories/machine_code.h"

#include "models/ascii_text.h"
#include "network/deployment.h"
#include "util/kavio_utils.h"

#include <array>

namespace kavio {
namespace {

// The standard quasigroup of order 10.
constexpr std::array<std::array<std::uint8_t, 10>, 10> dammTable{{
    {0, 3, 1, 7, 5, 9, 8, 6, 4, 2},
    {7, 0, 9, 2, 1, 5, 4, 8, 6, 3},
    {4, 2, 0, 6, 8, 7, 1, 3, 5, 9},
    {1, 7, 5, 0, 9, 8, 3, 4, 2, 6},
    {6, 1, 2, 3, 0, 4, 5, 9, 7, 8},
    {3, 6, 7, 4, 2, 0, 9, 5, 8, 1},
    {5, 8, 6, 9, 7, 2, 0, 1, 3, 4},
    {8, 9, 4, 5, 3, 6, 2, 0, 1, 7},
    {9, 4, 3, 8, 6, 1, 7, 2, 0, 5},
    {2, 5, 8, 1, 4, 3, 6, 7, 9, 0},
}};

// The digits after the first `label` that has any.
std::optional<std::string> digitsAfter(std::string_view label, const std::string& text) {
    const auto found = KavioUtils::matches(std::string(label) + R"((\d+))", text);
    if (found.empty()) return std::nullopt;
    return found.front().substr(label.size());
}

// A text that carries a machine's number and, possibly, its serial.
std::optional<MachineQuery> queryForLabels(const std::string& text, std::string_view number, std::string_view serial) {
    const auto kavioMachineId = decimalInteger(digitsAfter(number, text).value_or(""));
    if (!kavioMachineId) return std::nullopt;
    return MachineQuery{.kavioMachineId = kavioMachineId, .hwSerial = digitsAfter(serial, text).value_or("")};
}

// How many characters a person would count in a decimal integer: its bytes, which are ASCII.
MachineQuery queryForNumber(const std::string& text, std::int64_t number) {
    if (passesDammTest(text)) return {.kavioMachineId = number};
    if (text.size() == 6 || text.size() == 8) return {.qr_number = text};
    return {.machineId = number};
}

}  // namespace

std::optional<MachineQuery> machineQueryForCode(const std::string& text) {
    for (const auto prefix : {deployment::qrLinkPrefix, deployment::nfcLinkPrefix, std::string_view("kavio://")}) {
        if (text.starts_with(prefix)) return MachineQuery{.qr_scan = text};
    }
    if (text.starts_with(deployment::webLinkPrefix)) return queryForLabels(text, "MMID=", "NDS=");
    if (const auto number = decimalInteger(text)) return queryForNumber(text, *number);
    if (text.starts_with("VPOS TERMINAL")) return queryForLabels(text, "Kavio ID: ", "Serial Num: ");
    return std::nullopt;
}

bool passesDammTest(std::string_view digits) {
    std::uint8_t interim = 0;
    for (const char c : digits) {
        if (c < '0' || c > '9') return false;
        interim = dammTable[interim][static_cast<std::size_t>(c - '0')];
    }
    return interim == 0;
}

}  // namespace kavio
