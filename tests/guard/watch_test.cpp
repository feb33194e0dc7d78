// Vantorel. MIT licence, see LICENSE.
// The watch over real processes: normal quits, crashes, stubborn servers, and whom the guard must not touch.
#include "platform/portable/guard_protocol.h"
#include "tests/guard/guard_world.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace vantorel::guard {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kShortGrace{300};
constexpr milliseconds kLongGrace{60'000}; // no test lasts that long: what ends earlier did not need it

// The short sleeps keep these servers from leaving anything behind.
constexpr const char* kObedient = "#!/bin/sh\n"
                                  "trap 'echo term; exit 7' TERM\n"
                                  "echo ready\n"
                                  "while :; do sleep 0.02 >/dev/null 2>&1; done\n";
constexpr const char* kStubborn = "#!/bin/sh\n"
                                  "trap 'echo term' TERM\n"
                                  "echo ready\n"
                                  "while :; do sleep 0.02 >/dev/null 2>&1; done\n";
/// Ends when asked to, but leaves a child behind that ignores requests and holds the output open.
constexpr const char* kWithChild = "#!/bin/sh\n"
                                   "trap 'exit 0' TERM\n"
                                   "(trap '' TERM; echo child; while :; do sleep 1000; done) &\n"
                                   "wait\n";

/// The test takes the shell's place: the server and the guard are its children.
class GuardWatch : public ::testing::Test {
protected:
    /// Starts the server directly and returns its first line.
    std::string startServer(const std::string& text) {
        server_ =
            start({.command = {world_.program("server", text)}, .output = output_.writing.get(), .group = Group::own});
        output_.writing.close();
        if (server_ == -1) {
            return "(not started)";
        }
        world_.mindProcess(-server_);
        return nextLine(output_.reading);
    }

    /// Starts the guard over `pid` and returns the exit code of its foreground part.
    int startGuard(pid_t pid, milliseconds grace) {
        const int end = wire_.reading.get();
        const pid_t guard = start({.command = {guardPath(), "--watch", std::to_string(end), std::to_string(pid),
                                               std::to_string(grace.count())},
                                   .inherited = {end}});
        wire_.reading.close();
        return exitCodeOf(guard);
    }

    void quit() { ASSERT_TRUE(writeByte(wire_.writing, kGuardQuitByte)); }
    void crash() { hangUp(wire_.writing); }
    bool guardEnds() { return isLetGo(wire_.writing); }
    bool guardStands() { return !isLetGo(wire_.writing, milliseconds(150)); }

    void expectKilled(Clock::time_point since) {
        const int status = waitFor(server_);
        EXPECT_GE(Clock::now() - since, kShortGrace);
        ASSERT_TRUE(WIFSIGNALED(status)) << status;
        EXPECT_EQ(WTERMSIG(status), SIGKILL);
    }

    World world_;
    Ends wire_ = makeWire();
    Ends output_ = makePipe();
    pid_t server_ = -1;
};

TEST_F(GuardWatch, EndsAtOnceWhenTheServerObeysAQuit) {
    ASSERT_EQ(startServer(kObedient), "ready");
    ASSERT_EQ(startGuard(server_, kLongGrace), kGuardExitOk);
    ASSERT_EQ(::kill(server_, SIGTERM), 0);
    quit();
    EXPECT_EQ(exitCodeOf(server_), 7);
    EXPECT_TRUE(guardEnds());
    EXPECT_EQ(rest(output_.reading), "term\n");
}

TEST_F(GuardWatch, KillsWhatSurvivesAQuitWithoutAskingAgain) {
    ASSERT_EQ(startServer(kStubborn), "ready");
    ASSERT_EQ(startGuard(server_, kShortGrace), kGuardExitOk);
    const auto since = Clock::now();
    quit();
    crash(); // the shell's end, which follows a quit
    expectKilled(since);
    EXPECT_EQ(rest(output_.reading), "");
    EXPECT_TRUE(guardEnds());
}

TEST_F(GuardWatch, AsksTheServerToEndWhenTheShellIsGone) {
    ASSERT_EQ(startServer(kObedient), "ready");
    ASSERT_EQ(startGuard(server_, kLongGrace), kGuardExitOk);
    crash();
    EXPECT_EQ(exitCodeOf(server_), 7);
    EXPECT_TRUE(guardEnds());
    EXPECT_EQ(rest(output_.reading), "term\n");
}

TEST_F(GuardWatch, AsksOnceAndThenKills) {
    ASSERT_EQ(startServer(kStubborn), "ready");
    ASSERT_EQ(startGuard(server_, kShortGrace), kGuardExitOk);
    const auto since = Clock::now();
    crash();
    expectKilled(since);
    EXPECT_EQ(rest(output_.reading), "term\n");
    EXPECT_TRUE(guardEnds());
}

TEST_F(GuardWatch, KillsAStoppedServer) {
    ASSERT_EQ(startServer(kObedient), "ready");
    ASSERT_EQ(startGuard(server_, kShortGrace), kGuardExitOk);
    ASSERT_EQ(::kill(server_, SIGSTOP), 0);
    const auto since = Clock::now();
    crash();
    expectKilled(since);
    EXPECT_TRUE(guardEnds());
}

TEST_F(GuardWatch, KillsChildrenThatTheServerLeavesInItsGroup) {
    ASSERT_EQ(startServer(kWithChild), "child");
    ASSERT_EQ(startGuard(server_, kShortGrace), kGuardExitOk);
    const auto since = Clock::now();
    crash();
    EXPECT_EQ(exitCodeOf(server_), 0);
    EXPECT_EQ(rest(output_.reading), ""); // end-of-file: the child is gone
    EXPECT_GE(Clock::now() - since, kShortGrace);
    EXPECT_TRUE(guardEnds());
}

TEST_F(GuardWatch, MindsChildrenOfAServerThatEndedLongBeforeTheShell) {
    ASSERT_EQ(startServer(kWithChild), "child");
    ASSERT_EQ(startGuard(server_, kShortGrace), kGuardExitOk);
    ASSERT_EQ(::kill(server_, SIGTERM), 0);
    ASSERT_EQ(exitCodeOf(server_), 0);
    EXPECT_TRUE(guardStands());
    EXPECT_TRUE(isAlive(-server_));
    crash();
    EXPECT_EQ(rest(output_.reading), "");
    EXPECT_TRUE(guardEnds());
}

TEST_F(GuardWatch, DoesNotTouchAChildThatLeftTheGroup) {
    const std::string child = startServer("#!/bin/sh\n"
                                          "setsid sh -c 'echo $$; exec sleep 1000 >/dev/null 2>&1' &\n"
                                          "exec sleep 1000 >/dev/null 2>&1\n");
    if (child.find("not found") != std::string::npos) {
        GTEST_SKIP() << "this system has no setsid program";
    }
    const pid_t pid = std::stoi(child);
    world_.mindProcess(pid);
    ASSERT_EQ(startGuard(server_, kShortGrace), kGuardExitOk);
    crash();
    const int status = waitFor(server_);
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGTERM);
    EXPECT_TRUE(guardEnds());
    EXPECT_TRUE(isAlive(pid));
}

