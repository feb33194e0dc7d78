// Vantorel. MIT licence, see LICENSE.
// The macOS platform in one object: it hands out what the other files of this folder make.
#import <AppKit/AppKit.h>

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cmath>

#include "platform/platform.h"

#import "platform/macos/addresses.h"
#import "platform/macos/alert.h"
#import "platform/macos/application.h"
#import "platform/macos/bridge.h"
#import "platform/macos/bundle.h"
#import "platform/macos/event_monitors.h"
#import "platform/macos/files.h"
#import "platform/macos/grants.h"
#import "platform/macos/menu.h"
#import "platform/macos/pipe.h"
#import "platform/macos/process.h"
#import "platform/macos/process_info.h"
#import "platform/macos/queue.h"
#import "platform/macos/text_field.h"
#import "platform/macos/timer.h"
#import "platform/macos/url_session.h"
#import "platform/macos/user_defaults.h"
#import "platform/macos/view.h"
#import "platform/macos/web_view.h"
#import "platform/macos/web_view_configuration.h"
#import "platform/macos/website_data.h"
#import "platform/macos/window.h"
#import "platform/macos/workspace.h"

namespace vantorel {

namespace mac {

namespace {

/// A standard descriptor that is closed would be taken by the next file that is opened, and log lines would go there.
void openStandardDescriptors() {
    for (int descriptor = 0; descriptor <= STDERR_FILENO; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) == -1) ::open("/dev/null", O_RDWR);
    }
}

double finite(double number) {
    return std::isfinite(number) ? number : 0;
}

class MacPlatform : public Platform {
public:
    Application* application() override { return application_.get(); }
    Workspace& workspace() override { return *workspace_; }
    EventMonitors& eventMonitors() override { return *eventMonitors_; }
    std::shared_ptr<Window> makeWindow(Rect contentRect, unsigned style) override {
        return mac::makeWindow(contentRect, style);
    }
    std::shared_ptr<View> makeView(Rect frame) override { return mac::makeView(frame); }
    std::shared_ptr<TextField> makeTextField(Rect frame) override { return mac::makeTextField(frame); }
    std::shared_ptr<Alert> makeAlert() override { return mac::makeAlert(); }
    std::shared_ptr<Menu> makeMenu(const std::string& title) override { return mac::makeMenu(title); }
    std::shared_ptr<MenuItem> makeMenuItem(const std::string& title, const Selector& action,
                                           const std::string& keyEquivalent) override {
        return mac::makeMenuItem(title, action, keyEquivalent);
    }
    std::shared_ptr<MenuItem> makeSeparatorItem() override { return mac::makeSeparatorItem(); }
    std::string stringFromRect(Rect rect) override { return toText(NSStringFromRect(toNSRect(rect))); }
    Rect rectFromString(const std::string& text) override {
        const NSRect rect = NSRectFromString(toNSString(text));
        return {{finite(rect.origin.x), finite(rect.origin.y)}, {finite(rect.size.width), finite(rect.size.height)}};
    }

    std::shared_ptr<WebsiteDataStore> defaultWebsiteDataStore() override { return mac::defaultWebsiteDataStore(); }
    std::shared_ptr<WebViewConfiguration> makeWebViewConfiguration() override {
        return mac::makeWebViewConfiguration();
    }
    std::shared_ptr<WebView> makeWebView(Rect frame, std::shared_ptr<WebViewConfiguration> configuration) override {
        return mac::makeWebView(frame, std::move(configuration));
    }

    Bundle& mainBundle() override { return *bundle_; }
    FileManager& fileManager() override { return *fileManager_; }
    ProcessInfo& processInfo() override { return *processInfo_; }
    UserDefaults& userDefaults() override { return *userDefaults_; }
    UrlSession& sharedUrlSession() override { return *urlSession_; }
    std::shared_ptr<Process> makeProcess() override { return mac::makeProcess(); }
    std::shared_ptr<Pipe> makePipe() override { return mac::makePipe(); }
    bool isAddress(const std::string& text) override { return mac::isAddress(text); }
    std::shared_ptr<Timer> scheduleRepeatingTimer(double seconds, std::function<void()> block) override {
        return mac::scheduleRepeatingTimer(seconds, std::move(block));
    }

    Queue& mainQueue() override { return *mainQueue_; }
    Queue& globalQueue() override { return *globalQueue_; }

    ScreenCaptureAccess& screenCaptureAccess() override { return *screenCaptureAccess_; }
    AudioCaptureAccess& audioCaptureAccess() override { return *audioCaptureAccess_; }
    Accessibility& accessibility() override { return *accessibility_; }

private:
    std::unique_ptr<Application> application_ = makeApplication();
    std::unique_ptr<Workspace> workspace_ = makeWorkspace();
    std::unique_ptr<EventMonitors> eventMonitors_ = makeEventMonitors();
    std::unique_ptr<Bundle> bundle_ = makeBundle();
    std::unique_ptr<FileManager> fileManager_ = makeFileManager();
    std::unique_ptr<ProcessInfo> processInfo_ = makeProcessInfo();
    std::unique_ptr<UserDefaults> userDefaults_ = makeUserDefaults();
    std::unique_ptr<UrlSession> urlSession_ = makeUrlSession();
    std::unique_ptr<Queue> mainQueue_ = makeMainQueue();
    std::unique_ptr<Queue> globalQueue_ = makeGlobalQueue();
    std::unique_ptr<ScreenCaptureAccess> screenCaptureAccess_ = makeScreenCaptureAccess();
    std::unique_ptr<AudioCaptureAccess> audioCaptureAccess_ = makeAudioCaptureAccess();
    std::unique_ptr<Accessibility> accessibility_ = makeAccessibility();
};

}  // namespace

}  // namespace mac

std::unique_ptr<Platform> makeNativePlatform() {
    mac::openStandardDescriptors();
    // A reader of the log that goes away costs the log, not the application. A handler, because unlike "ignore" it is not
    // handed down to the server.
    std::signal(SIGPIPE, [](int) {});
    // Inherited as "ignore" it would cost the server's exit code.
    std::signal(SIGCHLD, SIG_DFL);
    return std::make_unique<mac::MacPlatform>();
}

}  // namespace vantorel
