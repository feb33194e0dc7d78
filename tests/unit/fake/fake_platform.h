// Vantorel. MIT licence, see LICENSE.
// The fake platform: a real, stateful platform without a screen, which records every call and does nothing by itself.
//
// Time stands still until a test advances it; queues run when a test runs them; the test plays the user, the child
// process, the web engine and the system's prompts. Calls that break a promise of the seam are noted as violations.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/platform.h"
#include "tests/unit/fake/fake_alert.h"
#include "tests/unit/fake/fake_application.h"
#include "tests/unit/fake/fake_files.h"
#include "tests/unit/fake/fake_grants.h"
#include "tests/unit/fake/fake_loop.h"
#include "tests/unit/fake/fake_menu.h"
#include "tests/unit/fake/fake_process.h"
#include "tests/unit/fake/fake_url_session.h"
#include "tests/unit/fake/fake_view.h"
#include "tests/unit/fake/fake_web.h"
#include "tests/unit/fake/fake_window.h"
#include "tests/unit/fake/record.h"

namespace vantorel::fake {

class FakePlatform : public Platform {
public:
    FakePlatform() = default;
    ~FakePlatform() override;
    FakePlatform(const FakePlatform&) = delete;
    FakePlatform& operator=(const FakePlatform&) = delete;

    Application* application() override { return applicationMissing ? nullptr : &app; }
    Workspace& workspace() override { return desktop; }
    EventMonitors& eventMonitors() override { return keyboard; }
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
    std::shared_ptr<WebsiteDataStore> defaultWebsiteDataStore() override { return websiteData; }
    std::shared_ptr<WebViewConfiguration> makeWebViewConfiguration() override;
    std::shared_ptr<WebView> makeWebView(Rect frame, std::shared_ptr<WebViewConfiguration> configuration) override;
    Bundle& mainBundle() override { return bundle; }
    FileManager& fileManager() override { return files; }
    ProcessInfo& processInfo() override { return surroundings; }
    UserDefaults& userDefaults() override { return defaults; }
    UrlSession& sharedUrlSession() override { return http; }
    std::shared_ptr<Process> makeProcess() override;
    std::shared_ptr<Pipe> makePipe() override;
    bool isAddress(const std::string& text) override;
    std::shared_ptr<Timer> scheduleRepeatingTimer(double seconds, std::function<void()> block) override;
    Queue& mainQueue() override { return loop.mainQueue(); }
    Queue& globalQueue() override { return loop.globalQueue(); }
    ScreenCaptureAccess& screenCaptureAccess() override { return screenCapture; }
    AudioCaptureAccess& audioCaptureAccess() override { return microphone; }
    Accessibility& accessibility() override { return trust; }

    // For tests: the parts of the platform
    Record recorder;
    FakeLoop loop{recorder};
    FakeApplication app{recorder};
    FakeWorkspace desktop{recorder};
    FakeEventMonitors keyboard{recorder};
    AlertUser user;
    std::shared_ptr<FakeWebsiteDataStore> websiteData = std::make_shared<FakeWebsiteDataStore>(recorder);
    FakeBundle bundle;
    FakeFileManager files{recorder};
    FakeProcessInfo surroundings{recorder};
    FakeUserDefaults defaults{recorder};
    FakeUrlSession http{recorder};
    FakeScreenCaptureAccess screenCapture{recorder};
    FakeAudioCaptureAccess microphone{recorder};
    FakeAccessibility trust{recorder};

    // For tests: what was made, oldest first
    std::vector<std::shared_ptr<FakeWindow>> windows;
    std::vector<std::shared_ptr<FakeView>> views;
    std::vector<std::shared_ptr<FakeTextField>> textFields;
    std::vector<std::shared_ptr<FakeAlert>> alerts;
    std::vector<std::shared_ptr<FakeWebView>> webViews;
    std::vector<std::shared_ptr<FakeProcess>> processes;
    std::vector<std::shared_ptr<FakePipe>> pipes;

    /// application() gives null.
    bool applicationMissing = false;
    /// isAddress says no to everything.
    bool refusesAddresses = false;
    /// Called with each new object of the kind, where set: to script it before the logic gets it.
    std::function<void(FakeProcess&)> onMakeProcess;
    std::function<void(FakeWindow&)> onMakeWindow;
    std::function<void(FakeView&)> onMakeView;
    std::function<void(FakeWebView&)> onMakeWebView;

    void runMainQueue() { loop.runMainQueue(); }
    void runGlobalQueue() { loop.runGlobalQueue(); }
    void advance(double seconds) { loop.advance(seconds); }

private:
    /// "menu3" for the third menu, and so on.
    std::string nameFor(const std::string& kind);
    std::map<std::string, int> made_;
};

} // namespace vantorel::fake