TEST_F(GuardWatch, EndsWithTheServersGroupWhileTheShellLives) {
    ASSERT_EQ(startServer(kWithChild), "child");
    ASSERT_EQ(startGuard(server_, kLongGrace), kGuardExitOk);
    EXPECT_TRUE(guardStands());
    ASSERT_EQ(::kill(server_, SIGKILL), 0);
    ASSERT_NE(waitFor(server_), -1);
    EXPECT_TRUE(guardStands()); // the server's child is left
    ASSERT_EQ(::kill(-server_, SIGKILL), 0);
    EXPECT_TRUE(guardEnds());
}

TEST_F(GuardWatch, EndsWithTheServerWhileTheShellLives) {
    ASSERT_EQ(startServer("#!/bin/sh\necho ready\nexec sleep 1000\n"), "ready");
    ASSERT_EQ(startGuard(server_, kLongGrace), kGuardExitOk);
    EXPECT_TRUE(guardStands());
    ASSERT_EQ(::kill(server_, SIGKILL), 0);
    EXPECT_TRUE(guardEnds()); // before anyone has asked for the server's exit code
    ASSERT_NE(waitFor(server_), -1);
}

TEST_F(GuardWatch, TakesOtherBytesForNothing) {
    ASSERT_EQ(startServer(kStubborn), "ready");
    ASSERT_EQ(startGuard(server_, kShortGrace), kGuardExitOk);
    for (const char byte : {'x', '\0', 'Q', '\n'}) {
        ASSERT_TRUE(writeByte(wire_.writing, byte));
    }
    EXPECT_FALSE(isLetGo(wire_.writing, 2 * kShortGrace));
    EXPECT_TRUE(isAlive(server_));
    ASSERT_EQ(::kill(-server_, SIGKILL), 0);
    EXPECT_TRUE(guardEnds());
}

