#pragma once

#include "platform/gtk/tls_probe.h"

#include <kavio/platform/ui.h>

#include <gtk/gtk.h>

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

typedef struct _WebKitWebView WebKitWebView;                // NOLINT(bugprone-reserved-identifier): WebKit's own name
typedef struct _WebKitPolicyDecision WebKitPolicyDecision;  // NOLINT(bugprone-reserved-identifier): as well

namespace kavio {

/// What a web view shows at a given moment.
struct Page {
    enum class Phase { WORKING, SHOWN, FAILED, ENDED };
    Phase phase = Phase::WORKING;
    bool isHidden = false;
    /// A page has arrived since the last load was asked for; it is still there behind one that failed later.
    bool hasArrived = false;
    /// How much of the load under way is done, 0 to 1; 0 when nothing loads.
    double progress = 0;
    /// The host of the page that has arrived, as it was connected to; empty for a document without an address.
    std::string host;
    /// The page came over https, and so did all that it shows.
    bool isSecure = false;
};

class PageObserver {
public:
    virtual ~PageObserver() = default;
    /// One is about to start; the observer may load another page or close the view.
    virtual void onNavigation(const std::optional<std::string>& url) = 0;
    virtual void onPageChanged(const Page& page) = 0;
};

/// The card issuer's web view. Its page may navigate and interact with the person, and that is all: no windows,
/// downloads, files, dialogs or permissions, and nothing of it is left on the disk.
class GtkWebView final : public WebView, public std::enable_shared_from_this<GtkWebView> {
public:
    /// Tells GTK about the types that a storyboard names.
    static void registerTypes();

    /// `authorities`: PEM file of certificate authorities to trust in addition to the system's; empty for none.
    static std::shared_ptr<GtkWebView> make(GtkWidget* view, const std::filesystem::path& authorities);
    ~GtkWebView() override;

    std::weak_ptr<PageObserver> observer;

    void setHidden(bool hidden) override;
    void loadHtml(const std::string& document) override;
    void loadUrl(const std::string& url, std::chrono::seconds timeout) override;
    /// Starts the process of the first page, which would otherwise start with its load.
    void prepare();
    /// Leaves a failed page, for the one behind it or, without one, by trying again.
    void goBack();
    /// Ends the page and its process. Nothing is loaded afterwards, and nobody is told of anything.
    void close();

private:
    /// A navigation on which nothing has been decided; it goes nowhere unless it is used.
    struct IgnoreDecision {
        void operator()(WebKitPolicyDecision* decision) const;
    };
    using HeldDecision = std::unique_ptr<WebKitPolicyDecision, IgnoreDecision>;
    /// A server that the host's own authorities may have to vouch for.
    struct Server {
        bool wasAsked = false;
        std::vector<HeldDecision> waiting;  // until its answer
        std::unique_ptr<CertificateProbe> probe;
    };

    GtkWebView(GtkWidget* view, const std::filesystem::path& authorities);

    void begin(std::function<void()> load);
    void endPage();
    /// Ends the load under way because we want to. Nothing that it still waits for goes on.
    void stop();
    void fail();
    void change(Page::Phase phase);
    void announce();
    void endTimeout();
    void onTimeout();
    void offer(const char* url);

    gboolean onDecidePolicy(WebKitPolicyDecision* decision, int type);
    void onNavigation(HeldDecision decision);
    void onNewWindow(WebKitPolicyDecision* decision);
    gboolean onResponse(WebKitPolicyDecision* decision);
    void onRefused();
    void useOnceTrusted(HeldDecision decision, const std::string& url);
    void onProbed(const std::string& server, const std::string& host, GTlsCertificate* certificate);
    GtkWidget* onCreate(gpointer action);
    void onLoadChanged(int event);
    gboolean onLoadFailed(int event, const char* url, GError* error);
    gboolean onTlsFailed(const char* url, GTlsCertificate* certificate, int errors);
    void onInsecureContent(int event);
    void onProgress(GParamSpec* property);
    void onProcessEnded(int reason);

    const ObjectPointer<WebKitWebView> mView;
    const ObjectPointer<GTlsDatabase> mAuthorities;  // null for none
    Page mPage;
    std::function<void()> mLoad;
    int mLoadNumber = 0;  // each navigation belongs to one
    bool mMayLoadAgain = false;
    bool mIsClosed = false;
    guint mTimeout = 0;
    std::chrono::seconds mPatience{0};       // with a server that is asked for its certificate
    std::map<std::string, Server> mServers;  // of this load
    SignalConnections mConnections;
};

}  // namespace kavio
