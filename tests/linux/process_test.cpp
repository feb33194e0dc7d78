// Vantorel. MIT licence, see LICENSE.
// Child processes: launch, environment, output, termination, exit, and the errors of a launch that fails.

#include "platform/linux/process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <mutex>
#include <vector>

#include "platform/linux/pipe.h"
#include "tests/linux/system_support.h"

namespace vantorel::gtk::test {
namespace {

const char* const kNoGuard = "/nonexistent/guard";

// Collects what a child prints. The handler may outlive the test, so what it writes to is shared.
class Output {
public:
    Output() : pipe_(makePipe()) {
        pipe_->fileHandleForReading().setReadabilityHandler([state = state_](FileHandle& handle) {
            const std::string chunk = handle.availableData();
            const std::lock_guard lock(state->mutex);
            ++state->calls;
            state->ended = state->ended || chunk.empty();
            state->text += chunk;
        });
    }

    const std::shared_ptr<Pipe>& pipe() const { return pipe_; }
    std::string text() const {
        const std::lock_guard lock(state_->mutex);
        return state_->text;
    }
    bool hasEnded() const {
        const std::lock_guard lock(state_->mutex);
        return state_->ended;
    }
    int calls() const {
        const std::lock_guard lock(state_->mutex);
        return state_->calls;
    }
    std::string wholeText() const {
        EXPECT_TRUE(waitUntil([this] { return hasEnded(); }));
        return text();
    }

private:
    struct State {
        std::mutex mutex;
        std::string text;
        bool ended = false;
        int calls = 0;
    };

    std::shared_ptr<State> state_ = std::make_shared<State>();
    std::shared_ptr<Pipe> pipe_;
};

// Each case with the guard and without it.
class ProcessTest : public testing::TestWithParam<bool> {
protected:
    ProcessTest() : process_(makeProcess(GetParam() ? VANTOREL_PROGRAMS "/vantorel-guard" : kNoGuard)) {}

    std::string script(const std::string& body, const std::string& name = "server") {
        const std::string path = folder_.file(name);
        writeFile(path, "#!/bin/sh\n" + body, 0755);
        return path;
    }

    void connectOutput() {
        process_->setStandardOutput(output_.pipe());
        process_->setStandardError(output_.pipe());
    }

    std::string runToEnd(const std::string& body) {
        process_->setExecutablePath(script(body));
        connectOutput();
        const auto error = process_->run();
        EXPECT_FALSE(error) << error->localizedDescription;
        process_->waitUntilExit();
        return output_.wholeText();
    }

