#pragma once

#include <glib.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace kavio::device {

/// Runs what is due on the main thread until this has come, or for ten seconds.
inline void runUntil(const std::function<bool()>& hasCome) {
    bool isLate = false;
    const auto alarm = g_timeout_add_seconds(
        10, [](gpointer late) -> gboolean { return *static_cast<bool*>(late) = true; }, &isLate);
    while (!isLate && !hasCome()) g_main_context_iteration(nullptr, TRUE);
    EXPECT_FALSE(isLate);
    g_source_remove(alarm);
}

using Journal = std::vector<std::string>;

}  // namespace kavio::device
