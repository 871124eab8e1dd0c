#pragma once

#include <glib-object.h>

#include <exception>
#include <memory>
#include <utility>
#include <vector>

namespace kavio {

/// Runs `work` for a C caller: an exception stops here, becomes a critical message, and the default value is returned.
template <class Work>
auto guarded(Work&& work) noexcept -> decltype(work()) {
    try {
        return work();
    } catch (const std::exception& error) {
        g_critical("kavio: %s", error.what());
    } catch (...) {
        g_critical("kavio: an unknown exception");
    }
    return decltype(work())();
}

namespace detail {
template <auto Method>
struct SignalHandler;
template <class Self, class Result, class... Arguments, Result (Self::*Method)(Arguments...)>
struct SignalHandler<Method> {
    // The handler may drop the last user of `self`, which must outlive the call.
    static Result call(gpointer, Arguments... arguments, gpointer self) noexcept {
        return guarded([&] {
            const auto kept = static_cast<Self*>(self)->shared_from_this();
            return (static_cast<Self*>(self)->*Method)(arguments...);
        });
    }
};
}  // namespace detail

struct ObjectUnref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
/// A reference to a GObject.
template <class T>
using ObjectPointer = std::unique_ptr<T, ObjectUnref>;

template <class T>
ObjectPointer<T> retained(T* object) {
    return ObjectPointer<T>(static_cast<T*>(g_object_ref(object)));
}

/// The signals that an object listens to, for as long as this lives.
class SignalConnections {
public:
    SignalConnections() = default;
    SignalConnections(const SignalConnections&) = delete;
    SignalConnections& operator=(const SignalConnections&) = delete;
    ~SignalConnections() { clear(); }

    /// Connects a signal to a method of `self`, which lives in a `std::shared_ptr`. The method's parameters are the
    /// signal's own, without the instance.
    template <auto Method, class Self>
    void connect(gpointer instance, const char* signal, Self* self) {
        const auto id = g_signal_connect(instance, signal, G_CALLBACK(detail::SignalHandler<Method>::call), self);
        mConnections.emplace_back(retained(G_OBJECT(instance)), id);
    }
    void clear() {
        for (const auto& [instance, id] : mConnections) g_signal_handler_disconnect(instance.get(), id);
        mConnections.clear();
    }

private:
    std::vector<std::pair<ObjectPointer<GObject>, gulong>> mConnections;
};

}  // namespace kavio
