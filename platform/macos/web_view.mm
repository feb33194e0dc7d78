// Vantorel. MIT licence, see LICENSE.
// The embedded browser over WKWebView.
#import "platform/macos/web_view.h"

#include <dispatch/dispatch.h>

#include <utility>

#import "platform/macos/addresses.h"
#import "platform/macos/view.h"
#import "platform/macos/web_view_configuration.h"
#import "platform/macos/web_view_delegates.h"

namespace vantorel::mac {

namespace {

class MacWebView : public ViewOf<WebView> {
public:
    explicit MacWebView(WKWebView* view) : ViewOf<WebView>(view), view_(view) {}
    MacWebView(const MacWebView&) = delete;
    MacWebView& operator=(const MacWebView&) = delete;
    ~MacWebView() override {
        view_.navigationDelegate = nil;
        view_.UIDelegate = nil;
    }

    // WKWebView holds its delegates weakly.
    void setNavigationDelegate(std::weak_ptr<NavigationDelegate> delegate) override {
        navigationDelegate_ = [[VantorelNavigationDelegate alloc] initWithView:this delegate:std::move(delegate)];
        view_.navigationDelegate = navigationDelegate_;
    }
    void setUiDelegate(std::weak_ptr<UiDelegate> delegate) override {
        uiDelegate_ = [[VantorelUIDelegate alloc] initWithView:this delegate:std::move(delegate)];
        view_.UIDelegate = uiDelegate_;
    }
    void setAllowsBackForwardNavigationGestures(bool allowed) override {
        view_.allowsBackForwardNavigationGestures = allowed;
    }
    void load(const UrlRequest& request) override {
        if (NSURLRequest* const urlRequest = toURLRequest(request)) {
            [view_ loadRequest:urlRequest];
            return;
        }
        WKWebView* const view = view_;
        dispatch_async(dispatch_get_main_queue(), ^{
            [view.navigationDelegate webView:view didFailProvisionalNavigation:nil withError:badAddressError()];
        });
    }
    void reload() override { [view_ reload]; }
    double pageZoom() const override { return view_.pageZoom; }
    void setPageZoom(double zoom) override { view_.pageZoom = zoom; }
    void evaluateJavaScript(const std::string& script,
                            std::function<void(const std::optional<PlatformError>&)> completion) override {
        [view_ evaluateJavaScript:toNSString(script)
                completionHandler:^(id __unused result, NSError* error) {
                    guarded(completion, judged(error));
                }];
    }

private:
    /// A value that cannot leave the page is no failure of the script.
    static std::optional<PlatformError> judged(NSError* error) {
        const bool unsupportedResult = [error.domain isEqualToString:WKErrorDomain] &&
                                       error.code == WKErrorJavaScriptResultTypeIsUnsupported;
        return unsupportedResult ? std::nullopt : toPlatformError(error);
    }

    WKWebView* view_;
    VantorelNavigationDelegate* navigationDelegate_ = nil;
    VantorelUIDelegate* uiDelegate_ = nil;
};

}  // namespace

std::shared_ptr<WebView> makeWebView(Rect frame, std::shared_ptr<WebViewConfiguration> configuration) {
    WKWebView* const view = [[WKWebView alloc] initWithFrame:toNSRect(frame)
                                               configuration:nativeConfigurationOf(configuration)];
    return std::make_shared<MacWebView>(view);
}

}  // namespace vantorel::mac
