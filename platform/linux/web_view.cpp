// Vantorel. MIT licence, see LICENSE.
// The embedded browser on WebKitGTK 6.0.
#include "platform/linux/web_view.h"

#include <cmath>
#include <utility>

#include "platform/linux/c_text.h"
#include "platform/linux/main_thread.h"
#include "platform/linux/script_panels.h"

namespace vantorel::gtk {

namespace {

Object<WebKitWebView> makeEngineView(const GtkWebPreferences& preferences, WebKitNetworkSession* session,
                                     WebKitUserContentManager* messages, bool drawsInSoftware) {
    const Object<WebKitSettings> settings = preferences.makeSettings();
    if (drawsInSoftware) {
        webkit_settings_set_hardware_acceleration_policy(settings.get(), WEBKIT_HARDWARE_ACCELERATION_POLICY_NEVER);
    }
    return Object<WebKitWebView>::share(
        WEBKIT_WEB_VIEW(g_object_new(WEBKIT_TYPE_WEB_VIEW, "network-session", session, "user-content-manager", messages,
                                     "settings", settings.get(), nullptr)));
}

} // namespace

GtkWebView::GtkWebView(Rect frame, std::shared_ptr<GtkWebViewConfiguration> configuration, bool drawsInSoftware)
    : ViewOf(frame),
      configuration_(std::move(configuration)),
      store_(configuration_->websiteDataStore()),
      drawsInSoftware_(drawsInSoftware),
      messages_(configuration_->userContentController()),
      view_(makeEngineView(configuration_->preferences(), store_->session(), messages_.manager(), drawsInSoftware_)) {
    assertMainThread();
    core().setContent(GTK_WIDGET(view_.get()));
    hideUntilDrawn();
    connectSignals();
    keepNothingTyped();
}

GtkWebView::~GtkWebView() = default;

// Asked for its picture before the page's process has sent one, the engine that draws in software keeps the main thread
// waiting for it, half a second when that process is busy. The picture's coming is what asks for the view to be drawn
// next, once the page is there. With a graphics processor the engine begins no second frame before the first was shown.
void GtkWebView::hideUntilDrawn() {
    if (drawsInSoftware_) {
        core().hideContent();
    }
}

// The engine has a text view inside of its own tell what a key means for editing. That one takes each letter typed into
// the page, passwords among them, for its own text, and keeps and lays out all of it as long as the view lives.
void GtkWebView::keepNothingTyped() {
    for (GtkWidget* child = gtk_widget_get_first_child(GTK_WIDGET(view_.get())); child != nullptr;
         child = gtk_widget_get_next_sibling(child)) {
        if (GTK_IS_TEXT_VIEW(child)) {
            GtkTextBuffer* typed = gtk_text_view_get_buffer(GTK_TEXT_VIEW(child));
            connections_.push_back(
                connect<void(GtkTextIter*, char*, int)>(typed, "insert-text", [typed](GtkTextIter*, char*, int) {
                    g_signal_stop_emission_by_name(typed, "insert-text");
                }));
        }
    }
}

void GtkWebView::connectSignals() {
    WebKitWebView* view = view_.get();
    connections_.push_back(
        connect<void(WebKitLoadEvent)>(view, "load-changed", [this](WebKitLoadEvent event) { loadChanged(event); }));
    // TRUE keeps the engine's own error page away: what was shown stays.
    connections_.push_back(connect<gboolean(WebKitLoadEvent, const char*, GError*)>(
        view, "load-failed", [this](WebKitLoadEvent, const char*, GError* error) -> gboolean {
            loadFailed(*error);
            return TRUE;
        }));
    connections_.push_back(connect<gboolean(WebKitPolicyDecision*, WebKitPolicyDecisionType)>(
        view, "decide-policy", [this](WebKitPolicyDecision* decision, WebKitPolicyDecisionType type) -> gboolean {
            if (type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE) {
                decidePolicy(decision);
            }
            return FALSE;
        }));
    connections_.push_back(connect<void(WebKitWebProcessTerminationReason)>(
        view, "web-process-terminated", [this](WebKitWebProcessTerminationReason) { processGone(); }));
    // Raised for window.open and for links with a target alike; there is no window to give.
    connections_.push_back(connect<GtkWidget*(WebKitNavigationAction*)>(
        view, "create", [this](WebKitNavigationAction* action) -> GtkWidget* {
            askForWindow(action);
            return nullptr;
        }));
    connections_.push_back(
        connect<gboolean(WebKitScriptDialog*)>(view, "script-dialog", [this](WebKitScriptDialog* dialog) -> gboolean {
            const auto self = shared_from_this();
            return runScriptDialog(dialog, *this, uiDelegate_.lock()) ? TRUE : FALSE;
        }));
    // Going on without credentials shows the server's own answer; the engine's dialog would hold up the load.
    connections_.push_back(connect<gboolean(WebKitAuthenticationRequest*)>(
        view, "authenticate", [](WebKitAuthenticationRequest* request) -> gboolean {
            webkit_authentication_request_authenticate(request, nullptr);
            return TRUE;
        }));
    connections_.push_back(connect<void()>(view, "map", [this] { gtk_widget_grab_focus(GTK_WIDGET(view_.get())); }));
}

void GtkWebView::setNavigationDelegate(std::weak_ptr<NavigationDelegate> delegate) {
    navigationDelegate_ = std::move(delegate);
}

void GtkWebView::setUiDelegate(std::weak_ptr<UiDelegate> delegate) { uiDelegate_ = std::move(delegate); }

void GtkWebView::setAllowsBackForwardNavigationGestures(bool allowed) {
    webkit_settings_set_enable_back_forward_navigation_gestures(webkit_web_view_get_settings(view_.get()), allowed);
}

void GtkWebView::askForWindow(WebKitNavigationAction* action) {
    const auto self = shared_from_this();
    const auto delegate = uiDelegate_.lock();
    if (!delegate) {
        return;
    }
    WebKitURIRequest* request = webkit_navigation_action_get_request(action);
    const std::string address = textOf(request != nullptr ? webkit_uri_request_get_uri(request) : nullptr);
    delegate->createWebView(*this, address.empty() ? std::nullopt : std::optional<std::string>(address));
}

void GtkWebView::setPageZoom(double zoom) {
    assertMainThread();
    if (!std::isfinite(zoom) || zoom <= 0) {
        return;
    }
    pageZoom_ = zoom;
    webkit_web_view_set_zoom_level(view_.get(), zoom);
}

void GtkWebView::evaluateJavaScript(const std::string& script,
                                    std::function<void(const std::optional<PlatformError>&)> completion) {
    assertMainThread();
    evaluations_.evaluate(view_.get(), script, std::move(completion));
}

std::shared_ptr<WebView> makeWebView(Rect frame, std::shared_ptr<WebViewConfiguration> configuration) {
    return std::make_shared<GtkWebView>(frame, std::dynamic_pointer_cast<GtkWebViewConfiguration>(configuration));
}

} // namespace vantorel::gtk
