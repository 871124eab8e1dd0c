#include "platform/gtk/main_queue.h"

#include "platform/gtk/glib_callback.h"

#include <algorithm>
#include <limits>

namespace kavio {
namespace {

using Work = std::function<void()>;

void attach(GSource* source, Work work) {
    // An idle source's own priority comes after drawing, so with an animated page the work would never run.
    g_source_set_priority(source, G_PRIORITY_DEFAULT);
    g_source_set_callback(
        source,
        [](gpointer data) -> gboolean {
            guarded([&] { (*static_cast<Work*>(data))(); });
            return G_SOURCE_REMOVE;
        },
        new Work(std::move(work)), [](gpointer data) { delete static_cast<Work*>(data); });
    g_source_attach(source, nullptr);
    g_source_unref(source);
}

}  // namespace

void GlibMainQueue::post(std::function<void()> work) { attach(g_idle_source_new(), std::move(work)); }

void GlibMainQueue::postAfter(std::chrono::milliseconds delay, std::function<void()> work) {
    constexpr std::chrono::milliseconds::rep longest = std::numeric_limits<guint>::max();
    const auto wait = std::clamp<std::chrono::milliseconds::rep>(delay.count(), 0, longest);
    attach(g_timeout_source_new(static_cast<guint>(wait)), std::move(work));
}

}  // namespace kavio
