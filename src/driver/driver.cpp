#include "driver/driver.h"

#include "driver/line_reader.h"
#include "driver/operations.h"

#include <exception>
#include <numeric>

namespace kavio::driver {

namespace {

constexpr std::chrono::milliseconds defaultTimeout{90'000};

std::optional<Wait> tryToCarryOut(const std::string& line, Facades& facades) {
    if (line.size() > LineReader::maximumBytes) throw Refused("the line is too long");
    const auto json = parseLine(line);
    const Arguments arguments{Value{json, {}}};
    const auto& operation = operationNamed(arguments.required<std::string>("op"));
    const Call call{operation.name, arguments.optional<std::string>("facade").value_or("main"), arguments};
    const auto awaited = arguments.optional<std::uint64_t>("await").value_or(operation.callbacks.empty() ? 0 : 1);
    const auto timeout = arguments.optional<std::chrono::milliseconds>("timeoutMs").value_or(defaultTimeout);

    // Counting starts before the operation, so that what it reports before it returns counts too.
    const auto reports = [&facades, &operation, facade = call.facade] {
        return std::transform_reduce(operation.callbacks.begin(), operation.callbacks.end(), std::uint64_t{0},
                                     std::plus(), [&](auto callback) { return facades.reports(facade, callback); });
    };
    const auto isReported = [reports, awaited, before = reports()] { return reports() - before >= awaited; };
    const auto giveUp = [&facades, &operation, isReported, facade = call.facade] {
        if (!isReported()) facades.write({{"event", "timeout"}, {"op", operation.name}, {"facade", facade}});
    };
    operation.run(facades, call);
    if (operation.pause) {
        const auto pause = operation.pause(arguments);
        return Wait{[] { return false; }, isReported() ? pause : pause + timeout, giveUp};
    }
    if (isReported()) return std::nullopt;
    return Wait{isReported, timeout, giveUp};
}

}  // namespace

std::optional<Wait> carryOut(const std::string& line, Facades& facades) {
    try {
        return tryToCarryOut(line, facades);
    } catch (const std::exception& problem) {
        facades.write({{"event", "error"}, {"message", problem.what()}});
        return std::nullopt;
    }
}

void drive(std::istream& input, Facades& facades, const RunUntil& runUntil) {
    LineReader lines{input};
    while (const auto line = lines.next()) {
        const auto wait = carryOut(*line, facades);
        if (wait && !runUntil(wait->isOver, wait->limit)) wait->giveUp();
    }
}

}  // namespace kavio::driver
