#pragma once

#include <glib-object.h>

#include <functional>
#include <memory>
#include <utility>

namespace kavio::wallet_gtk {

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
/// A reference to a GObject.
template <class T>
using Ref = std::unique_ptr<T, Unref>;

/// Calls `handler` at each signal of that name, for as long as the object lives.
inline void on(gpointer object, const char* signal, std::function<void()> handler) {
    // With its data first, a handler need not name what else the signal carries.
    auto* const closure =
        g_cclosure_new_swap(G_CALLBACK(+[](gpointer called) { (*static_cast<std::function<void()>*>(called))(); }),
                            new std::function<void()>(std::move(handler)),
                            [](gpointer called, GClosure*) { delete static_cast<std::function<void()>*>(called); });
    g_signal_connect_closure(object, signal, closure, FALSE);
}

/// Calls `work` once, when whatever is being done now is over.
inline void later(std::function<void()> work) {
    g_idle_add_full(
        G_PRIORITY_DEFAULT,
        [](gpointer called) -> gboolean {
            (*static_cast<std::function<void()>*>(called))();
            return G_SOURCE_REMOVE;
        },
        new std::function<void()>(std::move(work)),
        [](gpointer called) { delete static_cast<std::function<void()>*>(called); });
}

}  // namespace kavio::wallet_gtk
