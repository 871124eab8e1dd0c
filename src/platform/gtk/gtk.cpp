#include "platform/gtk/main_queue.h"
#include "platform/gtk/windows.h"

#include <kavio/gtk.h>

#include <filesystem>
#include <utility>

namespace kavio {

Platform makeGtkPlatform(GtkApplication* application, LinuxPlatformOptions options) {
    auto authorities = options.session.certificateAuthorities;
    if (!authorities.empty()) authorities = std::filesystem::absolute(authorities);  // GIO takes no other path
    if (!options.mainQueue) options.mainQueue = std::make_shared<GlibMainQueue>();
    auto platform = makeLinuxPlatform(std::move(options));
    platform.windows = std::make_shared<GtkWindows>(application, std::move(authorities));
    return platform;
}

}  // namespace kavio
