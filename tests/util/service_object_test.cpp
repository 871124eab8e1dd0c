#include "util/service_object.h"

#include <gtest/gtest.h>

namespace kavio {
namespace {

struct Other {
    virtual ~Other() = default;
    int member = 0;
};
/// The object's address is not the address of its `ServiceObject` part.
class Service : public Other, public ServiceObject {};

TEST(ServiceObject, IsReleasedByItselfAlone) {
    Service service;
    const Service another;
    service.release(nullptr);
    service.release(&another);
    EXPECT_FALSE(service.isReleased());

    service.release(&service);
    EXPECT_TRUE(service.isReleased());
    service.release(&another);
    EXPECT_TRUE(service.isReleased());
}

}  // namespace
}  // namespace kavio
