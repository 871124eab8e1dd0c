#pragma once

namespace kavio {

/// Base of objects that are released explicitly by their user.
class ServiceObject {
public:
    ServiceObject() = default;
    ServiceObject(const ServiceObject&) = delete;
    ServiceObject& operator=(const ServiceObject&) = delete;
    virtual ~ServiceObject() = default;

    /// Marks the object as released if `caller` is this very object; any other caller changes nothing.
    virtual void release(const void* caller) {
        if (caller == dynamic_cast<const void*>(this)) mIsReleased = true;
    }
    bool isReleased() const { return mIsReleased; }

private:
    bool mIsReleased = false;
};

}  // namespace kavio
