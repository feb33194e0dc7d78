// Vantorel. MIT licence, see LICENSE.
// The controller's construction and its launch sequence, and the way from a menu item's selector to its operation.
#include "app/app_delegate.h"

#include "app/log.h"
#include "app/port.h"
#include "app/preference_keys.h"
#include "app/require.h"
#include "app/weakly.h"

namespace vantorel {

namespace {

constexpr Rect kDefaultContentRect{{100, 100}, {900, 750}};
constexpr Size kMinimumWindowSize{400, 350};
constexpr double kConnectionCheckSeconds = 2.0;

constexpr unsigned kWindowStyle =
    static_cast<unsigned>(WindowStyle::titled) | static_cast<unsigned>(WindowStyle::closable) |
    static_cast<unsigned>(WindowStyle::miniaturizable) | static_cast<unsigned>(WindowStyle::resizable);

/// The outer frame of the last quit, taken as a content rectangle: the window grows by its title bar from one launch to
/// the next, and so it has always been.
Rect initialContentRect(Platform& platform) {
    const std::optional<std::string> stored = platform.userDefaults().stringForKey(kWindowFrameKey);
    return stored ? platform.rectFromString(*stored) : kDefaultContentRect;
}

std::int64_t portFromEnvironment(Platform& platform, std::int64_t fallback) {
    const Environment environment = platform.processInfo().environment();
    const auto entry = environment.find("WEBSOCKET_PORT");
    return entry == environment.end() ? fallback : portFromText(entry->second).value_or(fallback);
}

} // namespace

AppDelegate::AppDelegate(Platform& platform) : platform_(platform) {
    websocketPort_ = portFromEnvironment(platform, websocketPort_);
}

void AppDelegate::applicationDidFinishLaunching() {
    setWindow(platform().makeWindow(initialContentRect(platform()), kWindowStyle));
    Window& mainWindow = require(window(), "window");
    mainWindow.setTitle("🤖 Vantor");
    mainWindow.setMinSize(kMinimumWindowSize);

    restorePreferences();
    createStatusBar();
    createWebView();
    createMenu();

    mainWindow.makeKeyAndOrderFront();
    mainWindow.center();
    require(platform().application(), "application").activateIgnoringOtherApps(true);
    mainWindow.setSharingType(sharingTypeFor(hideInScreenshots()));
    logLine(hideInScreenshots() ? "🖼️ Screenshot hiding: enabled (.none)"
                                : "🖼️ Screenshot hiding: disabled (.readOnly)");

    requestPermissions();
    startGoServer();
    setupGlobalHotkeys();

    setConnectionCheckTimer(platform().scheduleRepeatingTimer(
        kConnectionCheckSeconds, weakly(weak_from_this(), [](AppDelegate& self) { self.checkServerConnection(); })));
}

bool AppDelegate::applicationShouldTerminateAfterLastWindowClosed() { return true; }

bool AppDelegate::performAction(const Selector& action) {
    struct NamedOperation {
        const char* name;
        void (AppDelegate::*operation)();
    };
    static constexpr NamedOperation kOperations[] = {
        {"showAbout", &AppDelegate::showAbout},
        {"toggleAlwaysOnTop", &AppDelegate::toggleAlwaysOnTop},
        {"toggleHideInScreenshots", &AppDelegate::toggleHideInScreenshots},
        {"reload", &AppDelegate::reload},
        {"resetZoom", &AppDelegate::resetZoom},
        {"zoomIn", &AppDelegate::zoomIn},
        {"zoomOut", &AppDelegate::zoomOut},
    };
    for (const NamedOperation& named : kOperations) {
        if (action == named.name) {
            (this->*named.operation)();
            return true;
        }
    }
    return false;
}

} // namespace vantorel
