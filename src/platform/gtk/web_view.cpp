#include "platform/gtk/web_view.h"

#include <webkit/webkit.h>

#include <algorithm>
#include <array>
#include <new>
#include <string_view>
#include <utility>

namespace kavio {
namespace {

struct UriUnref {
    void operator()(GUri* uri) const { g_uri_unref(uri); }
};

std::unique_ptr<GUri, UriUnref> parsed(const char* url) {
    // As a browser does, which loads an address with a stray "%", too: its host must not go unnamed.
    constexpr auto relaxed = GUriFlags(G_URI_FLAGS_ENCODED | G_URI_FLAGS_PARSE_RELAXED);
    return std::unique_ptr<GUri, UriUnref>(url ? g_uri_parse(url, relaxed, nullptr) : nullptr);
}

std::string hostOf(const char* url) {
    const auto uri = parsed(url);
    const char* host = uri ? g_uri_get_host(uri.get()) : nullptr;
    return host ? host : "";
}

// Its address without what comes after host and port, which may be anything; empty without a host.
std::string serverOf(const char* url) {
    const auto uri = parsed(url);
    const char* host = uri ? g_uri_get_host(uri.get()) : nullptr;
    if (!host || !*host) return {};
    const std::unique_ptr<char, decltype(&g_free)> server(
        g_uri_join(G_URI_FLAGS_ENCODED, g_uri_get_scheme(uri.get()), nullptr, host, g_uri_get_port(uri.get()), "/",
                   nullptr, nullptr),
        g_free);
    return server.get();
}

bool hasScheme(const char* url, std::initializer_list<std::string_view> schemes) {
    const char* scheme = url ? g_uri_peek_scheme(url) : nullptr;
    return scheme && std::find(schemes.begin(), schemes.end(), std::string_view(scheme)) != schemes.end();
}

bool isPageAddress(const char* url) { return hasScheme(url, {"http", "https"}); }

// What a page may navigate to. Files are none of its business, and no other program may be started behind a
// person's back.
bool isWithinReach(const char* url) { return hasScheme(url, {"http", "https", "about", "data", "blob"}); }

bool isEnd(const char* url) { return url && std::string_view(url).starts_with(loopbackUrl); }

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
    // Should a fingerprint's page count as hidden after all: chains of timers would take a second for each link.
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
    g_type_ensure(WEBKIT_TYPE_WEB_CONTEXT);
    g_type_ensure(WEBKIT_TYPE_NETWORK_SESSION);
}

std::shared_ptr<GtkWebView> GtkWebView::make(GtkWidget* view, const std::filesystem::path& authorities) {
    return std::shared_ptr<GtkWebView>(new GtkWebView(view, authorities));
}

GtkWebView::GtkWebView(GtkWidget* view, const std::filesystem::path& authorities)
    : mView(retained(WEBKIT_WEB_VIEW(view))),
      mAuthorities(authorities.empty() ? nullptr
                                       : G_TLS_DATABASE(g_tls_file_database_new(authorities.c_str(), nullptr))) {
    limitSettings(webkit_web_view_get_settings(mView.get()));
    refuseFreedoms(mView.get());
    mConnections.connect<&GtkWebView::onDecidePolicy>(mView.get(), "decide-policy", this);
    mConnections.connect<&GtkWebView::onCreate>(mView.get(), "create", this);
    mConnections.connect<&GtkWebView::onLoadChanged>(mView.get(), "load-changed", this);
    mConnections.connect<&GtkWebView::onLoadFailed>(mView.get(), "load-failed", this);
    mConnections.connect<&GtkWebView::onTlsFailed>(mView.get(), "load-failed-with-tls-errors", this);
    mConnections.connect<&GtkWebView::onInsecureContent>(mView.get(), "insecure-content-detected", this);
    mConnections.connect<&GtkWebView::onProgress>(mView.get(), "notify::estimated-load-progress", this);
    mConnections.connect<&GtkWebView::onProgress>(mView.get(), "notify::is-loading", this);
    mConnections.connect<&GtkWebView::onProcessEnded>(mView.get(), "web-process-terminated", this);
}

GtkWebView::~GtkWebView() { close(); }

void GtkWebView::close() {
    if (std::exchange(mIsClosed, true)) return;
    mConnections.clear();
    endPage();
}

// By a message that nobody there listens to. A script would do as well, but if the page is closed while that is on its
// way, WebKit may wait for its result for ever, and hold view and session until then.
void GtkWebView::prepare() {
    webkit_web_view_send_message_to_page(mView.get(), webkit_user_message_new("prepare", nullptr), nullptr, nullptr,
                                         nullptr);
}

void GtkWebView::setHidden(bool hidden) {
    // A page that ran out of sight is not uncovered, not even until the next one begins.
    const bool isUncovered = std::exchange(mPage.isHidden, hidden) && !hidden;
    if (isUncovered && mPage.phase != Page::Phase::ENDED) mPage.phase = Page::Phase::WORKING;
    announce();
}

void GtkWebView::loadHtml(const std::string& document) {
    auto text = document;
    std::erase(text, '\0');                // HTML ignores it, but here it would end the document
    mPatience = std::chrono::seconds(15);  // the document itself needs no time
    begin([this, text] { webkit_web_view_load_html(mView.get(), text.c_str(), nullptr); });
}

void GtkWebView::loadUrl(const std::string& url, std::chrono::seconds timeout) {
    mPatience = timeout;
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
    if (mIsClosed) return;
    endPage();
    mLoad = load;
    mMayLoadAgain = true;
    mPage = {.isHidden = mPage.isHidden, .host = {}};
    announce();
    load();
}

// The process ends, too: whatever the page goes on doing, such as going to the loopback address again and again, would
// be taken for the next page's, and a page that never rests would keep the device busy.
void GtkWebView::endPage() {
    stop();
    if (mLoad) webkit_web_view_terminate_web_process(mView.get());
}

void GtkWebView::stop() {
    ++mLoadNumber;
    mServers.clear();
    mMayLoadAgain = false;
    webkit_web_view_stop_loading(mView.get());
    endTimeout();
}

void GtkWebView::fail() {
    endTimeout();
    change(Page::Phase::FAILED);
}

void GtkWebView::endTimeout() { g_clear_handle_id(&mTimeout, g_source_remove); }

void GtkWebView::onTimeout() {
    mTimeout = 0;
    stop();
    fail();
}

void GtkWebView::change(Page::Phase phase) {
    if (mPage.phase == Page::Phase::ENDED) return;  // whatever it still does, it stays covered until the next load
    mPage.phase = phase;
    announce();
}

void GtkWebView::announce() {
    if (const auto told = observer.lock()) told->onPageChanged(mPage);
}

void GtkWebView::IgnoreDecision::operator()(WebKitPolicyDecision* decision) const {
    webkit_policy_decision_ignore(decision);  // changes nothing once it has been used
    g_object_unref(decision);
}

gboolean GtkWebView::onDecidePolicy(WebKitPolicyDecision* decision, int type) {
    const auto keptView = retained(mView.get());  // the observer may dismiss the scene
    if (type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE) return onResponse(decision);
    if (type == WEBKIT_POLICY_DECISION_TYPE_NEW_WINDOW_ACTION) {
        onNewWindow(decision);
    } else {
        onNavigation(HeldDecision(retained(decision).release()));
    }
    return TRUE;
}

void GtkWebView::onNavigation(HeldDecision decision) {
    auto* action =
        webkit_navigation_policy_decision_get_navigation_action(WEBKIT_NAVIGATION_POLICY_DECISION(decision.get()));
    const char* url = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
    const auto load = mLoadNumber;
    offer(url);
    if (load != mLoadNumber) return;  // the observer has ended this page
    if (!isWithinReach(url)) return onRefused();
    if (isEnd(url)) change(Page::Phase::ENDED);  // the page has ended, also if a frame of it says so
    useOnceTrusted(std::move(decision), url);
}

// There is only one view: what a person opens in a new window opens here, as a navigation like any other.
void GtkWebView::onNewWindow(WebKitPolicyDecision* decision) {
    webkit_policy_decision_ignore(decision);
    auto* action = webkit_navigation_policy_decision_get_navigation_action(WEBKIT_NAVIGATION_POLICY_DECISION(decision));
    if (!webkit_navigation_action_is_user_gesture(action)) return;
    webkit_web_view_load_request(mView.get(), webkit_navigation_action_get_request(action));
}

gboolean GtkWebView::onResponse(WebKitPolicyDecision* decision) {
    // What the view cannot show would become a download.
    if (webkit_response_policy_decision_is_mime_type_supported(WEBKIT_RESPONSE_POLICY_DECISION(decision))) return FALSE;
    webkit_policy_decision_ignore(decision);
    onRefused();
    return TRUE;
}

void GtkWebView::onRefused() {
    if (!mPage.hasArrived && !mPage.isHidden) fail();  // otherwise the page that tried stays
}

// WebKit cannot be told about the host application's own authorities, only about single certificates, and it has to
// know a server's before the request goes out: a form that was refused for its server's certificate is lost.
void GtkWebView::useOnceTrusted(HeldDecision decision, const std::string& url) {
    if (!mAuthorities || !hasScheme(url.c_str(), {"https"})) return webkit_policy_decision_use(decision.get());
    const auto name = serverOf(url.c_str());
    auto& server = mServers[name];
    if (server.wasAsked || name.empty()) return webkit_policy_decision_use(decision.get());
    server.waiting.push_back(std::move(decision));
    if (server.probe) return;  // it is being asked
    try {
        server.probe = std::make_unique<CertificateProbe>(
            name.c_str(), mAuthorities.get(), mPatience,
            [this, name, host = hostOf(url.c_str())](auto* certificate) { onProbed(name, host, certificate); });
    } catch (const std::bad_alloc&) {
        onProbed(name, {}, nullptr);  // or else the page would wait for an answer that never comes
    }
}

void GtkWebView::onProbed(const std::string& server, const std::string& host, GTlsCertificate* certificate) {
    const auto waiting = std::exchange(mServers[server], {.wasAsked = true, .waiting = {}, .probe = nullptr}).waiting;
    if (certificate) {
        webkit_network_session_allow_tls_certificate_for_host(webkit_web_view_get_network_session(mView.get()),
                                                              certificate, host.c_str());
    }
    for (const auto& decision : waiting) webkit_policy_decision_use(decision.get());
}

GtkWidget* GtkWebView::onCreate(gpointer action) {
    const auto keptView = retained(mView.get());
    auto* request = webkit_navigation_action_get_request(static_cast<WebKitNavigationAction*>(action));
    offer(webkit_uri_request_get_uri(request));
    return nullptr;  // a script opens no windows
}

void GtkWebView::offer(const char* url) {
    if (const auto told = observer.lock()) told->onNavigation(url ? std::optional<std::string>(url) : std::nullopt);
}

void GtkWebView::onLoadChanged(int event) {
    if (event == WEBKIT_LOAD_COMMITTED) {
        endTimeout();
        // Not before: the address of a page still on its way would be shown above the content of another.
        const char* url = webkit_web_view_get_uri(mView.get());
        if (isEnd(url)) return change(Page::Phase::ENDED);
        // WebKit shows this instead of a page at a port that it never connects to, without calling it a failure.
        if (!mPage.isHidden && !mPage.hasArrived && url == std::string_view("about:blank")) return fail();
        mPage.hasArrived = !mPage.isHidden;
        mPage.host = hostOf(url);
        mPage.isSecure = hasScheme(url, {"https"});
        change(Page::Phase::SHOWN);
    }
}

gboolean GtkWebView::onLoadFailed(int, const char* url, GError* error) {
    // Another load took its place, or it was refused, which is handled elsewhere.
    const bool isOver =
        g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED) ||
        g_error_matches(error, WEBKIT_POLICY_ERROR, WEBKIT_POLICY_ERROR_FRAME_LOAD_INTERRUPTED_BY_POLICY_CHANGE);
    if (isOver) return TRUE;
    if (isEnd(url)) {
        change(Page::Phase::ENDED);
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

gboolean GtkWebView::onTlsFailed(const char*, GTlsCertificate*, int) {
    fail();
    return TRUE;
}

// Before anything of it is fetched. WebKit calls this signal deprecated and has no other for it; the conformance suite
// tries each kind of content that it has to cover.
void GtkWebView::onInsecureContent(int) {
    mPage.isSecure = false;
    announce();
}

void GtkWebView::onProgress(GParamSpec*) {
    const bool isLoading = webkit_web_view_is_loading(mView.get());
    mPage.progress = isLoading ? webkit_web_view_get_estimated_load_progress(mView.get()) : 0;
    announce();
}

void GtkWebView::onProcessEnded(int reason) {
    if (reason == WEBKIT_WEB_PROCESS_TERMINATED_BY_API) return;  // by us
    mPage.hasArrived = false;
    fail();
}

}  // namespace kavio
