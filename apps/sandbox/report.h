#pragma once

#include "faults.h"
#include "journal.h"
#include "secrets.h"
#include "world.h"

#include <nlohmann/json.hpp>

// What the sandbox tells about itself, as JSON.
namespace kavio::sandbox {

/// Everything about the accounts, orders included.
nlohmann::json stateReport(const World& world);
/// The accounts without their orders.
nlohmann::json accountsReport(const World& world);
/// The one-time codes that somebody is to enter now.
nlohmann::json codesReport(const World& world);
nlohmann::json orderReport(const World& world, const Account& account, const Order& order);
/// Without the time itself, so that it stays the same until somebody sets the clock.
nlohmann::json clockReport(const World& world);
nlohmann::json faultsReport(const std::vector<SetFault>& faults);
nlohmann::json exchangeReport(const Exchange& exchange, Secrets secrets);

// What never changes.
nlohmann::json machinesReport();
nlohmann::json cardsReport();
nlohmann::json pathsReport();

}  // namespace kavio::sandbox
