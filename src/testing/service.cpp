#include "sandbox/backend.h"
#include "sandbox/parameters.h"

#include <kavio/testing/service.h>

#include <httplib.h>

#include <utility>

namespace kavio::test {
namespace {

/// As the server's own library reads it from a connection.
httplib::Request received(const UrlRequest& request) {
    httplib::Request received;
    const auto hostStart = request.url.find("://") + 3;
    const auto targetStart = std::min(request.url.find('/', hostStart), request.url.size());
    received.method = request.method;
    received.target = targetStart == request.url.size() ? "/" : request.url.substr(targetStart);
    auto authority = request.url.substr(hostStart, targetStart - hostStart);
    if (authority.ends_with(":443")) authority.resize(authority.size() - 4);
    received.headers.emplace("Host", authority);
    for (const auto& [name, value] : request.headers) {
        if (name == "Host") received.headers.erase("Host");
        if (!value.empty()) received.headers.emplace(name, value);
    }
    received.body = request.body.value_or("");
    sandbox::readTarget(received);
    return received;
}

Handled handledAs(sandbox::Reply reply) {
    return {.reply = {reply.status, std::move(reply.body)},
            .delay = reply.delay,
            .isLost = reply.isLost,
            .isCut = reply.cutAfter.has_value()};
}

constexpr std::chrono::milliseconds ahead{137};  // of the device's clock: no two agree

sandbox::Options optionsFor(const std::shared_ptr<const Timeline>& timeline, Service::Options options) {
    sandbox::Options sandbox;
    sandbox.orderStep = options.orderStep;
    // It goes on steadily, whatever somebody does to the device's clock.
    const auto start = std::chrono::round<std::chrono::microseconds>(timeline->now()) + ahead - timeline->uptime();
    sandbox.clock = [timeline, start] { return start + timeline->uptime(); };
    if (options.unguessableText) sandbox.unguessableText = std::move(options.unguessableText);
    return sandbox;
}

}  // namespace

struct Service::State {
    explicit State(sandbox::Options options) : backend(std::move(options)) {}
    /// What `work` finds out about the person's account; empty without one.
    template <class Work>
    auto about(const Person& person, Work work) {
        return backend.use([&](sandbox::World& world) {
            world.settleOrders();
            const auto found = world.accounts.find(person.countryCode + person.phoneNumber);
            return found == world.accounts.end() ? decltype(work(world, found->second)){} : work(world, found->second);
        });
    }
    sandbox::Backend backend;
};

Service::Service(std::shared_ptr<const Timeline> timeline, Options options)
    : mState(std::make_unique<State>(optionsFor(timeline, std::move(options)))) {
    mState->backend.use([](sandbox::World& world) {
        world.issuerScheme = "https";
        world.issuerPort = 443;
    });
}
Service::~Service() = default;

Handled Service::handle(const UrlRequest& request) { return handledAs(mState->backend.handle(received(request))); }

std::optional<std::string> Service::submit(const std::string& page, const std::map<std::string, std::string>& fields) {
    httplib::Params items(fields.begin(), fields.end());
    const UrlRequest form{.method = "POST",
                          .url = page,
                          .headers = {{"Content-Type", "application/x-www-form-urlencoded"}},
                          .body = httplib::detail::params_to_query_str(items)};
    const auto reply = mState->backend.handle(received(form));
    const auto location = reply.headers.find("Location");
    return location == reply.headers.end() ? std::nullopt : std::optional(location->second);
}

void Service::add(ServiceFault fault) {
    mState->backend.faults().add(fault.path, {.status = fault.status,
                                              .body = std::move(fault.body),
                                              .method = fault.method,
                                              .delay = fault.delay,
                                              .drop = fault.isLost,
                                              .handled = fault.takesEffect,
                                              .times = fault.times});
}
void Service::clearFaults() { mState->backend.faults().clear(); }

void Service::setClockOffset(std::chrono::seconds offset) {
    mState->backend.use([&](sandbox::World& world) { world.clockOffset = offset; });
}
void Service::endSessions() {
    mState->backend.use([](sandbox::World& world) { world.sessions.clear(); });
}

std::vector<ServiceOrder> Service::orders(const Person& person) const {
    return mState->about(person, [](sandbox::World& world, const sandbox::Account& account) {
        std::vector<ServiceOrder> orders;
        for (auto i = account.ordersAtFirst; i < account.orders.size(); ++i) {
            const auto& order = account.orders[i];
            orders.push_back({.id = std::to_string(order.id),
                              .status = world.statusOf(order),
                              .amount = order.amount,
                              .machine = order.machine == nullptr ? 0 : order.machine->kavioId});
        }
        return orders;
    });
}

std::optional<std::int64_t> Service::balance(const Person& person) const {
    return mState->about(
        person, [](sandbox::World&, const sandbox::Account& account) { return std::optional(account.balance); });
}

std::vector<std::string> Service::cards(const Person& person) const {
    return mState->about(person, [](sandbox::World&, const sandbox::Account& account) {
        std::vector<std::string> labels;
        for (const auto& card : account.cards) labels.push_back(card.label);
        return labels;
    });
}

std::vector<std::string> Service::requests() const {
    std::vector<std::string> lines;
    for (const auto& request : mState->backend.requests())
        lines.push_back(request.method + " " + request.target.substr(0, request.target.find('?')));
    return lines;
}

}  // namespace kavio::test
