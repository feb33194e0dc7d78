// Vantorel. MIT licence, see LICENSE.
// The whole application: one controller, its state record and its operations.
//
// The road of a start: main constructs the controller, makes it the application's delegate and runs the event loop.
// applicationDidFinishLaunching then builds the window, restores preferences, builds strip, web view and menu, shows
// the window, asks for permissions, starts the server, installs the hotkeys and schedules the connection check. From
// there on everything is a callback: menu actions, key presses, the web view's delegates, the timer.
// applicationWillTerminate ends it.
//
// Each operation is defined in the folder of its feature: launch, end, preferences, permissions and reports in app/,
// the server in server/, the page in web/, menu, window modes and zoom in ui/, the hotkeys in hotkeys/. All of this is
// for the main thread, except updateStatus and showError, which any thread may call. Whatever may outlive the
// controller holds it weakly. Touching a required object while it is absent ends the process (app/require.h).
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/platform.h"

namespace vantorel {

class AppDelegate : public ApplicationDelegate,
                    public NavigationDelegate,
                    public UiDelegate,
                    public ScriptMessageHandler,
                    public std::enable_shared_from_this<AppDelegate> {
public:
    /// Reads the server's port from the environment; does nothing else. `platform` must outlive the controller, which
    /// has to be held by a std::shared_ptr.
    explicit AppDelegate(Platform& platform);

    // The operations
    /// The launch sequence, once.
    void applicationDidFinishLaunching() override;
    /// Loads the two window modes and lifts the window when it is to stay on top.
    virtual void restorePreferences();
    /// On the first launch only: asks for screen recording, microphone and accessibility, one after another.
    virtual void requestPermissions();
    virtual void requestMicrophonePermission();
    virtual void requestAccessibilityPermission();
    /// Builds the strip at the top of the content and its label.
    virtual void createStatusBar();
    /// Builds the web view with its bridge to the log and puts it below the strip. Loads nothing.
    virtual void createWebView();
    /// Finds, prepares and launches the server, relays its output and its end; schedules the first page load.
    virtual void startGoServer();
    /// Requests the server's page, never from a cache.
    virtual void loadWebPage();
    /// One HTTP probe; its outcome goes to the strip. Nothing before the server was launched.
    virtual void checkServerConnection();
    /// Any thread. Shows `text` in `color` on the strip, later; the last call wins.
    virtual void updateStatus(const std::string& text, const Color& color);
    /// Any thread. Shows a critical alert with one "OK" button, later. Needs no controller by then.
    virtual void showError(const std::string& title, const std::string& message);
    virtual void createMenu();
    virtual void showAbout();
    virtual void toggleAlwaysOnTop();
    virtual void toggleHideInScreenshots();
    virtual void reload();
    virtual void resetZoom();
    virtual void zoomIn();
    virtual void zoomOut();
    /// Installs the two key monitors and logs the table.
    virtual void setupGlobalHotkeys();
    /// Sends the hotkey's name to the server through the page's open socket.
    virtual void triggerHotkey(const std::string& name);
    /// Closing the main window quits: always true.
    bool applicationShouldTerminateAfterLastWindowClosed() override;

    // What else the platform calls
    /// Saves the frame, stops the timer, asks the running server to stop; waits for nothing.
    void applicationWillTerminate() override;
    /// Maps a menu item's selector to the operation of that name.
    bool performAction(const Selector& action) override;
    void didFinishNavigation(WebView& view) override;
    void didFailNavigation(WebView& view, const PlatformError& error) override;
    void didFailProvisionalNavigation(WebView& view, const PlatformError& error) override;
    /// The page's console on the log.
    void didReceiveScriptMessage(const std::string& name, const ScriptValue& body) override;
    /// Hands the address to the user's browser; never gives a view.
    std::shared_ptr<WebView> createWebView(WebView& view, const std::optional<std::string>& address) override;
    void runAlertPanel(WebView& view, const std::string& message, std::function<void()> completion) override;
    void runConfirmPanel(WebView& view, const std::string& message, std::function<void(bool)> completion) override;
    void runTextInputPanel(WebView& view, const std::string& prompt, const std::optional<std::string>& defaultText,
                           std::function<void(std::optional<std::string>)> completion) override;

    // The state record
    Platform& platform() const { return platform_; }
    const std::shared_ptr<Window>& window() const { return window_; }
    void setWindow(std::shared_ptr<Window> window) { window_ = std::move(window); }
    const std::shared_ptr<WebView>& webView() const { return webView_; }
    void setWebView(std::shared_ptr<WebView> webView) { webView_ = std::move(webView); }
    const std::shared_ptr<View>& statusBar() const { return statusBar_; }
    void setStatusBar(std::shared_ptr<View> statusBar) { statusBar_ = std::move(statusBar); }
    const std::shared_ptr<TextField>& statusLabel() const { return statusLabel_; }
    void setStatusLabel(std::shared_ptr<TextField> statusLabel) { statusLabel_ = std::move(statusLabel); }
    const std::shared_ptr<Process>& serverProcess() const { return serverProcess_; }
    void setServerProcess(std::shared_ptr<Process> serverProcess) { serverProcess_ = std::move(serverProcess); }
    bool alwaysOnTop() const { return alwaysOnTop_; }
    void setAlwaysOnTop(bool alwaysOnTop) { alwaysOnTop_ = alwaysOnTop; }
    bool hideInScreenshots() const { return hideInScreenshots_; }
    void setHideInScreenshots(bool hideInScreenshots) { hideInScreenshots_ = hideInScreenshots; }
    std::int64_t websocketPort() const { return websocketPort_; }
    void setWebsocketPort(std::int64_t websocketPort) { websocketPort_ = websocketPort; }
    bool isServerRunning() const { return isServerRunning_; }
    void setIsServerRunning(bool isServerRunning) { isServerRunning_ = isServerRunning; }
    const std::shared_ptr<Timer>& connectionCheckTimer() const { return connectionCheckTimer_; }
    void setConnectionCheckTimer(std::shared_ptr<Timer> timer) { connectionCheckTimer_ = std::move(timer); }

private:
    Platform& platform_;
    std::shared_ptr<Window> window_;
    std::shared_ptr<WebView> webView_;
    std::shared_ptr<View> statusBar_;
    std::shared_ptr<TextField> statusLabel_;
    std::shared_ptr<Process> serverProcess_;
    bool alwaysOnTop_ = false;
    bool hideInScreenshots_ = true;
    /// The server's TCP port on the loopback host. Set at construction, never range-checked.
    std::int64_t websocketPort_ = 8080;
    /// The server has been launched; never set back, also when it has ended since.
    bool isServerRunning_ = false;
    std::shared_ptr<Timer> connectionCheckTimer_;
};

/// Who may read the window while "Hide in Screenshots" is on or off.
constexpr WindowSharingType sharingTypeFor(bool hideInScreenshots) {
    return hideInScreenshots ? WindowSharingType::none : WindowSharingType::readOnly;
}

} // namespace vantorel
