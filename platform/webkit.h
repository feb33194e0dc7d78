// Vantorel. MIT licence, see LICENSE.
// The seam to WebKit: web view, its configuration, website data, script messages, navigation and panels.
//
// The rules of platform/appkit.h hold here too: main thread, shared objects, delegates and message handlers held
// weakly.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "platform/appkit.h"
#include "platform/foundation.h"
#include "platform/platform_error.h"
#include "platform/script_value.h"

namespace vantorel {

class WebView;

/// What a web view tells about its loads. Called on the main thread.
class NavigationDelegate {
public:
    virtual ~NavigationDelegate() = default;

    /// The page and all that belongs to it has been loaded.
    virtual void didFinishNavigation(WebView& view) = 0;
    /// The load broke after the first byte of the answer.
    virtual void didFailNavigation(WebView& view, const PlatformError& error) = 0;
    /// The load failed before anything was received.
    virtual void didFailProvisionalNavigation(WebView& view, const PlatformError& error) = 0;
};

/// What a page asks of the user. Called on the main thread. Every completion is called exactly once.
class UiDelegate {
public:
    virtual ~UiDelegate() = default;

    /// The page wants a new window for `address` (none when the request bears no address). The result is the view for
    /// it, or null for no window. Called once for one request, be it window.open or a link with a target.
    virtual std::shared_ptr<WebView> createWebView(WebView& view, const std::optional<std::string>& address) = 0;
    virtual void runAlertPanel(WebView& view, const std::string& message, std::function<void()> completion) = 0;
    virtual void runConfirmPanel(WebView& view, const std::string& message, std::function<void(bool)> completion) = 0;
    /// The completion takes the user's text, or nothing when the user cancelled.
    virtual void runTextInputPanel(WebView& view, const std::string& prompt,
                                   const std::optional<std::string>& defaultText,
                                   std::function<void(std::optional<std::string>)> completion) = 0;
};

/// Receives what the page's scripts post on a channel. Called on the main thread, in the order of posting.
class ScriptMessageHandler {
public:
    virtual ~ScriptMessageHandler() = default;

    virtual void didReceiveScriptMessage(const std::string& name, const ScriptValue& body) = 0;
};

enum class WebsiteDataType {
    diskCache,
    memoryCache,
};

/// Cookies, caches and local storage of pages, kept between launches.
class WebsiteDataStore {
public:
    virtual ~WebsiteDataStore() = default;

    /// Removes the data of `types` that changed after `since`. Returns at once; `completion` comes once, later, on the
    /// main thread. Failures are not reported.
    virtual void removeData(const std::set<WebsiteDataType>& types, std::chrono::system_clock::time_point since,
                            std::function<void()> completion) = 0;
};

/// The engine's switches for a configuration.
class WebPreferences {
public:
    virtual ~WebPreferences() = default;

    /// Sets a switch that has only a key and no property: "allowFileAccessFromFileURLs", "developerExtrasEnabled",
    /// "javaScriptEnabled". An unknown key is ignored.
    virtual void setValueForKey(bool value, const std::string& key) = 0;
    virtual void setJavaScriptCanOpenWindowsAutomatically(bool allowed) = 0;
};

enum class UserScriptInjectionTime {
    atDocumentStart,
    atDocumentEnd,
};

/// A script that runs in every page.
struct UserScript {
    std::string source;
    UserScriptInjectionTime injectionTime = UserScriptInjectionTime::atDocumentStart;
    bool forMainFrameOnly = true;
};

class UserContentController {
public:
    virtual ~UserContentController() = default;

    /// Offers window.webkit.messageHandlers.NAME.postMessage to pages and delivers what they post.
    virtual void addScriptMessageHandler(std::weak_ptr<ScriptMessageHandler> handler, const std::string& name) = 0;
    virtual void addUserScript(const UserScript& script) = 0;
};

/// What a web view is made from. Changes after the view was made have no effect on it.
class WebViewConfiguration {
public:
    virtual ~WebViewConfiguration() = default;

    /// Belongs to the configuration.
    virtual WebPreferences& preferences() = 0;
    /// Belongs to the configuration.
    virtual UserContentController& userContentController() = 0;
    virtual void setWebsiteDataStore(std::shared_ptr<WebsiteDataStore> store) = 0;
};

/// The embedded browser.
class WebView : public View {
public:
    virtual void setNavigationDelegate(std::weak_ptr<NavigationDelegate> delegate) = 0;
    virtual void setUiDelegate(std::weak_ptr<UiDelegate> delegate) = 0;
    virtual void setAllowsBackForwardNavigationGestures(bool allowed) = 0;
    /// Starts to load; the outcome comes through the navigation delegate, exactly one call for each load. A load under
    /// way is cancelled and reports a failure. The request's time-out bounds the time without any answer.
    virtual void load(const UrlRequest& request) = 0;
    /// Loads the current page again; does nothing without one. The zoom stays.
    virtual void reload() = 0;
    /// 1.0 is actual size. Kept as the 64-bit number it was set to.
    virtual double pageZoom() const = 0;
    virtual void setPageZoom(double zoom) = 0;
    /// Runs `script` in the page's global scope, also while nothing has been loaded. `completion` comes once, later, on
    /// the main thread, with the error when the script threw or could not run. A value that cannot leave the page is no
    /// error.
    virtual void evaluateJavaScript(const std::string& script,
                                    std::function<void(const std::optional<PlatformError>&)> completion) = 0;
};

} // namespace vantorel
