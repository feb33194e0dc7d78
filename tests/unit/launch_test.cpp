// Vantorel. MIT licence, see LICENSE.
// Construction, the launch sequence from end to end, and the connection timer.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/unit/fake/shell_fixture.h"

namespace vantorel::fake {
namespace {

using ::testing::ElementsAreArray;

class LaunchTest : public ShellTest {
protected:
    std::int64_t portWith(const std::optional<std::string>& value) {
        platform_.surroundings.variables.clear();
        if (value)
            platform_.surroundings.variables["WEBSOCKET_PORT"] = *value;
        return std::make_shared<AppDelegate>(platform_)->websocketPort();
    }
};

TEST_F(LaunchTest, ConstructionSetsTheInitialRecord) {
    construct();
    EXPECT_EQ(shell_->window(), nullptr);
    EXPECT_EQ(shell_->webView(), nullptr);
    EXPECT_EQ(shell_->statusBar(), nullptr);
    EXPECT_EQ(shell_->statusLabel(), nullptr);
    EXPECT_EQ(shell_->serverProcess(), nullptr);
    EXPECT_EQ(shell_->connectionCheckTimer(), nullptr);
    EXPECT_FALSE(shell_->alwaysOnTop());
    EXPECT_TRUE(shell_->hideInScreenshots());
    EXPECT_FALSE(shell_->isServerRunning());
    EXPECT_EQ(shell_->websocketPort(), 8080);
}

TEST_F(LaunchTest, ConstructionOnlyReadsTheEnvironment) {
    const AppDelegate shell(platform_);
    EXPECT_THAT(platform_.recorder.lines(), ElementsAreArray({"processInfo.environment()"}));
}

TEST_F(LaunchTest, PortComesFromTheEnvironment) {
    EXPECT_EQ(portWith("9000"), 9000);
    EXPECT_EQ(portWith("+9000"), 9000);
    EXPECT_EQ(portWith("-1"), -1);
    EXPECT_EQ(portWith("0"), 0);
    EXPECT_EQ(portWith("70000"), 70000);
    EXPECT_EQ(portWith("9223372036854775807"), INT64_MAX);
    EXPECT_EQ(portWith("-9223372036854775808"), INT64_MIN);
}

TEST_F(LaunchTest, PortStaysAt8080ForAnyOtherText) {
    EXPECT_EQ(portWith(std::nullopt), 8080);
    for (const char* text : {"", "80a", " 9000", "9000 ", "9000\n", "+", "-", "+-1", "--1", "0x50", "80.0", "1e3",
                             "9223372036854775808", "-9223372036854775809", "٨٠٨٠"}) {
        EXPECT_EQ(portWith(text), 8080) << '"' << text << '"';
    }
    EXPECT_EQ(log_.lines().size(), 0U);
}

std::vector<std::string> windowSteps() {
    return {
        "userDefaults.stringForKey(\"windowFrame\")",
        "makeWindow({{100, 100}, {900, 750}}, 15) -> window1",
        "window1.setTitle(\"🤖 Vantor\")",
        "window1.setMinSize({400, 350})",
        "userDefaults.hasObject(\"hideInScreenshots\")",
        "userDefaults.hasObject(\"alwaysOnTop\")",
        "makeView({{0, 720}, {900, 30}}) -> view1",
        "view1.setAutoresizingMask(10)",
        "view1.setWantsLayer(true)",
        "view1.layer.setBackgroundColor(rgba(0.95, 0.95, 0.95, 1))",
        "makeTextField({{10, 5}, {880, 20}}) -> textField1",
        "textField1.setAutoresizingMask(2)",
        "textField1.setEditable(false)",
        "textField1.setBordered(false)",
        "textField1.setBackgroundColor(clear)",
        "textField1.setSystemFont(11)",
        "textField1.setStringValue(\"🔄 Starting server...\")",
        "view1.addSubview(textField1)",
        "contentView.addSubview(view1)",
    };
}

std::vector<std::string> pageSteps() {
    return {
        "websiteDataStore.removeData(disk memory since 0)",
        "makeWebViewConfiguration() -> configuration1",
        "configuration1.preferences.setValueForKey(true, \"allowFileAccessFromFileURLs\")",
        "configuration1.preferences.setValueForKey(true, \"developerExtrasEnabled\")",
        "configuration1.preferences.setJavaScriptCanOpenWindowsAutomatically(true)",
        "configuration1.preferences.setValueForKey(true, \"javaScriptEnabled\")",
        "configuration1.setWebsiteDataStore()",
        "configuration1.userContentController.addScriptMessageHandler(\"consoleLog\")",
        "configuration1.userContentController.addUserScript(774 bytes, document start, all frames)",
        "makeWebView({{0, 0}, {900, 720}}, configuration1) -> webView1",
        "webView1.setAutoresizingMask(18)",
        "webView1.setNavigationDelegate()",
        "webView1.setUiDelegate()",
        "webView1.setAllowsBackForwardNavigationGestures(false)",
        "contentView.addSubview(webView1, below, view1)",
    };
}

std::vector<std::string> menuSteps() {
    return {
        "makeMenu(\"\") -> menu1",
        "makeMenuItem(\"\", \"\", \"\") -> item1",
        "menu1.addItem(item1)",
        "makeMenu(\"\") -> menu2",
        "item1.setSubmenu(menu2)",
        "makeMenuItem(\"About Vantor\", \"showAbout\", \"\") -> item2",
        "menu2.addItem(item2)",
        "makeSeparatorItem() -> item3",
        "menu2.addItem(item3)",
        "makeMenuItem(\"Always on Top\", \"toggleAlwaysOnTop\", \"t\") -> item4",
        "item4.setState(0)",
        "menu2.addItem(item4)",
        "makeMenuItem(\"Hide in Screenshots\", \"toggleHideInScreenshots\", \"h\") -> item5",
        "item5.setState(1)",
        "menu2.addItem(item5)",
        "makeSeparatorItem() -> item6",
        "menu2.addItem(item6)",
        "makeMenuItem(\"Quit\", \"terminate:\", \"q\") -> item7",
        "menu2.addItem(item7)",
        "makeMenuItem(\"\", \"\", \"\") -> item8",
        "menu1.addItem(item8)",
        "makeMenu(\"View\") -> menu3",
        "item8.setSubmenu(menu3)",
        "makeMenuItem(\"Reload\", \"reload\", \"r\") -> item9",
        "menu3.addItem(item9)",
        "makeMenuItem(\"Actual Size\", \"resetZoom\", \"0\") -> item10",
        "menu3.addItem(item10)",
        "makeMenuItem(\"Zoom In\", \"zoomIn\", \"+\") -> item11",
        "menu3.addItem(item11)",
        "makeMenuItem(\"Zoom Out\", \"zoomOut\", \"-\") -> item12",
        "menu3.addItem(item12)",
        "makeMenuItem(\"\", \"\", \"\") -> item13",
        "menu1.addItem(item13)",
        "makeMenu(\"Window\") -> menu4",
        "item13.setSubmenu(menu4)",
        "makeMenuItem(\"Minimize\", \"miniaturize:\", \"m\") -> item14",
        "menu4.addItem(item14)",
        "makeMenuItem(\"Zoom\", \"zoom:\", \"\") -> item15",
        "menu4.addItem(item15)",
        "application.setMainMenu(menu1)",
    };
}

std::vector<std::string> showSteps() {
    return {
        "window1.makeKeyAndOrderFront()",
        "window1.center()",
        "application.activateIgnoringOtherApps(true)",
        "window1.setSharingType(0)",
        "log \"🖼️ Screenshot hiding: enabled (.none)\"",
        "userDefaults.boolForKey(\"hasRequestedPermissions\")",
        "log \"🔐 First launch - requesting system permissions...\"",
        "screenCaptureAccess.preflight()",
        "log \"🖥️ Requesting screen recording access...\"",
        "screenCaptureAccess.request()",
        "audioCaptureAccess.authorizationStatus()",
        "log \"🎤 Requesting microphone access...\"",
        "audioCaptureAccess.requestAccess()",
        "userDefaults.setBool(true, \"hasRequestedPermissions\")",
    };
}

std::vector<std::string> serverSteps() {
    const std::string bundle = "/Applications/Vantorel.app";
    const std::string resources = bundle + "/Contents/Resources";
    return {
        "log \"\\n========================================\"",
        "log \"🔴 ENTERING startGoServer() method\"",
        "log \"========================================\\n\"",
        "mainQueue.async()",
        "log \"📁 App bundle: " + bundle + "\"",
        "log \"📁 Resources path: " + resources + "\"",
        "log \"📁 Server path: " + resources + "/vantor-srv\"",
        "log \"📁 .env path: " + resources + "/.env\"",
        "fileManager.fileExists(\"" + resources + "/vantor-srv\")",
        "fileManager.fileExists(\"" + resources + "/.env\")",
        "log \"⚠️ Warning: .env file not found at: " + resources + "/.env\"",
        "fileManager.setPosixPermissions(\"" + resources + "/vantor-srv\", 493)",
        "log \"⚙️ Creating Process object...\"",
        "makeProcess() -> process1",
        "log \"⚙️ Process object created: true\"",
        "process1.setExecutablePath(\"" + resources + "/vantor-srv\")",
        "log \"⚙️ Executable URL set: " + resources + "/vantor-srv\"",
        "process1.setCurrentDirectoryPath(\"" + resources + "\")",
        "log \"⚙️ Working directory set: " + resources + "\"",
        "log \"🚀 Launching server from directory: " + resources + "\"",
        "processInfo.environment()",
        "fileManager.fileExists(\"" + resources + "/.env\")",
        "process1.setEnvironment(3 variables)",
        "log \"🌍 Environment: WEBSOCKET_ENABLED=true, WEBSOCKET_PORT=8080, DISABLE_NATIVE_HOTKEYS=true\"",
        "makePipe() -> pipe1",
        "process1.setStandardOutput(pipe1)",
        "process1.setStandardError(pipe1)",
        "pipe1.setReadabilityHandler()",
        "process1.setTerminationHandler()",
        "log \"🚀 About to call serverProcess?.run()...\"",
        "log \"🚀 Calling run() on process...\"",
        "process1.run()",
        "log \"✅ run() returned successfully\"",
        "log \"✅ Process is running: true\"",
        "log \"✅ Process ID: 4242\"",
        "log \"✅ Server process started successfully\"",
        "mainQueue.async()",
        "mainQueue.asyncAfter(3)",
    };
}

std::vector<std::string> hotkeySteps() {
    return {
        "log \"⌨️ Setting up global hotkeys...\"",
        "accessibility.isProcessTrusted()",
        "log \"⚠️ WARNING: Accessibility permissions NOT granted!\"",
        "log \"⚠️ Global hotkeys will NOT work until you grant permissions\"",
        "log \"⚠️ Go to: System Settings → Privacy & Security → Accessibility\"",
        "log \"⚠️ Add Vantorel.app and enable it\"",
        "log \"🔧 Registering global event monitor...\"",
        "eventMonitors.addGlobalMonitorForKeyDown()",
        "log \"✅ Global event monitor registered successfully\"",
        "log \"🔧 Registering local event monitor...\"",
        "eventMonitors.addLocalMonitorForKeyDown()",
        "log \"✅ Local event monitor registered successfully\"",
        "log \"✅ Global and local hotkeys registered (Shift + Ctrl + Option + Cmd + key)\"",
        "log \"📋 Registered keyCodes: [1, 2, 3, 4, 6, 11, 12, 13, 15, 32, 34, 46, 49]\"",
        "log \"📋 Hotkey mappings:\"",
        "log \"   1 -> screenshot_active\"",
        "log \"   2 -> design\"",
        "log \"   3 -> voice_design\"",
        "log \"   4 -> help\"",
        "log \"   6 -> stop\"",
        "log \"   11 -> screenshot_browser\"",
        "log \"   12 -> sql\"",
        "log \"   13 -> clear\"",
        "log \"   15 -> review\"",
        "log \"   32 -> quiz\"",
        "log \"   34 -> status\"",
        "log \"   46 -> algo\"",
        "log \"   49 -> voice\"",
        "scheduleRepeatingTimer(2) -> timer1",
    };
}

TEST_F(LaunchTest, TheWholeSequenceIsOneRecord) {
    construct();
    platform_.recorder.clear();
    shell_->applicationDidFinishLaunching();

    std::vector<std::string> expected;
    for (const auto& steps : {windowSteps(), pageSteps(), menuSteps(), showSteps(), serverSteps(), hotkeySteps()}) {
        expected.insert(expected.end(), steps.begin(), steps.end());
    }
    EXPECT_EQ(joined(platform_.recorder.lines()), joined(expected));
}

TEST_F(LaunchTest, LaunchFillsTheStateRecord) {
    launch();
    EXPECT_EQ(shell_->window(), platform_.windows.at(0));
    EXPECT_EQ(shell_->statusBar(), platform_.views.at(0));
    EXPECT_EQ(shell_->statusLabel(), platform_.textFields.at(0));
    EXPECT_EQ(shell_->webView(), platform_.webViews.at(0));
    EXPECT_EQ(shell_->serverProcess(), platform_.processes.at(0));
    EXPECT_TRUE(shell_->isServerRunning());
    EXPECT_NE(shell_->connectionCheckTimer(), nullptr);
}

TEST_F(LaunchTest, WindowIsCentredAndVisible) {
    launch();
    EXPECT_TRUE(window().visible());
    EXPECT_EQ(window().content().bounds().size, (Size{900, 750}));
    EXPECT_EQ(window().frame(), (Rect{{270, 61}, {900, 778}}));
}

TEST_F(LaunchTest, ShownContentIsReportedWhenHidingIsOff) {
    platform_.defaults.values["hideInScreenshots"] = false;
    launch();
    EXPECT_EQ(window().sharingType(), WindowSharingType::readOnly);
    EXPECT_EQ(log_.lines().at(0), "🖼️ Screenshot hiding: disabled (.readOnly)");
}

TEST_F(LaunchTest, ClosingTheWindowQuits) {
    launch();
    EXPECT_TRUE(shell_->applicationShouldTerminateAfterLastWindowClosed());
    window().close();
    EXPECT_TRUE(platform_.app.terminated());
    EXPECT_TRUE(platform_.defaults.values.contains("windowFrame"));
}

TEST_F(LaunchTest, RunningTheApplicationLaunchesAndEndsOnce) {
    construct();
    platform_.app.whileRunning = [this] {
        EXPECT_TRUE(window().visible());
        platform_.app.terminate();
    };
    EXPECT_EQ(platform_.app.run(), 0);
    EXPECT_EQ(platform_.recorder.countStartingWith("userDefaults.setString("), 1U);
}

TEST_F(LaunchTest, ConnectionIsCheckedAfterTwoSecondsAndThenEveryTwo) {
    launch();
    platform_.advance(1.99);
    EXPECT_EQ(platform_.http.taskCount(), 0U);
    platform_.advance(0.01);
    EXPECT_EQ(platform_.http.taskCount(), 1U);
    platform_.advance(1.99);
    EXPECT_EQ(platform_.http.taskCount(), 1U);
    platform_.advance(0.01);
    EXPECT_EQ(platform_.http.taskCount(), 2U);
    platform_.advance(6);
    EXPECT_EQ(platform_.http.taskCount(), 5U);
}

TEST_F(LaunchTest, TimerStopsWithTheApplication) {
    launch();
    EXPECT_EQ(platform_.loop.activeTimers(), 1U);
    platform_.app.terminate();
    EXPECT_EQ(platform_.loop.activeTimers(), 0U);
    platform_.advance(10);
    EXPECT_EQ(platform_.http.taskCount(), 0U);
}

TEST_F(LaunchTest, TimerDoesNothingWhenTheControllerIsGone) {
    launch();
    platform_.runMainQueue();
    releaseShell();
    platform_.recorder.clear();
    platform_.advance(10);
    EXPECT_THAT(platform_.recorder.lines(), ElementsAreArray(std::vector<std::string>{}));
}

TEST_F(LaunchTest, LaunchGoesOnWhenTheServerIsMissing) {
    platform_.files.remove(kServer);
    launch();
    EXPECT_EQ(platform_.keyboard.globalCount(), 1U);
    EXPECT_EQ(platform_.keyboard.localCount(), 1U);
    EXPECT_NE(shell_->connectionCheckTimer(), nullptr);
    EXPECT_FALSE(shell_->isServerRunning());
    EXPECT_EQ(shell_->serverProcess(), nullptr);
}

TEST_F(LaunchTest, LaunchGoesOnWhenTheServerCannotBeStarted) {
    platform_.onMakeProcess = [](FakeProcess& process) { process.launchError = PlatformError{"no", "no"}; };
    launch();
    EXPECT_EQ(platform_.keyboard.globalCount(), 1U);
    EXPECT_NE(shell_->connectionCheckTimer(), nullptr);
}

/// A controller that notes which of its operations the launch calls.
class NotingDelegate : public AppDelegate {
public:
    using AppDelegate::AppDelegate;
    using AppDelegate::createWebView;

    void restorePreferences() override { calls.push_back("restorePreferences"); }
    void createStatusBar() override { calls.push_back("createStatusBar"); }
    void createWebView() override { calls.push_back("createWebView"); }
    void createMenu() override { calls.push_back("createMenu"); }
    void requestPermissions() override { calls.push_back("requestPermissions"); }
    void startGoServer() override { calls.push_back("startGoServer"); }
    void setupGlobalHotkeys() override { calls.push_back("setupGlobalHotkeys"); }
    void checkServerConnection() override { calls.push_back("checkServerConnection"); }
    std::vector<std::string> calls;
};

TEST_F(LaunchTest, OperationsComeInOrderAndTheTimerCallsTheCheck) {
    const auto shell = std::make_shared<NotingDelegate>(platform_);
    shell->applicationDidFinishLaunching();
    EXPECT_THAT(shell->calls, ElementsAreArray({"restorePreferences", "createStatusBar", "createWebView", "createMenu",
                                                "requestPermissions", "startGoServer", "setupGlobalHotkeys"}));
    platform_.advance(4);
    EXPECT_EQ(std::count(shell->calls.begin(), shell->calls.end(), "checkServerConnection"), 2);
}

} // namespace
} // namespace vantorel::fake
