#pragma once

#include "util/type_name.h"

#include <kavio/platform/platform.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>

namespace kavio {

/// Something that one object, the sender, announces to its observers. It lives in a `std::shared_ptr`, holds its sender
/// weakly and its observers strongly. It has no lock, so use it from one thread at a time; from a background thread,
/// use `invokeOnMainThread`.
template <class T>
class Event : public std::enable_shared_from_this<Event<T>> {
public:
    /// One subscription. No two are ever equal, whatever they hold.
    struct Observer {
        /// The subscriber is identified by the address of `observerOwner`, and is not kept alive.
        Observer(std::weak_ptr<const void> observerOwner, std::function<void(T&)> observerAction)
            : owner(std::move(observerOwner)), action(std::move(observerAction)) {}

        const std::weak_ptr<const void> owner;
        const std::function<void(T&)> action;
        bool isOneShot = false;
    };
    using ObserverPointer = std::shared_ptr<Observer>;

    explicit Event(const std::shared_ptr<T>& sender) : mSender(sender), mName(typeName(typeid(*sender))) {}

    const std::string& name() const { return mName; }
    std::size_t count() const { return mObservers.size(); }

    void attach(const ObserverPointer& observer) { add(observer, false); }
    void attachOnce(const ObserverPointer& observer) { add(observer, true); }

    void detach(const ObserverPointer& observer) { mObservers.erase(observer); }
    /// Removes what `owner` attached. An observer whose owner is gone stays.
    void detach(const void* owner) {
        std::erase_if(mObservers, [owner](const auto& observer) {
            const auto alive = observer->owner.lock();
            return alive && alive.get() == owner;
        });
    }
    void detachAll() { mObservers.clear(); }

    /// Calls the observers attached at the start: one that an action attaches is not called yet, and one that an action
    /// detaches still is. Once the sender is gone, nobody is called.
    void invokeAll() { prepared()(); }
    /// The same in two steps, of which the second one needs no memory: the observers of now are called when what this
    /// returns is.
    auto prepared() {
        return [self = this->shared_from_this(), observers = mObservers] {
            for (const auto& observer : observers) {
                const auto sender = self->mSender.lock();
                if (!sender) return;
                if (observer->isOneShot) self->detach(observer);
                observer->action(*sender);
            }
        };
    }

    /// On the main thread, calls the observers before returning; elsewhere, posts that to the main queue.
    void invokeOnMainThread() {
        auto& mainQueue = *Platform::current().mainQueue;
        if (mainQueue.isMainThread()) return invokeAll();
        mainQueue.post([weak = this->weak_from_this()] {
            if (const auto self = weak.lock()) self->invokeAll();
        });
    }

private:
    void add(const ObserverPointer& observer, bool isOneShot) {
        observer->isOneShot = isOneShot;
        mObservers.insert(observer);
    }

    const std::weak_ptr<T> mSender;
    const std::string mName;
    std::set<ObserverPointer> mObservers;
};

}  // namespace kavio