    TemporaryFolder folder_;
    Output output_;
    std::shared_ptr<Process> process_;
};

INSTANTIATE_TEST_SUITE_P(, ProcessTest, testing::Bool(),
                         [](const auto& guarded) { return guarded.param ? "Guarded" : "Alone"; });

TEST_P(ProcessTest, JoinsBothStreamsInOrder) {
    EXPECT_EQ(runToEnd("echo one; echo two >&2; echo three; echo four >&2"), "one\ntwo\nthree\nfour\n");
    EXPECT_EQ(process_->terminationStatus(), 0);
}

TEST_P(ProcessTest, ReportsExitCode) {
    runToEnd("exit 42");
    EXPECT_FALSE(process_->isRunning());
    EXPECT_EQ(process_->terminationStatus(), 42);
}

TEST_P(ProcessTest, ReportsSignalNumber) {
    runToEnd("kill -9 $$");
    EXPECT_EQ(process_->terminationStatus(), 9);
}

TEST_P(ProcessTest, KeepsPathsAsSet) {
    EXPECT_EQ(process_->executablePath(), std::nullopt);
    EXPECT_EQ(process_->currentDirectoryPath(), std::nullopt);
    process_->setExecutablePath("/a b/./c");
    process_->setCurrentDirectoryPath("/a b/../x/");
    EXPECT_EQ(process_->executablePath(), "/a b/./c");
    EXPECT_EQ(process_->currentDirectoryPath(), "/a b/../x/");
}

TEST_P(ProcessTest, StartsInItsFolder) {
    process_->setCurrentDirectoryPath(folder_.path().string());
    EXPECT_EQ(runToEnd("pwd -P"), std::filesystem::canonical(folder_.path()).string() + "\n");
}

TEST_P(ProcessTest, HandsOnExactlyTheEnvironment) {
    process_->setEnvironment({{"PATH", "/usr/bin:/bin"},
                              {"EMOJI", "🤖 ü"},
                              {"EMPTY", ""},
                              {"BLANK ", " v"},
                              {"", "no name"},
                              {"A=B", "name with separator"},
                              {std::string("N\0L", 3), "x"},
                              {"CUT", std::string("a\0b", 3)},
                              {"LAST", "a=b"}});
    process_->setExecutablePath("/usr/bin/env");
    connectOutput();
    ASSERT_FALSE(process_->run());
    EXPECT_EQ(output_.wholeText(), "BLANK = v\nEMOJI=🤖 ü\nEMPTY=\nLAST=a=b\nPATH=/usr/bin:/bin\n");
}

TEST_P(ProcessTest, HasOnlyItsThreeDescriptors) {
    const int leaked = ::open("/dev/null", O_RDONLY); // not close-on-exec, as a careless library opens it
    process_->setExecutablePath("/bin/ls");
    process_->setCurrentDirectoryPath("/proc/self/fd");
    connectOutput();
    ASSERT_FALSE(process_->run());
    // The fourth is the folder that the program lists.
    EXPECT_EQ(output_.wholeText(), "0\n1\n2\n3\n");
    ::close(leaked);
}

TEST_P(ProcessTest, ReadsNothing) { EXPECT_EQ(runToEnd("readlink /proc/$$/fd/0"), "/dev/null\n"); }

TEST_P(ProcessTest, LeadsAGroupOfItsOwn) {
    const std::string text = runToEnd("echo $$; cut -d ' ' -f 5 /proc/$$/stat");
    const std::string pid = std::to_string(process_->processIdentifier());
    EXPECT_EQ(text, pid + "\n" + pid + "\n");
}

TEST_P(ProcessTest, StartsWithDefaultSignals) {
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &blocked, &before);
    const auto pipeAction = ::signal(SIGPIPE, SIG_IGN);
    const std::string text = runToEnd("exec cat /proc/self/status");
    ::signal(SIGPIPE, pipeAction);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    const auto maskOf = [&](const std::string& field) {
        const std::size_t place = text.find(field + ":");
        EXPECT_NE(place, std::string::npos);
        return std::stoull(text.substr(place + field.size() + 1), nullptr, 16);
    };
    // glibc (2.36) leaves its two signals for threads ignored in every child that it spawns.
    constexpr unsigned long long kThreadSignals = 0x180000000;
    EXPECT_EQ(maskOf("SigBlk"), 0U);
    EXPECT_EQ(maskOf("SigIgn") & ~kThreadSignals, 0U);
    EXPECT_EQ(maskOf("SigCgt"), 0U);
}

TEST_P(ProcessTest, SurvivesAnIgnoredSigchld) {
    const auto before = ::signal(SIGCHLD, SIG_IGN);
    runToEnd("exit 7");
    ::signal(SIGCHLD, before);
    EXPECT_EQ(process_->terminationStatus(), 7);
}

TEST_P(ProcessTest, CallsTerminationHandlerOnceOnAnotherThread) {
    std::atomic<int> calls = 0;
    std::atomic<bool> wasElsewhere = false;
    std::atomic<int> status = -1;
    process_->setTerminationHandler([&, main = std::this_thread::get_id()](Process& process) {
        wasElsewhere = std::this_thread::get_id() != main && !process.isRunning();
        status = process.terminationStatus();
        ++calls;
    });
    runToEnd("exit 3");
    ASSERT_TRUE(waitUntil([&] { return calls == 1; }));
    EXPECT_EQ(status, 3);
    EXPECT_TRUE(wasElsewhere);
}

TEST_P(ProcessTest, TellsOfTheEndWhenTheLauncherIsDone) {
    const auto ended = std::make_shared<std::atomic<bool>>(false);
    process_->setTerminationHandler([ended](Process&) { *ended = true; });
    runToEnd("exit 1");
    EXPECT_FALSE(*ended) << "the caller of run() may still have to say that it succeeded";
    EXPECT_TRUE(runLoopUntil([&] { return ended->load(); }));
}

TEST_P(ProcessTest, ReleasesTheHandlerOnTheMainThread) {
    std::atomic<bool> released = false;
    std::thread::id releasedOn;
    const std::shared_ptr<int> token(new int(0), [&](const int* number) {
        releasedOn = std::this_thread::get_id();
        delete number;
        released = true;
    });
    auto held = token;
    process_->setTerminationHandler([held = std::move(held)](Process&) {});
    const_cast<std::shared_ptr<int>&>(token).reset();
    runToEnd("exit 0");
    EXPECT_TRUE(runLoopUntil([&] { return released.load(); }));
    EXPECT_EQ(releasedOn, std::this_thread::get_id());
}

TEST_P(ProcessTest, KeepsItselfUntilTheEnd) {
    std::atomic<int> status = -1;
    process_->setTerminationHandler([&](Process& process) { status = process.terminationStatus(); });
    process_->setExecutablePath(script("read line; exit 9"));
    ASSERT_FALSE(process_->run());
    process_.reset();
    EXPECT_TRUE(waitUntil([&] { return status == 9; }));
}

TEST_P(ProcessTest, TerminatesWithOneRequest) {
    process_->setExecutablePath(script("trap 'echo asked' TERM; echo ready\n"
                                       "i=0; while [ $i -lt 20 ]; do sleep 0.01; i=$((i + 1)); done; exit 5"));
    connectOutput();
    ASSERT_FALSE(process_->run());
    ASSERT_TRUE(waitUntil([&] { return output_.text() == "ready\n"; }));
    EXPECT_TRUE(process_->isRunning());
    process_->terminate();
    process_->waitUntilExit();
    EXPECT_EQ(output_.wholeText(), "ready\nasked\n");
    EXPECT_EQ(process_->terminationStatus(), 5);
    process_->terminate();
}

TEST_P(ProcessTest, AsksTheChildAndNotItsGroup) {
    process_->setExecutablePath(script("sleep 100 & echo $!; wait"));
    connectOutput();
    ASSERT_FALSE(process_->run());
    ASSERT_TRUE(waitUntil([&] { return output_.text().ends_with('\n'); }));
    const pid_t grandchild = std::stoi(output_.text());
    process_->terminate();
    process_->waitUntilExit();
    EXPECT_EQ(process_->terminationStatus(), SIGTERM);
    EXPECT_EQ(::kill(grandchild, 0), 0);
    // A grandchild that holds the output open does not keep the end from being seen.
    EXPECT_FALSE(output_.hasEnded());
    ::kill(grandchild, SIGKILL);
}

TEST_P(ProcessTest, IsNotRunningBeforeItsLaunch) {
    EXPECT_FALSE(process_->isRunning());
    EXPECT_EQ(process_->processIdentifier(), 0);
    EXPECT_EQ(process_->terminationStatus(), 0);
    process_->terminate();
    process_->waitUntilExit();
}

TEST_P(ProcessTest, CallsAtMostOnceMoreAfterTheEndOfOutput) {
    process_->setExecutablePath(script("echo x; exec >&- 2>&-; sleep 0.3"));
    connectOutput();
    ASSERT_FALSE(process_->run());
    ASSERT_TRUE(waitUntil([&] { return output_.hasEnded(); }));
    const int calls = output_.calls();
    EXPECT_LE(calls, 3);
    process_->waitUntilExit();
    EXPECT_EQ(output_.calls(), calls);
}

TEST_P(ProcessTest, PassesALargeOutputOnUnchanged) {
    constexpr std::size_t kBytes = 32U << 20U;
    const std::string text = runToEnd("head -c 33554432 /dev/zero | tr '\\0' 'x'");
    EXPECT_EQ(text.size(), kBytes);
    EXPECT_EQ(text.find_first_not_of('x'), std::string::npos);
}

// Launches that fail

class FailedLaunchTest : public ProcessTest {
protected:
    std::string messageOf(const std::string& path, const std::string& folder = "") {
        process_->setExecutablePath(path);
        if (!folder.empty()) {
            process_->setCurrentDirectoryPath(folder);
        }
        connectOutput();
        const auto error = process_->run();
        EXPECT_FALSE(process_->isRunning());
        EXPECT_EQ(process_->processIdentifier(), 0);
        EXPECT_TRUE(!error || !error->description.empty());
        EXPECT_EQ(output_.wholeText(), "");
        return error ? error->localizedDescription : "";
    }
};

INSTANTIATE_TEST_SUITE_P(, FailedLaunchTest, testing::Bool(),
                         [](const auto& guarded) { return guarded.param ? "Guarded" : "Alone"; });

TEST_P(FailedLaunchTest, NamesAMissingProgram) {
    const std::string path = folder_.file("none");
    EXPECT_EQ(messageOf(path), "Could not run \"" + path + "\": No such file or directory");
}

TEST_P(FailedLaunchTest, NamesAMissingPermission) {
    const std::string path = folder_.file("plain");
    writeFile(path, "#!/bin/sh\n", 0644);
    EXPECT_EQ(messageOf(path), "Could not run \"" + path + "\": Permission denied");
}

TEST_P(FailedLaunchTest, RunsNoTextWithoutInterpreterLine) {
    const std::string path = folder_.file("text");
    writeFile(path, "echo this must not run\n", 0755);
    EXPECT_EQ(messageOf(path), "Could not run \"" + path + "\": Exec format error");
}

TEST_P(FailedLaunchTest, RunsNoProgramOfAnotherMachine) {
    // The head of a 64-bit program for a machine that nobody has.
    std::string head("\x7f"
                     "ELF\x02\x01\x01\0\0\0\0\0\0\0\0\0\x02\0\x2b\0\x01\0\0\0",
                     24);
    head.resize(64);
    const std::string path = folder_.file("foreign");
    writeFile(path, head, 0755);
    EXPECT_EQ(messageOf(path), "Could not run \"" + path + "\": Exec format error");
}

TEST_P(FailedLaunchTest, RunsNoEmptyFile) {
    const std::string path = folder_.file("empty");
    writeFile(path, "", 0755);
    EXPECT_EQ(messageOf(path), "Could not run \"" + path + "\": Exec format error");
}

TEST_P(FailedLaunchTest, RunsNoFolder) {
    const std::string path = folder_.path().string();
    EXPECT_EQ(messageOf(path), "Could not run \"" + path + "\": Is a directory");
}

TEST_P(FailedLaunchTest, NamesAMissingInterpreter) {
    const std::string path = folder_.file("orphan");
    writeFile(path, "#!/nonexistent/interpreter\n", 0755);
    EXPECT_EQ(messageOf(path),
              "Could not run \"" + path + "\": No such file or directory (its interpreter is missing)");
}

TEST_P(FailedLaunchTest, NamesAMissingFolder) {
    const std::string folder = folder_.file("nowhere");
    EXPECT_EQ(messageOf("/bin/true", folder),
              "Could not start in the folder \"" + folder + "\": No such file or directory");
}

TEST_P(FailedLaunchTest, LooksForNoProgramInThePath) {
    EXPECT_EQ(messageOf("true"), "Could not run \"true\": No such file or directory");
}

TEST_P(FailedLaunchTest, TakesNoPathWithNul) { EXPECT_NE(messageOf(std::string("/bin/true\0x", 11)), ""); }

TEST_P(FailedLaunchTest, RunsOnlyOnce) {
    runToEnd("exit 0");
    const auto error = process_->run();
    ASSERT_TRUE(error);
    EXPECT_NE(error->localizedDescription.find("a second time"), std::string::npos);
}

TEST_P(FailedLaunchTest, ReportsWhenThereAreNoDescriptors) {
    rlimit before{};
    ::getrlimit(RLIMIT_NOFILE, &before);
    const rlimit none{3, before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
    const auto process = makeProcess(kNoGuard);
    const auto pipe = makePipe();
    process->setExecutablePath("/bin/true");
    process->setStandardOutput(pipe);
    const auto error = process->run();
    ::setrlimit(RLIMIT_NOFILE, &before);
    ASSERT_TRUE(error);
    EXPECT_NE(error->localizedDescription.find("Too many open files"), std::string::npos);
}

TEST_P(ProcessTest, AChildWhoseEndNobodyWouldNoticeIsNotKept) {
    process_->setExecutablePath(script("exec sleep 1000"));
    connectOutput();
    std::optional<PlatformError> error;
    {
        const NoThreads none;
        error = process_->run();
    }
    ASSERT_TRUE(error);
    EXPECT_NE(error->localizedDescription.find("Resource temporarily unavailable"), std::string::npos);
    EXPECT_FALSE(process_->isRunning());
    EXPECT_EQ(process_->processIdentifier(), 0);
    process_->waitUntilExit();
    EXPECT_EQ(output_.wholeText(), "");
}

TEST_P(ProcessTest, AChildCanBeStartedOnceThereAreThreadsAgain) {
    process_->setExecutablePath(script("exit 3"));
    {
        const NoThreads none;
        ASSERT_TRUE(process_->run());
    }
    ASSERT_FALSE(process_->run());
    process_->waitUntilExit();
    EXPECT_EQ(process_->terminationStatus(), 3);
}

TEST(PipeWithoutThreads, ReadsOnceAHandlerIsSetAgain) {
    const std::shared_ptr<Pipe> pipe = makePipe();
    std::atomic<bool> read{false};
    const auto handler = [&read](FileHandle& handle) { read = !handle.availableData().empty() || read; };
    const auto writeOne = [&pipe] { return ::write(static_cast<ChildPipe&>(*pipe).writingEnd(), "x", 1); };
    {
        const NoThreads none;
        pipe->fileHandleForReading().setReadabilityHandler(handler);
    }
    ASSERT_EQ(writeOne(), 1);
    pipe->fileHandleForReading().setReadabilityHandler(handler);
    EXPECT_TRUE(waitUntil([&read] { return read.load(); }));
    pipe->fileHandleForReading().setReadabilityHandler(nullptr);
}

} // namespace
} // namespace vantorel::gtk::test
