// Vantorel. MIT licence, see LICENSE.
// The application: its launch, the menu's actions on their way to the controller, and its end.
#import <AppKit/AppKit.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/macos/bridge.h"
#include "tests/macos/native/mac_world.h"
#include "ui/menu_table.h"

namespace vantorel::mac::test {
namespace {

using ::testing::ElementsAre;

/// The controller's role, written down.
class RecordingDelegate : public ApplicationDelegate {
public:
    void applicationDidFinishLaunching() override {
        calls.emplace_back("launched");
        if (onLaunch) {
            onLaunch();
        }
    }
    bool applicationShouldTerminateAfterLastWindowClosed() override { return true; }
    void applicationWillTerminate() override {
        calls.emplace_back("will terminate");
        std::fputs("will terminate\n", stderr);
    }
    bool performAction(const Selector& action) override {
        calls.push_back(action);
        return true;
    }

    std::vector<std::string> calls;
    std::function<void()> onLaunch;
};

/// Ends the event loop, which looks only after an event whether it shall.
void leaveLoop() {
    NSApplication* const app = NSApplication.sharedApplication;
    [app stop:nil];
    [app postEvent:[NSEvent otherEventWithType:NSEventTypeApplicationDefined
                                      location:NSMakePoint(0, 0)
                                 modifierFlags:0
                                     timestamp:0
                                  windowNumber:0
                                       context:nil
                                       subtype:0
                                         data1:0
                                         data2:0]
           atStart:NO];
}

/// Not nativePlatform, whose application has finished launching already.
Platform& unlaunchedPlatform() {
    static Platform* const platform = makeNativePlatform().release();
    return *platform;
}

/// Runs the application with `delegate` until its onLaunch leaves the loop.
int runApplication(const std::shared_ptr<RecordingDelegate>& delegate) {
    unlaunchedPlatform().application()->setDelegate(delegate);
    return unlaunchedPlatform().application()->run();
}

TEST(MacApplication, LaunchIsToldOnceOnTheRunningLoop) {
    const auto delegate = std::make_shared<RecordingDelegate>();
    delegate->onLaunch = leaveLoop;
    EXPECT_EQ(runApplication(delegate), 0);
    EXPECT_THAT(delegate->calls, ElementsAre("launched"));
}

TEST(MacApplication, EveryActionOfTheMenuReachesTheController) {
    const auto delegate = std::make_shared<RecordingDelegate>();
    std::vector<std::string> sent;
    delegate->onLaunch = [&] {
        for (const MenuDescription& menu : kMenus) {
            for (const MenuEntry& entry : menu.entries) {
                const std::string action = entry.action;
                if (action.empty() || action.ends_with(':')) {
                    continue;
                }
                sent.push_back(action);
                EXPECT_TRUE([NSApplication.sharedApplication sendAction:NSSelectorFromString(toNSString(action))
                                                                     to:nil
                                                                   from:nil])
                    << action;
            }
        }
        leaveLoop();
    };
    runApplication(delegate);
    delegate->calls.erase(delegate->calls.begin());
    EXPECT_EQ(delegate->calls, sent);
    EXPECT_EQ(sent.size(), 7U);
}

TEST(MacApplication, ControllerThatIsGoneIsNotCalled) {
    const auto delegate = std::make_shared<RecordingDelegate>();
    delegate->onLaunch = leaveLoop;
    runApplication(delegate);
    unlaunchedPlatform().application()->setDelegate(std::make_shared<RecordingDelegate>());
    EXPECT_TRUE([NSApplication.sharedApplication sendAction:@selector(zoomIn) to:nil from:nil]);
}

/// Launches the application and sends `signal`: at once, or as soon as an alert is up.
void launchAndSignal(int signal, bool underAlert) {
    const auto delegate = std::make_shared<RecordingDelegate>();
    const auto send = [signal] { ::kill(::getpid(), signal); };
    delegate->onLaunch = [send, underAlert] {
        if (!underAlert) {
            send();
            return;
        }
        whenModal([send](NSWindow* /*modal*/) { send(); });
        unlaunchedPlatform().mainQueue().async([] {
            const auto alert = unlaunchedPlatform().makeAlert();
            alert->setMessageText("Server binary not found");
            alert->addButtonWithTitle("OK");
            alert->runModal();
        });
    };
    runApplication(delegate);
    std::abort(); // the application ends the process by itself
}

TEST(MacApplicationDeathTest, PoliteSignalsAreANormalQuit) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        EXPECT_EXIT(launchAndSignal(signal, /*underAlert=*/false), ::testing::ExitedWithCode(0), "will terminate");
    }
}

TEST(MacApplicationDeathTest, SignalEndsAnApplicationWithAnAlertFromTheMainQueue) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(launchAndSignal(SIGTERM, /*underAlert=*/true), ::testing::ExitedWithCode(0), "will terminate");
}

} // namespace
} // namespace vantorel::mac::test
