// Lines that a program sends to `kavio-wallet --jsonl`, on a device in a box.

#include "driver/driver.h"
#include "fuzz.h"

#include <kavio/testing/device.h>

#include <nlohmann/json.hpp>

#include <sstream>

namespace kavio::fuzz {
namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

/// Waits in the box's time, and not for as many years as a line may say.
driver::RunUntil clockOf(const test::Device& device) {
    return [&](const auto& done, auto limit) {
        return device.time().runUntil(done, std::min<std::chrono::milliseconds>(limit, 10min));
    };
}

void check(const std::string& line) {
    const auto event = nlohmann::json::parse(line, nullptr, false);
    must(line.find('\n') == std::string::npos && event.is_object(), "what is written is an object on one line");
    const auto kind = event.value("event", "");
    const bool isNamed =
        kind == "error" ? event.contains("message") : event.contains("op") || event.contains("callback");
    must(!kind.empty() && isNamed, "what is written says what it is about");
}

}  // namespace

void tryInput(Input input) {
    constexpr std::size_t mostLines = 30;
    std::string text;
    for (std::size_t i = 0; i < mostLines && !input.isEmpty(); ++i) text += input.line() + "\n";

    test::Device device;
    Lines written;
    driver::Facades facades([&](const std::string& line) { written.push_back(line); });
    facades.create("main", "key", Kavio::EnvironmentType::TEST);
    std::istringstream lines(text);
    driver::drive(lines, facades, clockOf(device));
    for (const auto& line : written) check(line);

    // Whatever was asked for comes to an end, and each line after that is answered as ever.
    device.letPass(2h);
    written.clear();
    std::istringstream last(R"({"op":"create","apiKey":"k","environment":"TEST","facade":"f"}
        {"op":"isBusy","facade":"f"}
        )");
    driver::drive(last, facades, clockOf(device));
    must(written.size() == 3 && written[1].find("false") != std::string::npos, "the driver goes on");
}

}  // namespace kavio::fuzz
