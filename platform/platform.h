// Vantorel. MIT licence, see LICENSE.
// The whole seam in one object: it hands out the platform's services and makes its objects.
//
// Everything here is for the main thread, except mainQueue, globalQueue and the queues' own functions, which any thread
// may call. References stay valid as long as the platform lives. Makers never return null: an object that cannot be
// made ends the process with a clear message.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/appkit.h"
#include "platform/application_services.h"
#include "platform/av_foundation.h"
#include "platform/core_graphics.h"
#include "platform/dispatch.h"
#include "platform/foundation.h"
#include "platform/webkit.h"

namespace vantorel {

class Platform {
public:
    virtual ~Platform() = default;

    // AppKit
    /// The application object, or null when there is none.
    virtual Application* application() = 0;
    virtual Workspace& workspace() = 0;
    virtual EventMonitors& eventMonitors() = 0;
    /// A hidden window with `contentRect` as its content rectangle in screen coordinates and `style` of WindowStyle
    /// bits. The window ends the application's "last window" count when closed. A size that no screen can show is cut
    /// to what can be shown.
    virtual std::shared_ptr<Window> makeWindow(Rect contentRect, unsigned style) = 0;
    virtual std::shared_ptr<View> makeView(Rect frame) = 0;
    virtual std::shared_ptr<TextField> makeTextField(Rect frame) = 0;
    virtual std::shared_ptr<Alert> makeAlert() = 0;
    virtual std::shared_ptr<Menu> makeMenu(const std::string& title) = 0;
    /// A key equivalent of one lower-case character goes with Command (Control where that is the custom); "" for none.
    virtual std::shared_ptr<MenuItem> makeMenuItem(const std::string& title, const Selector& action,
                                                   const std::string& keyEquivalent) = 0;
    virtual std::shared_ptr<MenuItem> makeSeparatorItem() = 0;
    /// The published text form of a rectangle, {{x, y}, {width, height}}.
    virtual std::string stringFromRect(Rect rect) = 0;
    /// Reads that form; numbers that are missing count as 0. Every number of the result is finite.
    virtual Rect rectFromString(const std::string& text) = 0;

    // WebKit
    virtual std::shared_ptr<WebsiteDataStore> defaultWebsiteDataStore() = 0;
    virtual std::shared_ptr<WebViewConfiguration> makeWebViewConfiguration() = 0;
    virtual std::shared_ptr<WebView> makeWebView(Rect frame, std::shared_ptr<WebViewConfiguration> configuration) = 0;

    // Foundation
    virtual Bundle& mainBundle() = 0;
    virtual FileManager& fileManager() = 0;
    virtual ProcessInfo& processInfo() = 0;
    virtual UserDefaults& userDefaults() = 0;
    virtual UrlSession& sharedUrlSession() = 0;
    virtual std::shared_ptr<Process> makeProcess() = 0;
    virtual std::shared_ptr<Pipe> makePipe() = 0;
    /// Whether the platform can form an address from `text`.
    virtual bool isAddress(const std::string& text) = 0;
    /// Calls `block` on the main thread every `seconds`, the first time after `seconds`, until the timer is
    /// invalidated. It fires inside a modal alert too.
    virtual std::shared_ptr<Timer> scheduleRepeatingTimer(double seconds, std::function<void()> block) = 0;

    // Dispatch
    virtual Queue& mainQueue() = 0;
    /// The global concurrent queue of default quality of service.
    virtual Queue& globalQueue() = 0;

    // Grants
    virtual ScreenCaptureAccess& screenCaptureAccess() = 0;
    virtual AudioCaptureAccess& audioCaptureAccess() = 0;
    virtual Accessibility& accessibility() = 0;
};

/// The native platform; the build decides which one. Call once, first thing on the main thread.
std::unique_ptr<Platform> makeNativePlatform();

} // namespace vantorel
