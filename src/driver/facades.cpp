#include "driver/facades.h"

#include <fmt/format.h>

namespace kavio::driver {

Facades::Facades(std::function<void(const std::string& line)> write) : mWrite(std::move(write)) {}

void Facades::create(std::string name, std::string apiKey, Kavio::EnvironmentType environment) {
    auto delegate = std::make_shared<Reporter>([this, name](const Report& report) {
        write(eventOf(report, name));
        ++mReports[{name, report.callback}];
    });
    auto kavio = std::make_unique<Kavio>(delegate, std::move(apiKey), environment);
    mFacades.insert_or_assign(std::move(name), Held{std::move(delegate), std::move(kavio)});
}

Facades::Held& Facades::held(const Call& call) {
    const auto found = mFacades.find(call.facade);
    if (found == mFacades.end() || !found->second.kavio) {
        throw Refused(fmt::format("there is no facade \"{}\"", call.facade));
    }
    return found->second;
}

std::uint64_t Facades::reports(const std::string& facade, std::string_view callback) const {
    const auto found = mReports.find({facade, callback});
    return found == mReports.end() ? 0 : found->second;
}

void Facades::write(const Json& event) const { mWrite(lineOf(event)); }

void Facades::answer(const Call& call, const Json& value) const { write(answerOf(call.op, call.facade, value)); }

}  // namespace kavio::driver
