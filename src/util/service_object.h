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
        if (caller == identity()) mIsReleased = true;
    }
    bool isReleased() const { return mIsReleased; }

protected:
    /// The address by which users know the object.
    virtual const void* identity() const { return dynamic_cast<const void*>(this); }

private:
    bool mIsReleased = false;
};

}  // namespace kavio
