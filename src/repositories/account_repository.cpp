#include "repositories/repositories.h"
#include "storage/kavio_user_defaults.h"

namespace kavio {

void AccountRepository::account(std::optional<std::string> appVersion, Completion<AccountModel> completion) const {
    AccountService::account(std::move(appVersion), [completion = std::move(completion)](APIResult<AccountModel> reply) {
        if (reply && reply.payload()) KavioUserDefaults::shared()->saveAccount(reply.payload());
        completion(std::move(reply));
    });
}

void AccountRepository::logout(Completion<LogOutResponse> completion) const {
    AccountService::logout([completion = std::move(completion)](APIResult<LogOutResponse> reply) {
        if (reply) {
            KavioUserDefaults::shared()->defualt->write({{std::string(keys::serverExpiredTime), std::nullopt},
                                                         {std::string(keys::sessionToken), std::string()}});
        }
        completion(std::move(reply));
    });
}

}  // namespace kavio
