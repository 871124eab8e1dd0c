#include "platform/gtk/web_view.h"

#include <webkit/webkit.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace kavio {
namespace {

struct UriUnref {
    void operator()(GUri* uri) const { g_uri_unref(uri); }
};

std::unique_ptr<GUri, UriUnref> parsed(const char* url) {
    return std::unique_ptr<GUri, UriUnref>(url ? g_uri_parse(url, G_URI_FLAGS_ENCODED, nullptr) : nullptr);
}

std::string hostOf(const char* url) {
    const auto uri = parsed(url);
    const char* host = uri ? g_uri_get_host(uri.get()) : nullptr;
    return host ? host : "";
}

bool hasScheme(const char* url, std::initializer_list<std::string_view> schemes) {
    const char* scheme = url ? g_uri_peek_scheme(url) : nullptr;
    return scheme && std::find(schemes.begin(), schemes.end(), std::string_view(scheme)) != schemes.end();
}

bool isPageAddress(const char* url) { return hasScheme(url, {"http", "https"}); }

// What a page may navigate to. Files are none of its business, and no other program may be started behind a
// person's back.
bool isWithinReach(const char* url) { return hasScheme(url, {"http", "https", "about", "data", "blob"}); }

// A page ends by going to this very device, where nothing has to answer.
bool isLoopback(const char* url) {
    const auto host = hostOf(url);
    const ObjectPointer<GInetAddress> address(host.empty() ? nullptr : g_inet_address_new_from_string(host.c_str()));
    return address && g_inet_address_get_is_loopback(address.get());
}

void setFeature(WebKitSettings* settings, std::string_view identifier, bool enabled) {
    WebKitFeatureList* features = webkit_settings_get_all_features();
    for (gsize i = 0; i < webkit_feature_list_get_length(features); ++i) {
        WebKitFeature* feature = webkit_feature_list_get(features, i);
        if (webkit_feature_get_identifier(feature) == identifier) {
            webkit_settings_set_feature_enabled(settings, feature, enabled);
        }
    }
    webkit_feature_list_unref(features);
}

void limitSettings(WebKitSettings* settings) {
    webkit_settings_set_enable_fullscreen(settings,
                                          FALSE);  // the bar with the host and the close button stays in sight
    webkit_settings_set_hardware_acceleration_policy(settings, WEBKIT_HARDWARE_ACCELERATION_POLICY_NEVER);
    webkit_settings_set_enable_media_stream(settings, FALSE);
    webkit_settings_set_enable_page_cache(settings, FALSE);
    webkit_settings_set_enable_webrtc(settings, FALSE);
    // A fingerprint runs in a hidden view, where chains of timers would take a second for each link.
    setFeature(settings, "HiddenPageDOMTimerThrottling", false);
    // Without these two, a page that ends in a sub-frame of a secure page never ends; docs/gtk.md weighs the risk.
    setFeature(settings, "AllowDisplayOfInsecureContent", true);
    setFeature(settings, "UpgradeMixedContent", false);
}

gboolean refuseDialog(WebKitWebView*, WebKitScriptDialog* dialog, gpointer) {
    // Leaving a page is never held up; all other dialogs return at once, unseen.
    if (webkit_script_dialog_get_dialog_type(dialog) == WEBKIT_SCRIPT_DIALOG_BEFORE_UNLOAD_CONFIRM) {
        webkit_script_dialog_confirm_set_confirmed(dialog, TRUE);
    }
    return TRUE;
}

template <class Request, void (*deny)(Request*)>
gboolean refuse(WebKitWebView*, Request* request, gpointer) {
    deny(request);
    return TRUE;
}

gboolean refusePrint(WebKitWebView*, WebKitPrintOperation*, gpointer) { return TRUE; }

void refuseDownload(WebKitNetworkSession*, WebKitDownload* download, gpointer) { webkit_download_cancel(download); }

void refuseFreedoms(WebKitWebView* view) {
    const std::array<std::pair<const char*, GCallback>, 6> refusals{{
        {"script-dialog", G_CALLBACK(refuseDialog)},
        {"permission-request", G_CALLBACK((refuse<WebKitPermissionRequest, webkit_permission_request_deny>))},
        {"run-file-chooser", G_CALLBACK((refuse<WebKitFileChooserRequest, webkit_file_chooser_request_cancel>))},
        {"run-color-chooser", G_CALLBACK((refuse<WebKitColorChooserRequest, webkit_color_chooser_request_cancel>))},
        {"authenticate", G_CALLBACK((refuse<WebKitAuthenticationRequest, webkit_authentication_request_cancel>))},
        {"print", G_CALLBACK(refusePrint)},
    }};
    for (const auto& [signal, refuse] : refusals) g_signal_connect(view, signal, refuse, nullptr);
    WebKitNetworkSession* session = webkit_web_view_get_network_session(view);
    webkit_network_session_set_tls_errors_policy(session, WEBKIT_TLS_ERRORS_POLICY_FAIL);
    g_signal_connect(session, "download-started", G_CALLBACK(refuseDownload), nullptr);
}

}  // namespace

