// Vantorel. MIT licence, see LICENSE.
// The embedded browser over WKWebView.
#pragma once

#include <memory>

#include "platform/webkit.h"

namespace vantorel::mac {

std::shared_ptr<WebView> makeWebView(Rect frame, std::shared_ptr<WebViewConfiguration> configuration);

}  // namespace vantorel::mac
