// Vantorel. MIT licence, see LICENSE.
// The Linux platform: one object that hands out the services of this folder.
#pragma once

#include <memory>
#include <string>

#include "platform/linux/application.h"
#include "platform/platform.h"

namespace vantorel::gtk {

class LinuxPlatform : public Platform {
public:
    /// Prepares the process for GTK: `inherited` is the environment as the user gave it.
    explicit LinuxPlatform(Environment inherited);
    LinuxPlatform(const LinuxPlatform&) = delete;
    LinuxPlatform& operator=(const LinuxPlatform&) = delete;
    ~LinuxPlatform() override;

    GtkApp* application() override { return &application_; }
    Workspace& workspace() override;
    EventMonitors& eventMonitors() override;
    std::shared_ptr<Window> makeWindow(Rect contentRect, unsigned style) override;
    std::shared_ptr<View> makeView(Rect frame) override;
    std::shared_ptr<TextField> makeTextField(Rect frame) override;
    std::shared_ptr<Alert> makeAlert() override;
    std::shared_ptr<Menu> makeMenu(const std::string& title) override;
    std::shared_ptr<MenuItem> makeMenuItem(const std::string& title, const Selector& action,
                                           const std::string& keyEquivalent) override;
    std::shared_ptr<MenuItem> makeSeparatorItem() override;
    std::string stringFromRect(Rect rect) override;
    Rect rectFromString(const std::string& text) override;

    std::shared_ptr<WebsiteDataStore> defaultWebsiteDataStore() override;
    std::shared_ptr<WebViewConfiguration> makeWebViewConfiguration() override;
    std::shared_ptr<WebView> makeWebView(Rect frame, std::shared_ptr<WebViewConfiguration> configuration) override;

    Bundle& mainBundle() override;
    FileManager& fileManager() override;
    ProcessInfo& processInfo() override;
    UserDefaults& userDefaults() override;
    UrlSession& sharedUrlSession() override;
    std::shared_ptr<Process> makeProcess() override;
    std::shared_ptr<Pipe> makePipe() override;
    bool isAddress(const std::string& text) override;
    std::shared_ptr<Timer> scheduleRepeatingTimer(double seconds, std::function<void()> block) override;

    Queue& mainQueue() override;
    Queue& globalQueue() override;

    ScreenCaptureAccess& screenCaptureAccess() override;
    AudioCaptureAccess& audioCaptureAccess() override;
    Accessibility& accessibility() override;

private:
    Environment added_;
    GtkApp application_;
    std::unique_ptr<ProcessInfo> processInfo_;
    std::unique_ptr<Bundle> bundle_;
    std::unique_ptr<FileManager> fileManager_;
    // Made when first asked for: they need the display or take time that the first window should have.
    std::unique_ptr<UserDefaults> userDefaults_;
    std::unique_ptr<Workspace> workspace_;
    std::unique_ptr<EventMonitors> eventMonitors_;
    std::unique_ptr<UrlSession> urlSession_;
    std::unique_ptr<ScreenCaptureAccess> screenCaptureAccess_;
    std::unique_ptr<AudioCaptureAccess> audioCaptureAccess_;
    std::unique_ptr<Accessibility> accessibility_;
};

} // namespace vantorel::gtk