void GtkWebView::registerTypes() {
    g_type_ensure(WEBKIT_TYPE_WEB_VIEW);
    g_type_ensure(WEBKIT_TYPE_NETWORK_SESSION);
}

std::shared_ptr<GtkWebView> GtkWebView::make(GtkWidget* view, std::filesystem::path authorities) {
    return std::shared_ptr<GtkWebView>(new GtkWebView(view, std::move(authorities)));
}

GtkWebView::GtkWebView(GtkWidget* view, std::filesystem::path authorities)
    : mView(retained(WEBKIT_WEB_VIEW(view))), mAuthorities(std::move(authorities)) {
    limitSettings(webkit_web_view_get_settings(mView.get()));
    refuseFreedoms(mView.get());
    mConnections.connect<&GtkWebView::onDecidePolicy>(mView.get(), "decide-policy", this);
    mConnections.connect<&GtkWebView::onCreate>(mView.get(), "create", this);
    mConnections.connect<&GtkWebView::onLoadChanged>(mView.get(), "load-changed", this);
    mConnections.connect<&GtkWebView::onLoadFailed>(mView.get(), "load-failed", this);
    mConnections.connect<&GtkWebView::onTlsFailed>(mView.get(), "load-failed-with-tls-errors", this);
    mConnections.connect<&GtkWebView::onProgress>(mView.get(), "notify::estimated-load-progress", this);
    mConnections.connect<&GtkWebView::onProcessEnded>(mView.get(), "web-process-terminated", this);
}

GtkWebView::~GtkWebView() { endTimeout(); }

void GtkWebView::setHidden(bool hidden) {
    mPage.isHidden = hidden;
    announce();
}

void GtkWebView::loadHtml(const std::string& document) {
    auto text = document;
    std::erase(text, '\0');  // HTML ignores it, but here it would end the document
    begin([this, text] { webkit_web_view_load_html(mView.get(), text.c_str(), nullptr); });
}

void GtkWebView::loadUrl(const std::string& url, std::chrono::seconds timeout) {
    begin([this, url, timeout] {
        if (!isPageAddress(url.c_str())) return fail();
        mTimeout = g_timeout_add_seconds(
            static_cast<guint>(timeout.count()),
            [](gpointer self) -> gboolean {
                guarded([&] { static_cast<GtkWebView*>(self)->onTimeout(); });
                return G_SOURCE_REMOVE;
            },
            this);
        webkit_web_view_load_uri(mView.get(), url.c_str());
    });
}

void GtkWebView::goBack() {
    if (mPage.hasArrived) return change(Page::Phase::SHOWN);
    begin(mLoad);
}

void GtkWebView::begin(std::function<void()> load) {
    stop();
    mLoad = load;
    mMayLoadAgain = true;
    mPage = {.isHidden = mPage.isHidden, .host = {}};
    announce();
    load();
}

void GtkWebView::stop() {
    mMayLoadAgain = false;
    webkit_web_view_stop_loading(mView.get());
    endTimeout();
}

void GtkWebView::fail() {
    endTimeout();
    mPage.progress = 0;
    change(Page::Phase::FAILED);
}

void GtkWebView::endTimeout() { g_clear_handle_id(&mTimeout, g_source_remove); }

void GtkWebView::onTimeout() {
    mTimeout = 0;
    stop();
    fail();
}

void GtkWebView::change(Page::Phase phase) {
    mPage.phase = phase;
    announce();
}

void GtkWebView::announce() {
    if (const auto told = observer.lock()) told->onPageChanged(mPage);
}

gboolean GtkWebView::onDecidePolicy(WebKitPolicyDecision* decision, int type) {
    // The observer may dismiss the scene; then these references alone keep the view and the decision alive.
    const auto keptDecision = retained(decision);
    const auto keptView = retained(mView.get());
    if (type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE) return onResponse(decision);

    auto* action = webkit_navigation_policy_decision_get_navigation_action(WEBKIT_NAVIGATION_POLICY_DECISION(decision));
    auto* request = webkit_navigation_action_get_request(action);
    if (type == WEBKIT_POLICY_DECISION_TYPE_NEW_WINDOW_ACTION) {
        // There is only one view: what a person opens in a new window opens here, as a navigation like any other.
        webkit_policy_decision_ignore(decision);
        if (webkit_navigation_action_is_user_gesture(action)) webkit_web_view_load_request(mView.get(), request);
        return TRUE;
    }
    const char* url = webkit_uri_request_get_uri(request);
    if (offer(url) && isWithinReach(url)) {
        webkit_policy_decision_use(decision);
    } else {
        refuse(decision);
    }
    return TRUE;
}

