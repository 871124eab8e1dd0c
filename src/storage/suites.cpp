#include "storage/suites.h"

#include "storage/retaining_store.h"
#include "util/shared_instance.h"

#include <kavio/platform/platform.h>

#include <string>
#include <utility>

namespace kavio {

std::shared_ptr<KeyValueStore> openSuite(std::string_view name) {
    const auto& platform = Platform::current();
    const auto key = platform.mainBundle->informationText("KavioKey").value_or("KavioE");
    auto suite = platform.keyValueStores->suite(std::string(name) + "-" + key);
    return std::make_shared<RetainingStore>(suite ? std::move(suite) : platform.keyValueStores->standard());
}

std::shared_ptr<KeyValueStore> recordsSuite() {
    struct Records {
        const std::shared_ptr<KeyValueStore> suite = openSuite("group.KavioSdkRecords");
    };
    return sharedInstance<Records>()->suite;
}

}  // namespace kavio
