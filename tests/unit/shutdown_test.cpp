// Vantorel. MIT licence, see LICENSE.
// The end of the application: frame saved, timer stopped, server asked to stop, nothing waited for.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <variant>

#include "tests/unit/fake/shell_fixture.h"

namespace vantorel::fake {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ShutdownTest : public ShellTest {
protected:
    std::string savedFrame() { return std::get<std::string>(platform_.defaults.values.at("windowFrame")); }
};

TEST_F(ShutdownTest, RunningServerIsAskedOnceAndWaitedForElsewhere) {
    launchQuietly();
    shell_->applicationWillTerminate();
    EXPECT_THAT(platform_.recorder.lines(),
                ElementsAre("userDefaults.setString(\"{{270, 61}, {900, 778}}\", \"windowFrame\")",
                            "timer1.invalidate()", "log \"🛑 Stopping Go server...\"", "process1.terminate()",
                            "globalQueue.async()"));
    EXPECT_EQ(child().terminateRequests(), 1);
    EXPECT_TRUE(shell_->isServerRunning());
    EXPECT_NE(shell_->connectionCheckTimer(), nullptr);
}

TEST_F(ShutdownTest, StoppedServerIsLoggedFromTheGlobalQueue) {
    launchQuietly();
    shell_->applicationWillTerminate();
    child().endUnnoticed(0);
    log_.take();
    platform_.runGlobalQueue();
    EXPECT_THAT(log_.lines(), ElementsAre("✅ Go server stopped"));
}

TEST_F(ShutdownTest, TheWaitLastsUntilTheServerHasEnded) {
    launchQuietly();
    shell_->applicationWillTerminate();
    log_.take();
    std::thread waiting = platform_.loop.startGlobalBlock();
    EXPECT_EQ(log_.count("✅ Go server stopped"), 0U);
    EXPECT_TRUE(child().isRunning());
    child().endUnnoticed(15);
    waiting.join();
    EXPECT_THAT(log_.lines(), ElementsAre("✅ Go server stopped"));
}

TEST_F(ShutdownTest, TheWaitNeedsNoController) {
    launchQuietly();
    shell_->applicationWillTerminate();
    child().endUnnoticed(0);
    releaseShell();
    log_.take();
    platform_.runGlobalQueue();
    EXPECT_THAT(log_.lines(), ElementsAre("✅ Go server stopped"));
}

TEST_F(ShutdownTest, TheWaitHoldsTheProcess) {
    launchQuietly();
    shell_->applicationWillTerminate();
    child().endUnnoticed(0);
    releaseShell();
    const std::weak_ptr<FakeProcess> process = platform_.processes.at(0);
    platform_.processes.clear();
    EXPECT_FALSE(process.expired());
    platform_.runGlobalQueue();
    EXPECT_TRUE(process.expired());
    EXPECT_EQ(log_.count("✅ Go server stopped"), 1U);
}

TEST_F(ShutdownTest, EndedServerIsLeftAlone) {
    launchQuietly();
    child().end(0);
    platform_.runMainQueue();
    platform_.recorder.clear();
    shell_->applicationWillTerminate();
    EXPECT_THAT(
        platform_.recorder.lines(),
        ElementsAre("userDefaults.setString(\"{{270, 61}, {900, 778}}\", \"windowFrame\")", "timer1.invalidate()"));
    EXPECT_EQ(child().terminateRequests(), 0);
}

TEST_F(ShutdownTest, ServerThatWasNeverStartedIsLeftAlone) {
    platform_.files.remove(kServer);
    launchQuietly();
    shell_->applicationWillTerminate();
    EXPECT_THAT(log_.lines(), IsEmpty());
    EXPECT_EQ(savedFrame(), "{{270, 61}, {900, 778}}");
}

TEST_F(ShutdownTest, ServerThatFailedToStartIsLeftAlone) {
    platform_.onMakeProcess = [](FakeProcess& process) { process.launchError = PlatformError{"no", "no"}; };
    launchQuietly();
    shell_->applicationWillTerminate();
    EXPECT_THAT(log_.lines(), IsEmpty());
    EXPECT_EQ(platform_.recorder.count("process1.terminate()"), 0U);
    EXPECT_EQ(platform_.loop.pendingGlobalBlocks(), 0U);
}

TEST_F(ShutdownTest, WithoutATimerTheRestGoesOn) {
    launchQuietly();
    shell_->setConnectionCheckTimer(nullptr);
    shell_->applicationWillTerminate();
    EXPECT_EQ(platform_.recorder.count("timer1.invalidate()"), 0U);
    EXPECT_EQ(child().terminateRequests(), 1);
}

TEST_F(ShutdownTest, FrameIsTheOneAtTheEnd) {
    launchQuietly();
    window().moveTo({100, 80});
    window().resizeContent({900, 750});
    shell_->applicationWillTerminate();
    EXPECT_EQ(savedFrame(), "{{100, 80}, {900, 778}}");
}

TEST_F(ShutdownTest, FractionsAndNegativeOriginsAreKept) {
    launchQuietly();
    window().moveTo({-1280.5, 0.25});
    window().resizeContent({640.125, 480});
    shell_->applicationWillTerminate();
    EXPECT_EQ(savedFrame(), "{{-1280.5, 0.25}, {640.125, 508}}");
}

TEST_F(ShutdownTest, EarlierFrameIsReplaced) {
    platform_.defaults.values["windowFrame"] = std::string("{{1, 1}, {500, 500}}");
    launchQuietly();
    shell_->applicationWillTerminate();
    EXPECT_EQ(savedFrame(), "{{470, 186}, {500, 528}}");
}

TEST_F(ShutdownTest, QuitFromTheMenuRunsTheSequenceOnce) {
    launchQuietly();
    EXPECT_TRUE(platform_.app.choose("Quit"));
    platform_.app.terminate();
    EXPECT_EQ(child().terminateRequests(), 1);
    EXPECT_EQ(log_.count("🛑 Stopping Go server..."), 1U);
}

TEST_F(ShutdownTest, ExitDuringTheEndIsStillReported) {
    launchQuietly();
    shell_->applicationWillTerminate();
    child().end(15);
    platform_.runGlobalQueue();
    EXPECT_THAT(log_.lines(), ElementsAre("🛑 Stopping Go server...",
                                          "🛑 Server process terminated with exit code: 15", "✅ Go server stopped"));
}

class ShutdownDeathTest : public ShutdownTest {
protected:
    ShutdownDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(ShutdownDeathTest, WithoutAWindowTheProcessEnds) {
    construct();
    EXPECT_DEATH(shell_->applicationWillTerminate(), "window");
}

} // namespace
} // namespace vantorel::fake
