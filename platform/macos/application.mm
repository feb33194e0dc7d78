// Vantorel. MIT licence, see LICENSE.
// The application object over NSApplication.
#import "platform/macos/application.h"

#import <AppKit/AppKit.h>

#include <dispatch/dispatch.h>

#include <csignal>
#include <utility>
#include <vector>

#import "platform/macos/bridge.h"
#import "platform/macos/menu.h"

using vantorel::ApplicationDelegate;
using vantorel::Selector;

/// Forwards to the controller, which it holds weakly. It responds to the menu's selectors, so that the responder chain,
/// which ends at the application's delegate, finds them here.
@interface VantorelApplicationDelegate : NSObject <NSApplicationDelegate>
- (instancetype)initWithDelegate:(std::weak_ptr<ApplicationDelegate>)delegate;
- (void)showAbout;
- (void)toggleAlwaysOnTop;
- (void)toggleHideInScreenshots;
- (void)reload;
- (void)resetZoom;
- (void)zoomIn;
- (void)zoomOut;
@end

@implementation VantorelApplicationDelegate {
    std::weak_ptr<ApplicationDelegate> _delegate;
}

- (instancetype)initWithDelegate:(std::weak_ptr<ApplicationDelegate>)delegate {
    self = [super init];
    if (self != nil) _delegate = std::move(delegate);
    return self;
}

- (void)applicationDidFinishLaunching:(NSNotification*)__unused notification {
    vantorel::mac::guarded([&] {
        if (const auto delegate = _delegate.lock()) delegate->applicationDidFinishLaunching();
    });
}

- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(NSApplication*)__unused sender {
    return vantorel::mac::guarded([&] {
        const auto delegate = _delegate.lock();
        return delegate && delegate->applicationShouldTerminateAfterLastWindowClosed();
    });
}

/// Nothing of a window is restored by the system; without an answer it complains on standard error.
- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)__unused app {
    return YES;
}

- (void)applicationWillTerminate:(NSNotification*)__unused notification {
    vantorel::mac::guarded([&] {
        if (const auto delegate = _delegate.lock()) delegate->applicationWillTerminate();
    });
}

- (void)forward:(SEL)action {
    vantorel::mac::guarded([&] {
        if (const auto delegate = _delegate.lock()) {
            delegate->performAction(vantorel::mac::toText(NSStringFromSelector(action)));
        }
    });
}

- (void)showAbout {
    [self forward:_cmd];
}

- (void)toggleAlwaysOnTop {
    [self forward:_cmd];
}

- (void)toggleHideInScreenshots {
    [self forward:_cmd];
}

- (void)reload {
    [self forward:_cmd];
}

- (void)resetZoom {
    [self forward:_cmd];
}

- (void)zoomIn {
    [self forward:_cmd];
}

- (void)zoomOut {
    [self forward:_cmd];
}

@end

namespace vantorel::mac {

namespace {

class MacApplication : public Application {
public:
    void setDelegate(std::weak_ptr<ApplicationDelegate> delegate) override {
        // NSApplication holds its delegate weakly.
        delegate_ = [[VantorelApplicationDelegate alloc] initWithDelegate:std::move(delegate)];
        app_.delegate = delegate_;
    }
    int run() override {
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) quitOn(signal);
        // A hidden or covered window must cost neither the probes their beat nor the page its socket.
        activity_ = [NSProcessInfo.processInfo beginActivityWithOptions:NSActivityUserInitiatedAllowingIdleSystemSleep
                                                                 reason:@"The window shows a running server"];
        // Ends the process by itself when the application terminates.
        [app_ run];
        return 0;
    }
    void activateIgnoringOtherApps(bool ignoring) override { [app_ activateIgnoringOtherApps:ignoring]; }
    void setMainMenu(std::shared_ptr<Menu> menu) override {
        mainMenu_ = std::move(menu);
        app_.mainMenu = nsMenuOf(mainMenu_);
    }
    std::shared_ptr<Menu> mainMenu() const override { return mainMenu_; }

private:
    /// The polite signals are a normal quit. A handler that does nothing, because a child would inherit "ignore".
    void quitOn(int signal) {
        std::signal(signal, [](int) {});
        dispatch_source_t source = dispatch_source_create(DISPATCH_SOURCE_TYPE_SIGNAL, static_cast<uintptr_t>(signal), 0,
                                                          dispatch_get_global_queue(QOS_CLASS_DEFAULT, 0));
        NSApplication* const app = app_;
        dispatch_source_set_event_handler(source, ^{
            // Not by the main queue: that one stands still while an alert is up that one of its blocks has opened.
            CFRunLoopPerformBlock(CFRunLoopGetMain(), kCFRunLoopCommonModes, ^{
                // A modal window forbids the end otherwise, and nobody may be there to answer it.
                app.modalWindow.preventsApplicationTerminationWhenModal = NO;
                [app terminate:nil];
            });
            CFRunLoopWakeUp(CFRunLoopGetMain());
        });
        dispatch_resume(source);
        signals_.push_back(source);
    }

    std::vector<dispatch_source_t> signals_;
    id<NSObject> activity_ = nil;
    NSApplication* app_ = NSApplication.sharedApplication;
    VantorelApplicationDelegate* delegate_ = nil;
    std::shared_ptr<Menu> mainMenu_;
};

}  // namespace

std::unique_ptr<Application> makeApplication() {
    return std::make_unique<MacApplication>();
}

}  // namespace vantorel::mac
