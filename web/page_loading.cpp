// Vantorel. MIT licence, see LICENSE.
// Loading the server's page and reporting how that went. Nothing here retries.
#include "app/app_delegate.h"
#include "app/log.h"
#include "app/require.h"
#include "web/page_address.h"

namespace vantorel {

void AppDelegate::loadWebPage() {
    constexpr double kLoadTimeoutSeconds = 30;
    const std::string address = pageAddress(websocketPort());
    logLine("🌐 Loading: " + address);
    if (!platform().isAddress(address))
        return;
    UrlRequest request;
    request.address = address;
    request.cachePolicy = CachePolicy::reloadIgnoringLocalAndRemoteCacheData;
    request.timeoutSeconds = kLoadTimeoutSeconds;
    require(webView(), "webView").load(request);
}

void AppDelegate::didFinishNavigation(WebView& /*view*/) { logLine("✅ Page loaded successfully"); }

void AppDelegate::didFailNavigation(WebView& /*view*/, const PlatformError& error) {
    logLine("❌ Page load failed: " + error.localizedDescription);
    updateStatus("❌ Failed to load page: " + error.localizedDescription, SystemColor::red);
}

void AppDelegate::didFailProvisionalNavigation(WebView& /*view*/, const PlatformError& error) {
    logLine("❌ Provisional navigation failed: " + error.localizedDescription);
    updateStatus("❌ Failed to connect: " + error.localizedDescription, SystemColor::red);
}

} // namespace vantorel
