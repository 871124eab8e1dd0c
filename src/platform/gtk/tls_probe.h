#pragma once

#include "platform/gtk/glib_callback.h"

#include <gio/gio.h>

#include <chrono>
#include <functional>

namespace kavio {

/// Connects to the server of an https address, sends no request, and hands `done` the server's certificate if
/// `authorities` vouch for all of it: chain, host and dates. Otherwise, and where that takes longer than `limit`,
/// `done` gets null. It is called once, on this thread and never in the constructor, unless the probe is destroyed
/// before.
class CertificateProbe {
public:
    using Done = std::function<void(GTlsCertificate*)>;

    CertificateProbe(const char* url, GTlsDatabase* authorities, std::chrono::seconds limit, Done done);
    ~CertificateProbe();
    CertificateProbe(const CertificateProbe&) = delete;
    CertificateProbe& operator=(const CertificateProbe&) = delete;

private:
    static void onConnected(GObject* client, GAsyncResult* result, gpointer self);
    void answer(GTlsCertificate* certificate);
    void stop();

    Done mDone;
    const ObjectPointer<GCancellable> mCancellable;
    guint mLimit = 0;  // the timer
};

}  // namespace kavio
