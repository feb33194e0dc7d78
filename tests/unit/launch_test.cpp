// Vantorel. MIT licence, see LICENSE.
// The launch sequence from end to end, as one record of platform calls and log lines.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/unit/fake/shell_fixture.h"

namespace vantorel::fake {
namespace {

using LaunchTest = ShellTest;

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

} // namespace
} // namespace vantorel::fake
