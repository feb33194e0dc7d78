// Vantorel. MIT licence, see LICENSE.
// What a web view is made from, over WKWebViewConfiguration.
#import "platform/macos/web_view_configuration.h"

#include <utility>

#import "platform/macos/bridge.h"
#import "platform/macos/script_values.h"

using vantorel::ScriptMessageHandler;

/// Forwards what pages post; holds its receiver weakly, where the content controller holds this object strongly.
@interface VantorelScriptMessageHandler : NSObject <WKScriptMessageHandler>
- (instancetype)initWithHandler:(std::weak_ptr<ScriptMessageHandler>)handler;
@end

@implementation VantorelScriptMessageHandler {
    std::weak_ptr<ScriptMessageHandler> _handler;
}

- (instancetype)initWithHandler:(std::weak_ptr<ScriptMessageHandler>)handler {
    self = [super init];
    if (self != nil) _handler = std::move(handler);
    return self;
}

- (void)userContentController:(WKUserContentController*)__unused userContentController
      didReceiveScriptMessage:(WKScriptMessage*)message {
    vantorel::mac::guarded([&] {
        if (const auto handler = _handler.lock()) {
            handler->didReceiveScriptMessage(vantorel::mac::toText(message.name),
                                             vantorel::mac::toScriptValue(message.body));
        }
    });
}

@end

namespace vantorel::mac {

namespace {

class MacWebPreferences : public WebPreferences {
public:
    explicit MacWebPreferences(WKPreferences* preferences) : preferences_(preferences) {}

    void setValueForKey(bool value, const std::string& key) override {
        // The keys are not published: a system that does not know one raises an exception.
        @try {
            [preferences_ setValue:@(value) forKey:toNSString(key)];
        } @catch (NSException* __unused exception) {
        }
    }
    void setJavaScriptCanOpenWindowsAutomatically(bool allowed) override {
        preferences_.javaScriptCanOpenWindowsAutomatically = allowed;
    }

private:
    WKPreferences* preferences_;
};

class MacUserContentController : public UserContentController {
public:
    explicit MacUserContentController(WKUserContentController* controller) : controller_(controller) {}

    void addScriptMessageHandler(std::weak_ptr<ScriptMessageHandler> handler, const std::string& name) override {
        [controller_ addScriptMessageHandler:[[VantorelScriptMessageHandler alloc] initWithHandler:std::move(handler)]
                                        name:toNSString(name)];
    }
    void addUserScript(const UserScript& script) override {
        const WKUserScriptInjectionTime time = script.injectionTime == UserScriptInjectionTime::atDocumentStart
                                                   ? WKUserScriptInjectionTimeAtDocumentStart
                                                   : WKUserScriptInjectionTimeAtDocumentEnd;
        [controller_ addUserScript:[[WKUserScript alloc] initWithSource:toNSString(script.source)
                                                          injectionTime:time
                                                       forMainFrameOnly:script.forMainFrameOnly]];
    }

private:
    WKUserContentController* controller_;
};

class MacWebViewConfiguration : public WebViewConfiguration {
public:
    MacWebViewConfiguration() {
        // The page keeps its socket to the server also while its window is hidden.
        if (@available(macOS 14.0, *)) {
            configuration_.preferences.inactiveSchedulingPolicy = WKInactiveSchedulingPolicyNone;
        }
    }

    WKWebViewConfiguration* native() const { return configuration_; }
    WebPreferences& preferences() override { return preferences_; }
    UserContentController& userContentController() override { return userContentController_; }
    void setWebsiteDataStore(std::shared_ptr<WebsiteDataStore> /*store*/) override {
        // The default store is the only one that the platform hands out.
        configuration_.websiteDataStore = WKWebsiteDataStore.defaultDataStore;
    }

private:
    WKWebViewConfiguration* configuration_ = [[WKWebViewConfiguration alloc] init];
    MacWebPreferences preferences_{configuration_.preferences};
    MacUserContentController userContentController_{configuration_.userContentController};
};

}  // namespace

std::shared_ptr<WebViewConfiguration> makeWebViewConfiguration() {
    return std::make_shared<MacWebViewConfiguration>();
}

WKWebViewConfiguration* nativeConfigurationOf(const std::shared_ptr<WebViewConfiguration>& configuration) {
    const auto* const native = dynamic_cast<const MacWebViewConfiguration*>(configuration.get());
    return native == nullptr ? nil : native->native();
}

}  // namespace vantorel::mac
