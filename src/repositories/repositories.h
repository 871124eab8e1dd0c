#pragma once

#include "repositories/services.h"

#include <optional>
#include <string>
#include <utility>

/// The facade's ways into the services: one repository an area, one of each in the process (`sharedInstance`). A
/// repository that adds nothing of its own is its service under the repository's name.
namespace kavio {

class LoginRepository : public LoginService {
public:
    /// The challenge of a log-in under way, where a caller wants it kept here; the facade keeps its own.
    std::optional<std::string> challenge;
};

class AccountRepository : private AccountService {
public:
    /// An account that arrives is stored before `completion` runs.
    void account(std::optional<std::string> appVersion, Completion<AccountModel> completion) const;
    /// Success empties the stored session token and clears the time sample's expiry before `completion` runs.
    void logout(Completion<LogOutResponse> completion) const;
    void prepaidCards(Completion<PrepaidsList> completion) const { prepaidService.prepaidCards(std::move(completion)); }

private:
    PrepaidService prepaidService;
};

class PurchaseRepository : public PurchaseService {};

class PaymentMethodRepository : public PaymentMethodService {
public:
    void prepaidDeposit(std::string prepaidId, Deposit deposit, Completion<DepositModel> completion) const {
        prepaidService.deposit(std::move(prepaidId), std::move(deposit), std::move(completion));
    }

private:
    PrepaidService prepaidService;
};

class PrepaidRepository : public PrepaidService {};

class ActivitiesRepository : public ActivitiesService {};

class GoodiesRepository : public GoodiesService {};

}  // namespace kavio
