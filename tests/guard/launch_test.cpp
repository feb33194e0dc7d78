// Vantorel. MIT licence, see LICENSE.
// The launch gate: the server runs when the byte has come, never otherwise, and a failed start is told.
#include "platform/portable/guard_protocol.h"
#include "tests/guard/guard_world.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>

namespace vantorel::guard {
namespace {

/// A server waiting at its gate.
struct Gated {
    Ends gate = makePipe();
    Ends status = makePipe();
    Ends output = makePipe();
    pid_t pid = -1;

    explicit Gated(const std::string& serverPath, std::vector<std::string> environment = {"PATH=/usr/bin:/bin"}) {
        const int gateEnd = gate.reading.get();
        const int statusEnd = status.writing.get();
        pid =
            start({.command = {guardPath(), "--launch", std::to_string(gateEnd), std::to_string(statusEnd), serverPath},
                   .inherited = {gateEnd, statusEnd},
                   .output = output.writing.get(),
                   .group = Group::own,
                   .environment = std::move(environment)});
        gate.reading.close();
        status.writing.close();
        output.writing.close();
    }
};

/// The errno on the status pipe, 0 at end-of-file.
int launchError(const Gated& gated) {
    const std::string bytes = rest(gated.status.reading);
    int error = 0;
    if (bytes.size() == sizeof error) {
        std::memcpy(&error, bytes.data(), sizeof error);
    }
    return bytes.empty() || bytes.size() == sizeof error ? error : -1;
}

TEST(GuardLaunch, TurnsTheWaitingProcessIntoTheServer) {
    const World world;
    const std::string server = world.program("server", "#!/bin/sh\necho $$ $# \"$0\" \"$GREETING\"\n");
    Gated gated(server, {"GREETING=hello 🤖"});
    ASSERT_NE(gated.pid, -1);
    ASSERT_TRUE(writeByte(gated.gate.writing, 'g'));
    EXPECT_EQ(launchError(gated), 0);
    EXPECT_EQ(rest(gated.output.reading), std::to_string(gated.pid) + " 0 " + server + " hello 🤖\n");
    EXPECT_EQ(exitCodeOf(gated.pid), 0);
}

TEST(GuardLaunch, LeavesTheServerNoneOfItsDescriptors) {
    World world;
    Gated gated(world.program("server", "#!/bin/sh\necho ready\nexec sleep 1000\n"));
    world.mindProcess(gated.pid);
    ASSERT_TRUE(writeByte(gated.gate.writing, 'g'));
    ASSERT_EQ(nextLine(gated.output.reading), "ready");
    EXPECT_EQ(rest(gated.status.reading), "");
    EXPECT_TRUE(isLetGo(gated.gate.writing));
    EXPECT_TRUE(isAlive(gated.pid));
}

TEST(GuardLaunch, NeverRunsTheServerWhenTheGateIsClosed) {
    const World world;
    Gated gated(world.program("server", "#!/bin/sh\necho never\n"));
    gated.gate.writing.close();
    EXPECT_EQ(exitCodeOf(gated.pid), kGuardExitNotLaunched);
    EXPECT_EQ(rest(gated.output.reading), "");
    EXPECT_EQ(launchError(gated), 0);
}

TEST(GuardLaunch, CanBeEndedWhileItWaits) {
    const World world;
    Gated gated(world.program("server", "#!/bin/sh\necho never\n"));
    ASSERT_EQ(::kill(gated.pid, SIGTERM), 0);
    const int status = waitFor(gated.pid);
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGTERM);
    EXPECT_EQ(rest(gated.output.reading), "");
}

TEST(GuardLaunch, TellsWhyAServerCannotRun) {
    const World world;
    const std::string plain = world.program("plain", "echo no interpreter line\n");
    const std::string wrong = world.program("wrong", "#!/no/such/interpreter\n");
    const std::string binary = world.program("binary", std::string("\x7F\x45\x4C\x46garbage", 11));
    const std::pair<std::string, int> cases[] = {{(world.folder() / "missing").string(), ENOENT},
                                                 {world.folder().string(), EACCES},
                                                 {plain, ENOEXEC},
                                                 {wrong, ENOENT},
                                                 {binary, ENOEXEC}};
    for (const auto& [path, error] : cases) {
        Gated gated(path);
        ASSERT_TRUE(writeByte(gated.gate.writing, 'g'));
        EXPECT_EQ(launchError(gated), error) << path;
        EXPECT_EQ(exitCodeOf(gated.pid), kGuardExitNotLaunched) << path;
        EXPECT_EQ(rest(gated.output.reading), "") << path;
    }
}

TEST(GuardCommandLine, RefusesWhatItCannotMean) {
    const Ends gate = makePipe();
    const Ends status = makePipe();
    const std::string in = std::to_string(gate.reading.get());
    const std::string out = std::to_string(status.writing.get());
    const std::string pid = std::to_string(::getpid());
    const std::vector<std::vector<std::string>> commands = {
        {},
        {"--help"},
        {"--launch"},
        {"--launch", in, out},
        {"--launch", in, out, ""},
        {"--launch", in, out, "/bin/true", "more"},
        {"--launch", out, out, "/bin/true"},
        {"--launch", in, in, "/bin/true"},
        {"--launch", "99", out, "/bin/true"},
        {"--launch", "-1", out, "/bin/true"},
        {"--launch", in + "x", out, "/bin/true"},
        {"--launch", "", out, "/bin/true"},
        {"--watch", in, pid},
        {"--watch", out, pid, "1"},
        {"--watch", "99", pid, "1"},
        {"--watch", in, "0", "1"},
        {"--watch", in, "1", "1"},
        {"--watch", in, "-5", "1"},
        {"--watch", in, "99999999999", "1"},
        {"--watch", in, pid, "-1"},
        {"--watch", in, pid, "soon"},
        {"--watch", in, pid, ""},
        {"--guess", in, pid, "1"},
    };
    for (const std::vector<std::string>& arguments : commands) {
        Start what{.command = {guardPath()}, .inherited = {gate.reading.get(), status.writing.get()}};
        what.command.insert(what.command.end(), arguments.begin(), arguments.end());
        EXPECT_EQ(exitCodeOf(start(what)), kGuardExitBadArguments) << ::testing::PrintToString(arguments);
    }
}

} // namespace
} // namespace vantorel::guard
