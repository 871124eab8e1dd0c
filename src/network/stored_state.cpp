#include "network/stored_state.h"

#include "storage/kavio_user_defaults.h"

#include <utility>

namespace kavio {

StoredState storedState() {
    auto found =
        KavioUserDefaults::shared()->defualt->values({keys::serviceName, keys::apiKey, keys::sessionToken,
                                                      keys::serverTime, keys::savedCpuTime, keys::serverExpiredTime});
    const auto text = [&](std::size_t key) { return KeyValueStore::typed<std::string>(std::move(found[key])); };
    const auto date = [&](std::size_t key) { return KeyValueStore::typed<Date>(found[key]); };
    return {.service = apiTypeNamed(text(0)),
            .apiKey = text(1),
            .session = withIssuer(text(2).value_or("")),
            .sample = {date(3), date(4), date(5)}};
}

}  // namespace kavio
