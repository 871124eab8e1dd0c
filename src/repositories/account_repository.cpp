#include "network/send_with_fresh_time.h"
#include "repositories/repositories.h"
#include "storage/kavio_user_defaults.h"

#include <utility>

namespace kavio {

void AccountRepository::account(const std::optional<std::string>& appVersion,
                                Completion<AccountModel> completion) const {
    sendWithFreshTime<AccountModel>(accountRequest(appVersion),
                                    [completion = std::move(completion)](APIResult<AccountModel> reply) {
                                        if (reply && reply.payload())
                                            KavioUserDefaults::shared()->saveAccount(reply.payload());
                                        completion(std::move(reply));
                                    });
}

void AccountRepository::logout(Completion<LogOutResponse> completion) const {
    sendWithFreshTime<LogOutResponse>(
        logOutRequest(), [completion = std::move(completion)](APIResult<LogOutResponse> reply) {
            if (reply) {
                KavioUserDefaults::shared()->defualt->write({{std::string(keys::serverExpiredTime), std::nullopt},
                                                             {std::string(keys::sessionToken), std::string()}});
            }
            completion(std::move(reply));
        });
}

}  // namespace kavio
