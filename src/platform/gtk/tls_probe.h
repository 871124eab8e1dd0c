#pragma once

#include "platform/gtk/glib_callback.h"

#include <gio/gio.h>

#include <functional>

namespace kavio {

/// Connects to the server of an https address, sends no request, and hands `done` the server's certificate if
/// `authorities` vouch for all of it: chain, host and dates. Otherwise, and where nobody answers, `done` gets null.
/// `done` is called once, on this thread, also after `cancellable` has been cancelled.
void probeCertificate(const char* url, GTlsDatabase* authorities, GCancellable* cancellable,
                      std::function<void(GTlsCertificate*)> done);

}  // namespace kavio
