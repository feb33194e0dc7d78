// Vantorel. MIT licence, see LICENSE.
// Page zoom and reload. The zoom lives in the web view alone; nothing saves it.
#include <algorithm>

#include "app/app_delegate.h"
#include "app/require.h"

namespace vantorel {

namespace {

constexpr double kActualSize = 1.0;
constexpr double kZoomStep = 0.1;
constexpr double kLeastZoom = 0.5;

} // namespace

void AppDelegate::reload() { require(webView(), "webView").reload(); }

void AppDelegate::resetZoom() { require(webView(), "webView").setPageZoom(kActualSize); }

void AppDelegate::zoomIn() {
    WebView& view = require(webView(), "webView");
    view.setPageZoom(view.pageZoom() + kZoomStep);
}

void AppDelegate::zoomOut() {
    WebView& view = require(webView(), "webView");
    view.setPageZoom(std::max(kLeastZoom, view.pageZoom() - kZoomStep));
}

} // namespace vantorel
