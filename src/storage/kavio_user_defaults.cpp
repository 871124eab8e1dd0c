#include "storage/kavio_user_defaults.h"

#include "models/account_model.h"
#include "models/json/json_value.h"
#include "storage/suites.h"
#include "util/shared_instance.h"
#include "util/trace.h"

#include <kavio/platform/platform.h>
#include <kavio/user_defaults.h>

namespace kavio {

std::shared_ptr<KavioUserDefaults> KavioUserDefaults::shared() { return sharedInstance<KavioUserDefaults>(); }

KavioUserDefaults::KavioUserDefaults() : defualt(openSuite("group.KavioSdkUserDefaults")) {}

void KavioUserDefaults::saveAccount(const std::optional<AccountModel>& account) {
    if (!account) {
        defualt->remove(keys::account);
        return;
    }
    const auto encoded = serialise(account->encode());
    if (!encoded) {
        trace("KavioUserDefaults", [] { return SafeMessage{"Error in saving account: it cannot be written as JSON"}; });
        return;
    }
    defualt->set(keys::account, Bytes(encoded->begin(), encoded->end()));
}

void KavioUserDefaults::setServerExpiredTime(std::optional<Date> date) {
    defualt->write({{std::string(keys::serverExpiredTime), date}});
}

Date KavioUserDefaults::getDate(std::string_view key) const {
    const auto stored = defualt->date(key);
    return stored ? *stored : Platform::current().clock->now();
}

std::shared_ptr<KeyValueStore> userDefaults() { return KavioUserDefaults::shared()->defualt; }

}  // namespace kavio
