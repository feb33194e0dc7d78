// Vantorel. MIT licence, see LICENSE.
// The web view's two delegates. Every completion handler is called exactly once: WebKit raises an exception for one that
// is dropped, so a call whose receiver is gone is answered here.
#import "platform/macos/web_view_delegates.h"

#include <utility>

#import "platform/macos/bridge.h"
#import "platform/macos/view.h"

using vantorel::NavigationDelegate;
using vantorel::UiDelegate;
using vantorel::WebView;
using vantorel::mac::guarded;
using vantorel::mac::toNSString;
using vantorel::mac::toFailure;
using vantorel::mac::toText;

@implementation VantorelNavigationDelegate {
    WebView* _view;
    std::weak_ptr<NavigationDelegate> _delegate;
}

- (instancetype)initWithView:(WebView*)view delegate:(std::weak_ptr<NavigationDelegate>)delegate {
    self = [super init];
    if (self != nil) {
        _view = view;
        _delegate = std::move(delegate);
    }
    return self;
}

- (void)webView:(WKWebView*)__unused webView didFinishNavigation:(WKNavigation*)__unused navigation {
    guarded([&] {
        if (const auto delegate = _delegate.lock()) delegate->didFinishNavigation(*_view);
    });
}

- (void)webView:(WKWebView*)__unused webView
    didFailNavigation:(WKNavigation*)__unused navigation
            withError:(NSError*)error {
    guarded([&] {
        const auto delegate = _delegate.lock();
        if (delegate) delegate->didFailNavigation(*_view, toFailure(error));
    });
}

- (void)webView:(WKWebView*)__unused webView
    didFailProvisionalNavigation:(WKNavigation*)__unused navigation
                       withError:(NSError*)error {
    guarded([&] {
        const auto delegate = _delegate.lock();
        if (delegate) delegate->didFailProvisionalNavigation(*_view, toFailure(error));
    });
}

@end

@implementation VantorelUIDelegate {
    WebView* _view;
    std::weak_ptr<UiDelegate> _delegate;
}

- (instancetype)initWithView:(WebView*)view delegate:(std::weak_ptr<UiDelegate>)delegate {
    self = [super init];
    if (self != nil) {
        _view = view;
        _delegate = std::move(delegate);
    }
    return self;
}

- (WKWebView*)webView:(WKWebView*)__unused webView
    createWebViewWithConfiguration:(WKWebViewConfiguration*)__unused configuration
               forNavigationAction:(WKNavigationAction*)navigationAction
                    windowFeatures:(WKWindowFeatures*)__unused windowFeatures {
    guarded([&] {
        const auto delegate = _delegate.lock();
        if (!delegate) return;
        NSString* const address = navigationAction.request.URL.absoluteString;
        // A window without an address has a URL with an empty text.
        const bool hasAddress = address.length > 0;
        delegate->createWebView(*_view, hasAddress ? std::optional(toText(address)) : std::nullopt);
    });
    return nil;
}

- (void)webView:(WKWebView*)__unused webView
    runJavaScriptAlertPanelWithMessage:(NSString*)message
                      initiatedByFrame:(WKFrameInfo*)__unused frame
                     completionHandler:(void (^)(void))completionHandler {
    guarded([&] {
        const auto delegate = _delegate.lock();
        if (!delegate) return completionHandler();
        delegate->runAlertPanel(*_view, toText(message), [completionHandler] { completionHandler(); });
    });
}

- (void)webView:(WKWebView*)__unused webView
    runJavaScriptConfirmPanelWithMessage:(NSString*)message
                        initiatedByFrame:(WKFrameInfo*)__unused frame
                       completionHandler:(void (^)(BOOL result))completionHandler {
    guarded([&] {
        const auto delegate = _delegate.lock();
        if (!delegate) return completionHandler(NO);
        delegate->runConfirmPanel(*_view, toText(message), [completionHandler](bool result) { completionHandler(result); });
    });
}

- (void)webView:(WKWebView*)__unused webView
    runJavaScriptTextInputPanelWithPrompt:(NSString*)prompt
                              defaultText:(NSString*)defaultText
                         initiatedByFrame:(WKFrameInfo*)__unused frame
                        completionHandler:(void (^)(NSString* result))completionHandler {
    guarded([&] {
        const auto delegate = _delegate.lock();
        if (!delegate) return completionHandler(nil);
        delegate->runTextInputPanel(
            *_view, toText(prompt), defaultText == nil ? std::nullopt : std::optional(toText(defaultText)),
            [completionHandler](std::optional<std::string> answer) {
                completionHandler(answer ? toNSString(*answer) : nil);
            });
    });
}

@end
