// Vantorel. MIT licence, see LICENSE.
// Construction, what a launch leaves behind, the connection timer, and the end that closing the window brings.
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

class LifecycleTest : public ShellTest {
protected:
    std::int64_t portWith(const std::optional<std::string>& value) {
        platform_.surroundings.variables.clear();
        if (value)
            platform_.surroundings.variables["WEBSOCKET_PORT"] = *value;
        return std::make_shared<AppDelegate>(platform_)->websocketPort();
    }
};

TEST_F(LifecycleTest, ConstructionSetsTheInitialRecord) {
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

TEST_F(LifecycleTest, ConstructionOnlyReadsTheEnvironment) {
    const AppDelegate shell(platform_);
    EXPECT_THAT(platform_.recorder.lines(), ElementsAreArray({"processInfo.environment()"}));
}

TEST_F(LifecycleTest, PortComesFromTheEnvironment) {
    EXPECT_EQ(portWith("9000"), 9000);
    EXPECT_EQ(portWith("+9000"), 9000);
    EXPECT_EQ(portWith("-1"), -1);
    EXPECT_EQ(portWith("0"), 0);
    EXPECT_EQ(portWith("70000"), 70000);
    EXPECT_EQ(portWith("9223372036854775807"), INT64_MAX);
    EXPECT_EQ(portWith("-9223372036854775808"), INT64_MIN);
}

TEST_F(LifecycleTest, PortStaysAt8080ForAnyOtherText) {
    EXPECT_EQ(portWith(std::nullopt), 8080);
    for (const char* text : {"", "80a", " 9000", "9000 ", "9000\n", "+", "-", "+-1", "--1", "0x50", "80.0", "1e3",
                             "9223372036854775808", "-9223372036854775809", "٨٠٨٠"}) {
        EXPECT_EQ(portWith(text), 8080) << '"' << text << '"';
    }
    EXPECT_EQ(log_.lines().size(), 0U);
}

TEST_F(LifecycleTest, LaunchFillsTheStateRecord) {
    launch();
    EXPECT_EQ(shell_->window(), platform_.windows.at(0));
    EXPECT_EQ(shell_->statusBar(), platform_.views.at(0));
    EXPECT_EQ(shell_->statusLabel(), platform_.textFields.at(0));
    EXPECT_EQ(shell_->webView(), platform_.webViews.at(0));
    EXPECT_EQ(shell_->serverProcess(), platform_.processes.at(0));
    EXPECT_TRUE(shell_->isServerRunning());
    EXPECT_NE(shell_->connectionCheckTimer(), nullptr);
}

TEST_F(LifecycleTest, WindowIsCentredAndVisible) {
    launch();
    EXPECT_TRUE(window().visible());
    EXPECT_EQ(window().content().bounds().size, (Size{900, 750}));
    EXPECT_EQ(window().frame(), (Rect{{270, 61}, {900, 778}}));
}

TEST_F(LifecycleTest, ShownContentIsReportedWhenHidingIsOff) {
    platform_.defaults.values["hideInScreenshots"] = false;
    launch();
    EXPECT_EQ(window().sharingType(), WindowSharingType::readOnly);
    EXPECT_EQ(log_.lines().at(0), "🖼️ Screenshot hiding: disabled (.readOnly)");
}

TEST_F(LifecycleTest, ClosingTheWindowQuits) {
    launch();
    EXPECT_TRUE(shell_->applicationShouldTerminateAfterLastWindowClosed());
    window().close();
    EXPECT_TRUE(platform_.app.terminated());
    EXPECT_TRUE(platform_.defaults.values.contains("windowFrame"));
}

TEST_F(LifecycleTest, RunningTheApplicationLaunchesAndEndsOnce) {
    construct();
    platform_.app.whileRunning = [this] {
        EXPECT_TRUE(window().visible());
        platform_.app.terminate();
    };
    EXPECT_EQ(platform_.app.run(), 0);
    EXPECT_EQ(platform_.recorder.countStartingWith("userDefaults.setString("), 1U);
}

TEST_F(LifecycleTest, ConnectionIsCheckedAfterTwoSecondsAndThenEveryTwo) {
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

TEST_F(LifecycleTest, TimerStopsWithTheApplication) {
    launch();
    EXPECT_EQ(platform_.loop.activeTimers(), 1U);
    platform_.app.terminate();
    EXPECT_EQ(platform_.loop.activeTimers(), 0U);
    platform_.advance(10);
    EXPECT_EQ(platform_.http.taskCount(), 0U);
}

TEST_F(LifecycleTest, TimerDoesNothingWhenTheControllerIsGone) {
    launch();
    platform_.runMainQueue();
    releaseShell();
    platform_.recorder.clear();
    platform_.advance(10);
    EXPECT_THAT(platform_.recorder.lines(), ElementsAreArray(std::vector<std::string>{}));
}

TEST_F(LifecycleTest, LaunchGoesOnWhenTheServerIsMissing) {
    platform_.files.remove(kServer);
    launch();
    EXPECT_EQ(platform_.keyboard.globalCount(), 1U);
    EXPECT_EQ(platform_.keyboard.localCount(), 1U);
    EXPECT_NE(shell_->connectionCheckTimer(), nullptr);
    EXPECT_FALSE(shell_->isServerRunning());
    EXPECT_EQ(shell_->serverProcess(), nullptr);
}

TEST_F(LifecycleTest, LaunchGoesOnWhenTheServerCannotBeStarted) {
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

TEST_F(LifecycleTest, OperationsComeInOrderAndTheTimerCallsTheCheck) {
    const auto shell = std::make_shared<NotingDelegate>(platform_);
    shell->applicationDidFinishLaunching();
    EXPECT_THAT(shell->calls, ElementsAreArray({"restorePreferences", "createStatusBar", "createWebView", "createMenu",
                                                "requestPermissions", "startGoServer", "setupGlobalHotkeys"}));
    platform_.advance(4);
    EXPECT_EQ(std::count(shell->calls.begin(), shell->calls.end(), "checkServerConnection"), 2);
}

} // namespace
} // namespace vantorel::fake
