// What a person scans or types to name a machine, and the request that looks it up.

#include "fuzz.h"
#include "network/url_request.h"
#include "repositories/machine_code.h"

#include <kavio/testing/device.h>

namespace kavio::fuzz {
namespace {

void lookUp(const std::string& code, const MachineQuery& query) {
    const int named = int(query.machineId.has_value()) + int(query.kavioMachineId.has_value()) +
                      int(query.qr_scan.has_value()) + int(query.qr_number.has_value());
    must(named == 1, "a code names a machine in one way");
    must(query.qr_scan.value_or(code) == code && query.qr_number.value_or(code) == code, "a code is sent as it is");
    must(code.find(query.hwSerial.value_or("")) != std::string::npos, "a serial stands in the code");

    auto request = machineByValueRequest(query);
    const JsonObject meant = *request.params;
    const auto sent = buildURLRequest("https://service.test/", std::move(request.params),
                                      request.encoding == ParameterEncoding::path);
    must(isUrl(sent.url), "the look-up has a URL");
    if (!sent.body) return;
    const auto read = JsonValue::parse(*sent.body);
    must(read == JsonValue(meant), "the service reads what was meant");
}

/// A check digit shows each single wrong digit.
void checkDamm(std::string digits, std::uint8_t where, std::uint8_t other) {
    if (digits.empty() || !passesDammTest(digits)) return;
    auto& digit = digits[where % digits.size()];
    const char wrong = static_cast<char>('0' + other % 10);
    if (wrong == digit) return;
    digit = wrong;
    must(!passesDammTest(digits), "a wrong digit is noticed");
}

}  // namespace

void tryInput(Input input) {
    static const test::Device device;
    const auto where = input.byte();
    const auto other = input.byte();
    const auto code = input.rest();
    if (const auto query = machineQueryForCode(code)) lookUp(code, *query);
    checkDamm(code, where, other);
}

}  // namespace kavio::fuzz