gboolean GtkWebView::onResponse(WebKitPolicyDecision* decision) {
    // What the view cannot show would become a download.
    if (webkit_response_policy_decision_is_mime_type_supported(WEBKIT_RESPONSE_POLICY_DECISION(decision))) return FALSE;
    refuse(decision);
    return TRUE;
}

void GtkWebView::refuse(WebKitPolicyDecision* decision) {
    webkit_policy_decision_ignore(decision);
    if (!mPage.hasArrived && !mPage.isHidden) fail();  // otherwise the page that tried stays
}

GtkWidget* GtkWebView::onCreate(gpointer action) {
    const auto keptView = retained(mView.get());
    auto* request = webkit_navigation_action_get_request(static_cast<WebKitNavigationAction*>(action));
    offer(webkit_uri_request_get_uri(request));
    return nullptr;  // a script opens no windows
}

bool GtkWebView::offer(const char* url) {
    const auto asked = observer.lock();
    return !asked || asked->shouldStartLoad(url ? std::optional<std::string>(url) : std::nullopt);
}

void GtkWebView::onLoadChanged(int event) {
    if (event == WEBKIT_LOAD_COMMITTED) {
        endTimeout();
        // Not before: the address of a page still on its way would be shown above the content of another.
        const char* url = webkit_web_view_get_uri(mView.get());
        if (isLoopback(url)) return change(Page::Phase::WORKING);
        // WebKit shows this instead of a page at a port that it never connects to, without calling it a failure.
        if (!mPage.isHidden && !mPage.hasArrived && url == std::string_view("about:blank")) return fail();
        mPage.hasArrived = !mPage.isHidden;
        mPage.host = hostOf(url);
        mPage.isSecure = hasScheme(url, {"https"});
        change(Page::Phase::SHOWN);
    } else if (event == WEBKIT_LOAD_FINISHED) {
        mPage.progress = 0;
        announce();
    }
}

gboolean GtkWebView::onLoadFailed(int, const char* url, GError* error) {
    // Another load took its place, or it was refused, which is handled elsewhere.
    const bool isOver =
        g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED) ||
        g_error_matches(error, WEBKIT_POLICY_ERROR, WEBKIT_POLICY_ERROR_FRAME_LOAD_INTERRUPTED_BY_POLICY_CHANGE);
    if (isOver) return TRUE;
    if (isLoopback(url)) {
        change(Page::Phase::WORKING);
    } else if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED) && !mPage.hasArrived &&
               std::exchange(mMayLoadAgain, false)) {
        // Not by us: WebKit may lose a load when the previous one ends.
        endTimeout();
        const auto load = mLoad;  // another load may begin before this returns
        load();
    } else {
        fail();
    }
    return TRUE;  // otherwise an error page would replace the content
}

gboolean GtkWebView::onTlsFailed(const char* url, GTlsCertificate* certificate, int) {
    const auto host = hostOf(url);
    if (isVouchedFor(host, certificate) && mVouchedHosts.insert(host).second) {
        webkit_network_session_allow_tls_certificate_for_host(webkit_web_view_get_network_session(mView.get()),
                                                              certificate, host.c_str());
        webkit_web_view_load_uri(mView.get(), url);
    } else {
        fail();
    }
    return TRUE;
}

// By the host application's own authorities, which WebKit cannot be told about.
bool GtkWebView::isVouchedFor(const std::string& host, GTlsCertificate* certificate) const {
    if (mAuthorities.empty()) return false;
    const ObjectPointer<GTlsDatabase> database(G_TLS_DATABASE(g_tls_file_database_new(mAuthorities.c_str(), nullptr)));
    if (!database) return false;
    const ObjectPointer<GSocketConnectable> identity(g_network_address_new(host.c_str(), 0));
    const auto faults =
        g_tls_database_verify_chain(database.get(), certificate, G_TLS_DATABASE_PURPOSE_AUTHENTICATE_SERVER,
                                    identity.get(), nullptr, G_TLS_DATABASE_VERIFY_NONE, nullptr, nullptr);
    return faults == 0;
}

void GtkWebView::onProgress(GParamSpec*) {
    mPage.progress = webkit_web_view_get_estimated_load_progress(mView.get());
    announce();
}

void GtkWebView::onProcessEnded(int) {
    mPage.hasArrived = false;
    fail();
}

}  // namespace kavio
