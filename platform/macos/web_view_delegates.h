// Vantorel. MIT licence, see LICENSE.
// The web view's two delegates: small objects that forward to the roles of the seam, which they hold weakly.
#pragma once

#import <WebKit/WebKit.h>

#include <memory>

#include "platform/webkit.h"

@interface VantorelNavigationDelegate : NSObject <WKNavigationDelegate>
- (instancetype)initWithView:(vantorel::WebView*)view delegate:(std::weak_ptr<vantorel::NavigationDelegate>)delegate;
@end

@interface VantorelUIDelegate : NSObject <WKUIDelegate>
- (instancetype)initWithView:(vantorel::WebView*)view delegate:(std::weak_ptr<vantorel::UiDelegate>)delegate;
@end
