// Vantorel. MIT licence, see LICENSE.
// The server's launch, its output, its end, and the first load of the page.
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "server/relay.h"
#include "tests/unit/fake/shell_fixture.h"

namespace vantorel::fake {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

TEST(RelayLine, PrefixesAndTrims) {
    EXPECT_EQ(relayLine("hello"), "🤖 Server: hello");
    EXPECT_EQ(relayLine("hello\n"), "🤖 Server: hello");
    EXPECT_EQ(relayLine("\r\n \t hello \u00A0\n\u2028"), "🤖 Server: hello");
    EXPECT_EQ(relayLine("one\ntwo\n"), "🤖 Server: one\ntwo");
    EXPECT_EQ(relayLine("one\r\n\r\n  two"), "🤖 Server: one\r\n\r\n  two");
}

TEST(RelayLine, OnlyBlanksGiveTheBarePrefix) {
    EXPECT_EQ(relayLine("\n"), "🤖 Server: ");
    EXPECT_EQ(relayLine(" \t\r\n\v\f\u0085\u2029"), "🤖 Server: ");
}

TEST(RelayLine, EmptyOrInvalidGivesNothing) {
    EXPECT_EQ(relayLine(""), std::nullopt);
    EXPECT_EQ(relayLine("\xFF"), std::nullopt);
    EXPECT_EQ(relayLine("good \xC3"), std::nullopt);
    EXPECT_EQ(relayLine("\xA9 good"), std::nullopt);
    EXPECT_EQ(relayLine("\xED\xA0\x80"), std::nullopt);
    EXPECT_EQ(relayLine("\xC0\x80"), std::nullopt);
}

TEST(RelayLine, NulIsACharacterLikeAnyOther) {
    using namespace std::string_view_literals;
    EXPECT_EQ(relayLine("a\0b"sv), "🤖 Server: a\0b"sv);
}

class ServerProcessTest : public ShellTest {
protected:
    void failWith(const std::string& text) {
        platform_.onMakeProcess = [text](FakeProcess& process) { process.launchError = makeError(text); };
    }
    std::vector<std::string> relayed() { return log_.take(); }
};

TEST_F(ServerProcessTest, OneProcessWithOnePipeForBothStreams) {
    launch();
    EXPECT_EQ(platform_.processes.size(), 1U);
    EXPECT_EQ(platform_.pipes.size(), 1U);
    EXPECT_EQ(child().standardOutput(), platform_.pipes.at(0).get());
    EXPECT_EQ(child().standardError(), platform_.pipes.at(0).get());
    EXPECT_EQ(child().executablePath(), kServer);
    EXPECT_EQ(child().currentDirectoryPath(), kResources);
    EXPECT_EQ(shell_->serverProcess(), platform_.processes.at(0));
}

TEST_F(ServerProcessTest, SuccessEndsWithTheWaitingStatus) {
    launch();
    EXPECT_TRUE(shell_->isServerRunning());
    expectStatus("🔄 Server starting... Waiting for connection...", SystemColor::orange);
    EXPECT_THAT(platform_.alerts, IsEmpty());
}

TEST_F(ServerProcessTest, ChildThatHasEndedAlreadyIsSaidNotToRun) {
    platform_.onMakeProcess = [](FakeProcess& process) {
        process.onLaunch = [](FakeProcess& launched) { launched.endUnnoticed(1); };
    };
    launch();
    EXPECT_THAT(log_.lines(), Contains("✅ Process is running: false"));
    EXPECT_THAT(log_.lines(), Contains("✅ Process ID: 4242"));
    EXPECT_TRUE(shell_->isServerRunning());
}

TEST_F(ServerProcessTest, FailureIsLoggedShownAndAlerted) {
    failWith("The file cannot be run.");
    launch();
    const auto lines = log_.lines();
    EXPECT_THAT(between(lines, "🚀 Calling run() on process...", "⌨️ Setting up global hotkeys..."),
                ElementsAre("🚀 Calling run() on process...", "❌ Failed to start server: The file cannot be run.",
                            "⌨️ Setting up global hotkeys..."));
    expectStatus("❌ Failed to start server: The file cannot be run.", SystemColor::red);
    ASSERT_EQ(platform_.alerts.size(), 1U);
    EXPECT_EQ(alert().messageText(), "Server Start Failed");
    EXPECT_EQ(alert().informativeText(), "The file cannot be run.");
    EXPECT_EQ(alert().style(), AlertStyle::critical);
    EXPECT_THAT(alert().buttons(), ElementsAre("OK"));
}

TEST_F(ServerProcessTest, FailureLeavesAProcessThatNeverRan) {
    failWith("no");
    launch();
    platform_.advance(60);
    EXPECT_EQ(shell_->serverProcess(), platform_.processes.at(0));
    EXPECT_FALSE(shell_->isServerRunning());
    EXPECT_EQ(platform_.http.taskCount(), 0U);
    EXPECT_THAT(page().loads(), IsEmpty());
    EXPECT_EQ(platform_.processes.size(), 1U);
    EXPECT_EQ(platform_.recorder.count("mainQueue.asyncAfter(3)"), 0U);
}

TEST_F(ServerProcessTest, EarlierProcessIsDroppedUnstopped) {
    construct();
    shell_->setWindow(platform_.makeWindow({{0, 0}, {900, 750}}, 15));
    shell_->createStatusBar();
    shell_->startGoServer();
    const auto first = platform_.processes.at(0);
    shell_->startGoServer();
    EXPECT_NE(shell_->serverProcess(), first);
    EXPECT_TRUE(first->isRunning());
    EXPECT_EQ(first->terminateRequests(), 0);
}

TEST_F(ServerProcessTest, OutputGoesToTheLogChunkByChunk) {
    launchQuietly();
    child().writeOutput("first line\nsecond line\n");
    child().writeError("complaint\n");
    child().writeOutput("   \n");
    EXPECT_THAT(relayed(),
                ElementsAre("🤖 Server: first line\nsecond line", "🤖 Server: complaint", "🤖 Server: "));
    EXPECT_EQ(platform_.loop.pendingMainBlocks(), 0U);
}

TEST_F(ServerProcessTest, CharacterSplitOverTwoChunksLosesBoth) {
    launchQuietly();
    child().writeOutput("before \xC3");
    child().writeOutput("\xA9 after\n");
    child().writeOutput("whole é\n");
    EXPECT_THAT(relayed(), ElementsAre("🤖 Server: whole é"));
}

TEST_F(ServerProcessTest, OutputReaderNeedsNoController) {
    launchQuietly();
    releaseShell();
    child().writeOutput("late\n");
    EXPECT_THAT(relayed(), ElementsAre("🤖 Server: late"));
}

TEST_F(ServerProcessTest, OutputReaderStaysAfterTheEnd) {
    launchQuietly();
    child().end(0);
    EXPECT_TRUE(platform_.pipes.at(0)->hasHandler());
    relayed();
    child().writeOutput("last words\n");
    platform_.pipes.at(0)->end();
    EXPECT_THAT(relayed(), ElementsAre("🤖 Server: last words"));
}

TEST_F(ServerProcessTest, MuchOutputComesWhole) {
    launchQuietly();
    std::string big(200'000, 'x');
    big += '\n';
    child().writeOutput(big);
    std::size_t relayedBytes = 0;
    for (const std::string& line : relayed()) {
        EXPECT_THAT(line, StartsWith("🤖 Server: "));
        relayedBytes += line.size() - std::string_view("🤖 Server: ").size();
    }
    EXPECT_EQ(relayedBytes, 200'000U);
}

TEST_F(ServerProcessTest, NonZeroExitIsLoggedAndShown) {
    launchQuietly();
    child().end(3);
    EXPECT_THAT(log_.lines(), ElementsAre("🛑 Server process terminated with exit code: 3"));
    expectStatus("❌ Server exited with code 3", SystemColor::red);
    EXPECT_THAT(platform_.alerts, IsEmpty());
    EXPECT_TRUE(shell_->isServerRunning());
    EXPECT_EQ(shell_->serverProcess(), platform_.processes.at(0));
    EXPECT_EQ(platform_.loop.activeTimers(), 1U);
}

TEST_F(ServerProcessTest, NegativeStatusIsShownAsItIs) {
    launchQuietly();
    child().end(-7);
    EXPECT_THAT(log_.lines(), ElementsAre("🛑 Server process terminated with exit code: -7"));
    expectStatus("❌ Server exited with code -7", SystemColor::red);
}

TEST_F(ServerProcessTest, ZeroExitIsOnlyLogged) {
    launchQuietly();
    child().end(0);
    EXPECT_THAT(log_.lines(), ElementsAre("🛑 Server process terminated with exit code: 0"));
    EXPECT_EQ(platform_.loop.pendingMainBlocks(), 0U);
    EXPECT_EQ(label().stringValue(), "🔄 Server starting... Waiting for connection...");
}

TEST_F(ServerProcessTest, ExitHandlerOnlyLogsAndQueues) {
    launchQuietly();
    child().end(1);
    EXPECT_THAT(platform_.recorder.lines(),
                ElementsAre("log \"🛑 Server process terminated with exit code: 1\"", "mainQueue.async()"));
}

TEST_F(ServerProcessTest, ExitStatusStepHoldsTheControllerWeakly) {
    launchQuietly();
    platform_.microphone.forget();
    child().end(1);
    const std::weak_ptr<AppDelegate> weak = shell_;
    shell_.reset();
    EXPECT_TRUE(weak.expired());
    platform_.recorder.clear();
    platform_.runMainQueue();
    EXPECT_THAT(platform_.recorder.lines(), IsEmpty());
}

TEST_F(ServerProcessTest, TerminationHandlerHoldsTheControllerStrongly) {
    launchQuietly();
    platform_.microphone.forget();
    const std::weak_ptr<AppDelegate> weak = shell_;
    shell_.reset();
    EXPECT_FALSE(weak.expired());
    child().end(0);
    EXPECT_TRUE(weak.expired());
}

TEST_F(ServerProcessTest, CrashAtOnceGoesOrangeThenRedThenOrange) {
    platform_.onMakeProcess = [](FakeProcess& process) {
        process.onLaunch = [](FakeProcess& launched) { launched.endUnnoticed(1); };
    };
    launch();
    child().end(1);
    const auto lines = log_.lines();
    EXPECT_EQ(lines.back(), "🛑 Server process terminated with exit code: 1");
    EXPECT_THAT(lines, Contains("✅ Server process started successfully"));
    expectStatus("❌ Server exited with code 1", SystemColor::red);
    platform_.advance(2);
    platform_.http.answer(0, FakeUrlSession::failure("refused"));
    expectStatus("⚠️ Server running but not responding...", SystemColor::orange);
}

TEST_F(ServerProcessTest, PageIsLoadedThreeSecondsAfterTheLaunch) {
    launchQuietly();
    platform_.advance(2.999);
    EXPECT_THAT(page().loads(), IsEmpty());
    platform_.advance(0.001);
    EXPECT_EQ(page().loads().size(), 1U);
    platform_.advance(120);
    EXPECT_EQ(page().loads().size(), 1U);
}

TEST_F(ServerProcessTest, PageIsLoadedEvenWhenTheServerHasEnded) {
    launchQuietly();
    child().end(1);
    platform_.advance(3);
    EXPECT_EQ(page().loads().size(), 1U);
}

TEST_F(ServerProcessTest, DelayedLoadDoesNothingWhenTheControllerIsGone) {
    launchQuietly();
    releaseShell();
    platform_.advance(3);
    EXPECT_THAT(page().loads(), IsEmpty());
    EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(ServerProcessTest, NothingIsLaunchedAgain) {
    launchQuietly();
    child().end(1);
    platform_.advance(600);
    EXPECT_EQ(platform_.processes.size(), 1U);
    EXPECT_EQ(platform_.recorder.countStartingWith("makeProcess"), 0U);
}

} // namespace
} // namespace vantorel::fake
