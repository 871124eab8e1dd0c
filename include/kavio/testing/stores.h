#pragma once

#include <kavio/export.h>
#include <kavio/platform/key_value_store.h>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace kavio::test {

/// The stores of a device in a box: in memory, kept for as long as the device, also when the program is killed and
/// started again. Safe from any thread.
class KAVIO_API MemoryStores final : public KeyValueStores {
public:
    MemoryStores();
    ~MemoryStores() override;

    std::shared_ptr<KeyValueStore> suite(std::string_view name) override;
    std::shared_ptr<KeyValueStore> standard() override;

    /// No suite can be opened, new or known: the library then takes the standard store.
    void refuseSuites(bool refuse = true);
    /// No write succeeds, as on a full disk.
    void refuseWrites(bool refuse = true);
    /// Asked before each write whether it succeeds; unset for always.
    void decideWrites(std::function<bool()> succeeds);

    /// What has been opened so far: "suite NAME" and "standard", sorted.
    std::vector<std::string> names() const;

private:
    struct State;
    class Suite;
    std::shared_ptr<KeyValueStore> open(const std::string& name);

    const std::shared_ptr<State> mState;
};

}  // namespace kavio::test
