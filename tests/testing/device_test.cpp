#include <kavio/testing/device.h>
#include <kavio/testing/recording_delegate.h>

#include <gmock/gmock.h>

#include <memory>
#include <string>

namespace kavio::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

/// An application on a device in a box, with a person who is logged in.
struct Wallet {
    explicit Wallet(Device::Options options = {}) : device(options) {
        EXPECT_TRUE(device.logIn());
        kavio = std::make_unique<Kavio>(delegate, "key", Kavio::EnvironmentType::TEST);
        kavio->getPaymentMethods();
        device.run();
        delegate->reports.clear();
    }
    void buy(std::int64_t machine = 123401) { kavio->placeOrder(machine, delegate->paymentMethods.at(0), 150, {}); }
    const std::vector<Report>& reports() const { return delegate->reports; }

    Device device;
    std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
    std::unique_ptr<Kavio> kavio;
};

}  // namespace
}  // namespace kavio::test
