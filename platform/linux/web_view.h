// Vantorel. MIT licence, see LICENSE.
// The embedded browser on WebKitGTK 6.0.
#pragma once

#include <webkit/webkit.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/graphics.h"
#include "platform/linux/load_tracker.h"
#include "platform/linux/object.h"
#include "platform/linux/script_evaluation.h"
#include "platform/linux/script_messages.h"
#include "platform/linux/view.h"
#include "platform/linux/web_view_configuration.h"
#include "platform/webkit.h"

namespace vantorel::gtk {

/// A view of the seam around an engine's view. Its time-outs run in the main loop.
class GtkWebView : public ViewOf<WebView>, public std::enable_shared_from_this<GtkWebView> {
public:
    /// `drawsInSoftware` tells the engine to leave OpenGL alone, as it must where that has no hardware.
    GtkWebView(Rect frame, std::shared_ptr<GtkWebViewConfiguration> configuration,
               bool drawsInSoftware = !hasGraphicsProcessor());
    GtkWebView(const GtkWebView&) = delete;
    GtkWebView& operator=(const GtkWebView&) = delete;
    ~GtkWebView() override;

    void setNavigationDelegate(std::weak_ptr<NavigationDelegate> delegate) override;
    void setUiDelegate(std::weak_ptr<UiDelegate> delegate) override;
    void setAllowsBackForwardNavigationGestures(bool allowed) override;
    void load(const UrlRequest& request) override;
    void reload() override;
    double pageZoom() const override { return pageZoom_; }
    void setPageZoom(double zoom) override;
    void evaluateJavaScript(const std::string& script,
                            std::function<void(const std::optional<PlatformError>&)> completion) override;

    WebKitWebView* engineView() const { return view_.get(); }

private:
    void connectSignals();
    void keepNothingTyped();
    void hideUntilDrawn();
    void start(const UrlRequest& request);
    void loadChanged(WebKitLoadEvent event);
    /// A page whose length is still being checked gives way to another load: it counts as whole.
    void settleCheck();
    void loadFinished(bool whole);
    void decidePolicy(WebKitPolicyDecision* decision);
    void loadFailed(const GError& error);
    void processGone();
    void askForWindow(WebKitNavigationAction* action);

    void armClock(double seconds);
    void report(const LoadTracker::Ended& ended);
    void reportLater(const LoadTracker::Ended& ended);

    std::shared_ptr<GtkWebViewConfiguration> configuration_;
    std::shared_ptr<GtkWebsiteDataStore> store_;
    const bool drawsInSoftware_;
    ScriptMessages messages_;
    Object<WebKitWebView> view_;
    std::weak_ptr<NavigationDelegate> navigationDelegate_;
    std::weak_ptr<UiDelegate> uiDelegate_;
    ScriptEvaluations evaluations_;
    LoadTracker tracker_;
    /// Tells a load that waits for its caches to be emptied whether it is still the latest one.
    unsigned long loadNumber_ = 0;
    /// The engine has finished and the page's length is being checked; the number tells a late answer that it is late.
    bool checksPage_ = false;
    unsigned long checkNumber_ = 0;
    SourceId clock_;
    double pageZoom_ = 1.0;
    /// The page's process died and the page was loaded again; set back by a load that finished.
    bool revived_ = false;
    std::vector<SignalConnection> connections_;
};

std::shared_ptr<WebView> makeWebView(Rect frame, std::shared_ptr<WebViewConfiguration> configuration);

} // namespace vantorel::gtk
