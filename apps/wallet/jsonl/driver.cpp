#include "driver.h"

#include "json/line_reader.h"
#include "jsonl/operations.h"

#include <exception>
#include <functional>
#include <numeric>

namespace kavio::wallet {

namespace {

constexpr std::chrono::milliseconds defaultTimeout{90'000};

void carryOut(const std::string& line, Facades& facades) {
    const auto json = parseLine(line);
    const Arguments arguments{Value{json, {}}};
    const auto& operation = operationNamed(arguments.required<std::string>("op"));
    const Call call{operation.name, arguments.optional<std::string>("facade").value_or("main"), arguments};
    const auto awaited = arguments.optional<std::uint64_t>("await").value_or(operation.callbacks.empty() ? 0 : 1);
    const auto timeout = arguments.optional<std::chrono::milliseconds>("timeoutMs").value_or(defaultTimeout);

    // Counting starts before the operation, so that what it reports before it returns counts too.
    const auto reports = [&] {
        return std::transform_reduce(operation.callbacks.begin(), operation.callbacks.end(), std::uint64_t{0},
                                     std::plus(),
                                     [&](auto callback) { return facades.reports(call.facade, callback); });
    };
    const auto before = reports();
    operation.run(facades, call);
    const auto isDone = [&] { return reports() - before >= awaited; };
    if (isDone() || facades.program.runUntil(isDone, timeout)) return;
    facades.write({{"event", "timeout"}, {"op", call.op}, {"facade", call.facade}});
}

}  // namespace

void drive(std::istream& input, Facades& facades) {
    LineReader lines{input};
    while (const auto line = lines.next()) {
        try {
            if (line->isCut) throw Refused("the line is too long");
            carryOut(line->text, facades);
        } catch (const std::exception& problem) {
            facades.write({{"event", "error"}, {"message", problem.what()}});
        }
    }
}

}  // namespace kavio::wallet
