#include "driver.h"

#include "json/objects.h"
#include "jsonl/line_reader.h"
#include "jsonl/operations.h"
#include "jsonl/stored_value.h"
#include "output.h"

#include <kavio/user_defaults.h>

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace kavio::wallet {

namespace {

constexpr std::int64_t defaultTimeout = 90'000;

std::int64_t notNegative(std::string_view name, std::int64_t count) {
    if (count < 0) throw Refused(fmt::format("\"{}\" must not be negative", name));
    return count;
}

std::int64_t countIn(const Arguments& arguments, std::string_view name, std::int64_t otherwise) {
    return notNegative(name, arguments.optional<std::int64_t>(name).value_or(otherwise));
}

std::chrono::milliseconds waitingTime(std::int64_t milliseconds) {
    constexpr std::int64_t longest = 1'000'000'000'000;  // about thirty years: far from the end of the clock's range
    return std::chrono::milliseconds{std::min(milliseconds, longest)};
}

}  // namespace

Driver::Driver(Host& host, std::istream& input) : mHost(host), mInput(input) {}

void Driver::run() {
    LineReader lines{mInput};
    while (const auto line = lines.next()) {
        try {
            if (line->isCut) throw Refused("the line is too long");
            handle(line->text);
        } catch (const std::exception& problem) {
            writeLine({{"event", "error"}, {"message", problem.what()}});
        }
    }
}

void Driver::handle(const std::string& line) {
    const auto json = parseLine(line);
    const Arguments arguments{Value{json, {}}};
    const auto& operation = operationNamed(arguments.required<std::string>("op"));
    const Call call{operation.name, arguments.optional<std::string>("facade").value_or("main"), arguments};
    const auto awaited = countIn(arguments, "await", operation.callback.empty() ? 0 : 1);
    const auto timeout = waitingTime(countIn(arguments, "timeoutMs", defaultTimeout));

    // Counted from before the operation begins: what it reports before it returns is awaited too.
    const auto& reports = mReports[{call.facade, operation.callback}];
    const auto before = reports;
    operation.run(*this, call);
    const auto isDone = [&] { return reports - before >= awaited; };
    if (isDone() || mHost.runUntil(isDone, timeout)) return;
    writeLine({{"event", "timeout"}, {"op", call.op}, {"facade", call.facade}});
}

void Driver::create(std::string facade, std::string apiKey, Kavio::EnvironmentType environment) {
    auto delegate = std::make_shared<Reporter>([this, facade](const Report& report) {
        writeLine(eventOf(report, facade));
        ++mReports[{facade, report.callback}];
    });
    auto kavio = std::make_unique<Kavio>(delegate, std::move(apiKey), environment);
    mFacades.insert_or_assign(std::move(facade), Held{std::move(delegate), std::move(kavio)});
}

Driver::Held& Driver::held(const Call& call) {
    const auto found = mFacades.find(call.facade);
    if (found == mFacades.end() || !found->second.kavio) {
        throw Refused(fmt::format("there is no facade \"{}\"", call.facade));
    }
    return found->second;
}

Kavio& Driver::kavio(const Call& call) { return *held(call).kavio; }

void Driver::answer(const Call& call, const Json& value) {
    writeLine({{"event", "return"}, {"op", call.op}, {"facade", call.facade}, {"value", value}});
}

void Driver::create(const Call& call) {
    auto apiKey = call.arguments.required<std::string>("apiKey");
    std::optional<Kavio::EnvironmentType> environment;
    if (call.arguments.member("environment").json.is_string()) {
        environment = environmentNamed(call.arguments.required<std::string>("environment"));
        if (!environment) throw Refused("\"environment\" must be TEST, TESTS or PROD, or a raw value");
    } else {
        environment = Kavio::environmentType(call.arguments.required<std::int64_t>("environment"));
    }
    if (environment) create(call.facade, std::move(apiKey), *environment);
    answer(call, environment.has_value());
}

void Driver::release(const Call& call) {
    const auto byOther = call.arguments.optional<bool>("other").value_or(false);
    auto& kavio = this->kavio(call);
    kavio.release(byOther ? static_cast<const void*>(this) : &kavio);
}

void Driver::destroy(const Call& call) { held(call).kavio.reset(); }

void Driver::dropDelegate(const Call& call) { held(call).delegate.reset(); }

void Driver::sleep(const Call& call) {
    const auto duration =
        waitingTime(notNegative("milliseconds", call.arguments.required<std::int64_t>("milliseconds")));
    mHost.runUntil([] { return false; }, duration);
}

void Driver::storeGet(const Call& call) {
    const auto key = call.arguments.required<std::string>("key");
    writeLine({
        {"event", "return"},
        {"op", call.op},
        {"key", key},
        {"value", toJson(userDefaults()->value(key))},
    });
}

void Driver::storeSet(const Call& call) {
    const auto key = call.arguments.required<std::string>("key");
    auto value = storedValueIn(call.arguments);
    const auto store = userDefaults();
    const bool isWritten = value ? store->set(key, *std::move(value)) : store->remove(key);
    if (!isWritten) throw Refused("the store could not be written");
}

}  // namespace kavio::wallet
