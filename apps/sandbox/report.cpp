#include "report.h"

#include "gallery.h"
#include "paths.h"
#include "testcards.h"

#include <fmt/format.h>

#include <algorithm>

namespace kavio::sandbox {
namespace {

using nlohmann::json;

/// What the account's next login asks for.
const std::string& nextCode(const World& world, const std::string& number) {
    const auto set = world.codes.find(number);
    return set == world.codes.end() ? world.options.code : set->second;
}

json accountReport(const World& world, const Account& account) {
    auto cards = json::array();
    for (const auto& card : account.cards)
        cards.push_back({{"locator", card.locator}, {"label", card.label}, {"issuer", card.issuer}});
    auto prepaid = json::array();
    for (const auto& card : account.prepaidCards)
        prepaid.push_back({{"id", card.id},
                           {"number", card.number},
                           {"issuer", card.issuer},
                           {"balance", card.balance},
                           {"limit", card.limit},
                           {"isActive", card.status == PrepaidCard::active}});
    const auto sessions = std::ranges::count_if(world.sessions, [&](const auto& session) {
        return session.second.number == account.number && session.second.expires > world.pace();
    });
    return {{"number", account.number},
            {"phone", account.phone},
            {"country", account.country},
            {"balance", account.balance},
            {"currency", account.currency->code},
            {"decimals", account.currency->decimals},
            {"code", nextCode(world, account.number)},
            {"sessions", sessions},
            {"cards", cards},
            {"prepaidCards", prepaid}};
}

const char* nameOf(Verdict verdict) {
    switch (verdict) {
        case Verdict::valid:
            return "valid";
        case Verdict::stale:
            return "stale";
        case Verdict::wrong:
            return "wrong";
        case Verdict::missing:
            break;
    }
    return "missing";
}

const char* nameOf(Person person) {
    switch (person) {
        case Person::nothing:
            break;
        case Person::pressEnter:
            return "Enter";
        case Person::tryAgain:
            return "Try again";
        case Person::close:
            return "Close";
    }
    return "";
}

}  // namespace

json orderReport(const World& world, const Account& account, const Order& order) {
    json report{{"id", order.id},
                {"type", wireName(order.type)},
                {"status", world.statusOf(order)},
                {"amount", order.amount},
                {"currency", order.currency},
                {"account", account.number},
                {"label", order.label},
                {"created", millisecondsText(order.created)},
                {"isMoving", world.statusOf(order) != order.course.back()}};
    if (order.machine != nullptr) {
        report["machine"] = order.machine->kavioId;
        report["machineName"] = order.machine->name;
        report["decimals"] = order.machine->city->country.currency.decimals;
    } else {
        report["decimals"] = account.currency->decimals;
    }
    return report;
}

json accountsReport(const World& world) {
    auto accounts = json::array();
    for (const auto& [number, account] : world.accounts) accounts.push_back(accountReport(world, account));
    return accounts;
}

json codesReport(const World& world) {
    constexpr std::size_t most = 50;
    std::map<std::string, const Challenge*> latest;
    for (const auto& [text, challenge] : world.challenges) {
        if (challenge.expires <= world.pace()) continue;
        auto& kept = latest[challenge.number];
        if (kept == nullptr || kept->expires < challenge.expires) kept = &challenge;
    }
    auto codes = json::array();
    for (const auto& [number, challenge] : latest) {
        if (codes.size() == most) break;
        codes.push_back({{"number", number}, {"code", challenge->code}, {"triesLeft", challenge->triesLeft}});
    }
    return codes;
}

json stateReport(const World& world) {
    auto accounts = accountsReport(world);
    for (auto& report : accounts) {
        const auto& account = world.accounts.at(report["number"]);
        auto& orders = report["orders"] = json::array();
        for (const auto& order : account.orders) orders.push_back(orderReport(world, account, order));
    }
    return {{"now", millisecondsText(world.now())},
            {"accounts", accounts},
            {"codes", codesReport(world)},
            {"sessions", world.sessions.size()},
            {"purchases", world.purchases}};
}

json clockReport(const World& world) {
    using std::chrono::duration_cast;
    using std::chrono::milliseconds;
    return {{"offsetSeconds", world.clockOffset.count()},
            {"isStopped", world.paceKeeper.stoppedAt.has_value()},
            {"aheadMs", duration_cast<milliseconds>(world.paceKeeper.ahead).count()}};
}

json faultsReport(const std::vector<SetFault>& faults) {
    constexpr std::size_t mostBody = 200;
    auto reports = json::array();
    for (const auto& set : faults) {
        const auto& fault = set.fault;
        json report{{"id", set.id},     {"path", set.path},         {"times", fault.times},
                    {"hits", set.hits}, {"requests", set.requests}, {"isSpent", set.isSpent()}};
        if (!fault.method.empty()) report["method"] = fault.method;
        if (fault.status) report["status"] = *fault.status;
        if (fault.body) report["body"] = fault.body->substr(0, mostBody);
        if (fault.delay.count() != 0) report["delayMs"] = fault.delay.count();
        if (fault.cutAfter) report["cutAfter"] = *fault.cutAfter;
        if (fault.padTo != 0) report["padTo"] = fault.padTo;
        if (fault.drop) report["drop"] = true;
        if (fault.handled) report["handled"] = true;
        if (set.hits == 0) {
            if (auto warning = faultWarning(set.path, fault.method); !warning.empty())
                report["warning"] = std::move(warning);
        }
        reports.push_back(std::move(report));
    }
    return reports;
}

json exchangeReport(const Exchange& exchange, Secrets secrets) {
    const auto& request = exchange.request;
    const bool areShown = secrets == Secrets::shown;
    auto headers = json::object();
    for (const auto& [name, value] : request.headers) headers[name] = areShown ? value : maskedHeader(name, value);
    json report{{"id", exchange.number},
                {"arrived", millisecondsText(exchange.arrived)},
                {"method", request.method},
                {"host", request.host},
                {"target", areShown ? request.target : masked(request.target)},
                {"headers", headers},
                {"body", areShown ? request.body : masked(request.body)},
                {"bodySize", exchange.bodySize}};
    if (exchange.verdict) report["signature"] = nameOf(*exchange.verdict);
    if (const auto& answer = exchange.answer) {
        report["reply"] = {{"status", answer->status},
                           {"body", areShown ? answer->body.text : masked(answer->body.text)},
                           {"bodySize", answer->body.size},
                           {"delayMs", answer->delay.count()},
                           {"isLost", answer->isLost}};
        if (answer->fault != 0) report["reply"]["fault"] = answer->fault;
    }
    return report;
}

json machinesReport() {
    auto reports = json::array();
    for (const auto& machine : machines()) {
        const auto& country = machine.city->country;
        auto products = json::array();
        for (const auto& product : productsOf(machine))
            products.push_back({{"code", product.code}, {"name", product.name}, {"price", product.price}});
        reports.push_back({{"kavioId", machine.kavioId},
                           {"id", machine.id},
                           {"qrNumber", machine.qrNumber},
                           {"serial", machine.serial},
                           {"name", machine.name},
                           {"city", machine.city->name},
                           {"country", country.code},
                           {"currency", country.currency.code},
                           {"decimals", country.currency.decimals},
                           {"operator", machine.owner->name},
                           {"ordersEndAs", machine.ending},
                           {"products", products}});
    }
    return reports;
}

json cardsReport() {
    auto reports = json::array();
    for (const auto& card : testCards())
        reports.push_back({{"number", card.number}, {"effect", card.effect}, {"isOfGallery", false}});
    for (const auto& page : galleryPages())
        reports.push_back({{"number", page.number},
                           {"effect", page.effect},
                           {"page", page.name},
                           {"person", nameOf(page.person)},
                           {"isOfGallery", true}});
    return reports;
}

json pathsReport() {
    auto reports = json::array();
    for (const auto& [method, path] : knownPaths()) reports.push_back({{"method", method}, {"path", path}});
    return reports;
}

}  // namespace kavio::sandbox
