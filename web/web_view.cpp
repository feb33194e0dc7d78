// Vantorel. MIT licence, see LICENSE.
// The one web view: caches purged, console bridged, placed below the status strip. It loads nothing yet.
#include "app/app_delegate.h"
#include "app/require.h"
#include "app/status_strip.h"
#include "web/bridge_script.h"

namespace vantorel {

namespace {

/// Only what is cached goes: cookies and local storage survive from launch to launch.
void purgeCaches(WebsiteDataStore& store) {
    store.removeData({WebsiteDataType::diskCache, WebsiteDataType::memoryCache},
                     std::chrono::system_clock::time_point{}, [] {});
}

std::shared_ptr<WebViewConfiguration> makeConfiguration(Platform& platform,
                                                        std::weak_ptr<ScriptMessageHandler> handler) {
    std::shared_ptr<WebViewConfiguration> configuration = platform.makeWebViewConfiguration();
    WebPreferences& preferences = configuration->preferences();
    preferences.setValueForKey(true, "allowFileAccessFromFileURLs");
    preferences.setValueForKey(true, "developerExtrasEnabled");
    preferences.setJavaScriptCanOpenWindowsAutomatically(true);
    preferences.setValueForKey(true, "javaScriptEnabled");
    configuration->setWebsiteDataStore(platform.defaultWebsiteDataStore());
    configuration->userContentController().addScriptMessageHandler(std::move(handler), kConsoleChannel);
    configuration->userContentController().addUserScript(
        {std::string(bridgeScript()), UserScriptInjectionTime::atDocumentStart, /*forMainFrameOnly=*/false});
    return configuration;
}

Rect webViewFrame(Rect content) { return {{0, 0}, {content.size.width, content.size.height - kStatusStripHeight}}; }

} // namespace

void AppDelegate::createWebView() {
    purgeCaches(*platform().defaultWebsiteDataStore());
    std::shared_ptr<WebViewConfiguration> configuration = makeConfiguration(platform(), weak_from_this());

    const Rect content = require(require(window(), "window").contentView(), "content view").bounds();
    setWebView(platform().makeWebView(webViewFrame(content), std::move(configuration)));
    WebView& view = require(webView(), "webView");
    view.setAutoresizingMask(Autoresizing::widthSizable | Autoresizing::heightSizable);
    view.setNavigationDelegate(weak_from_this());
    view.setUiDelegate(weak_from_this());
    view.setAllowsBackForwardNavigationGestures(false);
    if (const auto contentView = require(window(), "window").contentView()) {
        contentView->addSubview(webView(), OrderingMode::below, statusBar().get());
    }
}

} // namespace vantorel