TEST_F(GuardWatch, StandsAsideWhenTheServerIsAlreadyGone) {
    ASSERT_EQ(startServer("#!/bin/sh\necho ready\n"), "ready");
    ASSERT_EQ(rest(output_.reading), "");
    ASSERT_EQ(startGuard(server_, kLongGrace), kGuardExitOk); // ended, but not asked for its exit code
    EXPECT_TRUE(guardEnds());
    EXPECT_EQ(exitCodeOf(server_), 0);
    wire_ = makeWire();
    EXPECT_EQ(startGuard(server_, kLongGrace), kGuardExitNotOurs);
    EXPECT_TRUE(guardEnds());
}

TEST_F(GuardWatch, NeverTouchesAProcessThatIsNotTheShellsChild) {
    const std::string child = startServer("#!/bin/sh\nsleep 1000 >/dev/null 2>&1 &\necho $!\nwait\n");
    const pid_t strangers[] = {std::stoi(child), ::getpid(), ::getppid(), 2'000'000'000};
    for (const pid_t stranger : strangers) {
        wire_ = makeWire();
        EXPECT_EQ(startGuard(stranger, milliseconds(0)), kGuardExitNotOurs) << stranger;
        crash();
        EXPECT_TRUE(guardEnds());
    }
    EXPECT_TRUE(isAlive(std::stoi(child)));
    EXPECT_TRUE(isAlive(server_));
}

TEST_F(GuardWatch, LeavesAServerThatSharesTheShellsGroupToTheRequestAlone) {
    // Its group is the shell's own, so that only the server itself may be killed.
    const std::string server = world_.program("server", "#!/bin/sh\ntrap '' TERM\necho ready\nexec sleep 1000\n");
    server_ = start({.command = {server}, .output = output_.writing.get()});
    output_.writing.close();
    world_.mindProcess(server_);
    ASSERT_EQ(nextLine(output_.reading), "ready");
    ASSERT_EQ(startGuard(server_, kShortGrace), kGuardExitOk);
    const auto since = Clock::now();
    crash();
    expectKilled(since);
    EXPECT_TRUE(guardEnds());
}

TEST_F(GuardWatch, HoldsNothingOpenThatItInherited) {
    ASSERT_EQ(startServer(kObedient), "ready");
    Ends other = makePipe();
    Ends streams = makePipe();
    const int end = wire_.reading.get();
    const pid_t guard =
        start({.command = {guardPath(), "--watch", std::to_string(end), std::to_string(server_), "60000"},
               .inherited = {end, other.writing.get()},
               .output = streams.writing.get()});
    wire_.reading.close();
    streams.writing.close();
    ASSERT_EQ(exitCodeOf(guard), kGuardExitOk);
    EXPECT_EQ(rest(streams.reading), "");
    other.writing.close();
    EXPECT_EQ(rest(other.reading), "");
    EXPECT_TRUE(guardStands());
}

/// A real shell, in a process group of its own, that dies of a signal to that whole group, as of Ctrl-C in a terminal.
class GuardOfARealShell : public ::testing::TestWithParam<int> {};

TEST_P(GuardOfARealShell, EndsTheServer) {
    World world;
    const std::string server = world.program("server", kObedient);
    Ends output = makePipe();
    Ends report = makePipe();
    const pid_t shell = ::fork();
    ASSERT_NE(shell, -1);
    if (shell == 0) {
        ::setpgid(0, 0);
        std::signal(GetParam(), SIG_DFL); // a test that runs in the background may have inherited it as ignored
        Ends pipe = makePipe();
        const pid_t pid = start({.command = {server}, .output = output.writing.get(), .group = Group::own});
        const int end = pipe.reading.get();
        const pid_t guard =
            start({.command = {guardPath(), "--watch", std::to_string(end), std::to_string(pid), "60000"},
                   .inherited = {end}});
        pipe.reading.close();
        writeByte(report.writing, exitCodeOf(guard) == kGuardExitOk ? 'y' : 'n');
        writeByte(report.writing, '\n');
        for (;;) {
            ::pause();
        }
    }
    world.mindProcess(-shell);
    output.writing.close();
    report.writing.close();
    ASSERT_EQ(nextLine(report.reading), "y");
    ASSERT_EQ(nextLine(output.reading), "ready");
    ASSERT_EQ(::kill(-shell, GetParam()), 0);
    const int status = waitFor(shell);
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), GetParam());
    EXPECT_EQ(rest(output.reading), "term\n");
}

INSTANTIATE_TEST_SUITE_P(Signals, GuardOfARealShell,
                         ::testing::Values(SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGKILL, SIGABRT, SIGSEGV));

} // namespace
} // namespace vantorel::guard
