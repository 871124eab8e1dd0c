#pragma once

#include <kavio/export.h>
#include <kavio/platform/linux.h>
#include <kavio/platform/platform.h>

typedef struct _GtkApplication GtkApplication;  // NOLINT(bugprone-reserved-identifier): GTK's own name

namespace kavio {

/// The platform of a Linux device with the windows of a GTK 4 program: the card issuer's page is shown above the window
/// of `application` that the person is using. Install it on the thread that runs the default GLib main context, after
/// GTK is initialised and before anything else in the library is used.
///
/// The main queue is that main context, unless `options` holds another for the same thread. The certificate authorities
/// in `options.session` are trusted for the issuer's page too, in addition to the system's.
KAVIO_API Platform makeGtkPlatform(GtkApplication* application, LinuxPlatformOptions options = {});

}  // namespace kavio
