#pragma once

namespace kavio {

/// Base of the objects that their user releases explicitly.
class ServiceObject {
public:
    ServiceObject() = default;
    ServiceObject(const ServiceObject&) = delete;
    ServiceObject& operator=(const ServiceObject&) = delete;
    virtual ~ServiceObject() = default;

    /// Marks the object released when `caller` is this very object; any other caller changes nothing.
    virtual void release(const void* caller) {
        if (caller == dynamic_cast<const void*>(this)) mIsReleased = true;
    }
    bool isReleased() const { return mIsReleased; }

private:
    bool mIsReleased = false;
};

}  // namespace kavio
