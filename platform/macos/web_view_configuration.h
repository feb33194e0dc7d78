// Vantorel. MIT licence, see LICENSE.
// What a web view is made from, over WKWebViewConfiguration.
#pragma once

#import <WebKit/WebKit.h>

#include <memory>

#include "platform/webkit.h"

namespace vantorel::mac {

std::shared_ptr<WebViewConfiguration> makeWebViewConfiguration();

/// The WKWebViewConfiguration behind `configuration`; nil for null.
WKWebViewConfiguration* nativeConfigurationOf(const std::shared_ptr<WebViewConfiguration>& configuration);

}  // namespace vantorel::mac
