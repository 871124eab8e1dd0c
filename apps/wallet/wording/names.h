#pragma once

#include <kavio/machine.h>
#include <kavio/order.h>
#include <kavio/payment_method.h>

#include <string>

namespace kavio::wallet {

// What the service's codes are called, in the person's language. A code that this version does not know is shown as it
// is.

/// In a word or two, such as "completed", for tables.
std::string statusName(Order::Status status);
/// As a sentence about the order.
std::string statusSentence(const Order& order);
/// Such as "purchase".
std::string orderTypeName(const std::string& code);
/// Such as "credit card".
std::string paymentSourceName(const std::string& code);
/// Such as "hot drinks".
std::string machineTypeName(Machine::MachineType type);
/// Such as "ready".
std::string machineStateName(const Machine& machine);
///@{
/// What to call the machine in a sentence; and what to pay with, such as "Visa •••• 1111".
std::string titleOf(const Machine& machine);
std::string titleOf(const PaymentMethod& method);
///@}

}  // namespace kavio::wallet
