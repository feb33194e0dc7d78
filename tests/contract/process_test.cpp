// Vantorel. MIT licence, see LICENSE.
// What platform/foundation.h promises of child processes and pipes.
#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "tests/contract/world.h"

namespace vantorel::contract {
namespace {

using namespace std::string_literals;

/// What a child has written, and how its reader was called. Any thread.
struct Output {
    void read(FileHandle& handle) {
        if (busy.exchange(true))
            overlapping = true;
        const std::string chunk = handle.availableData();
        {
            const std::lock_guard lock(mutex);
            bytes += chunk;
            largest = std::max(largest, chunk.size());
        }
        if (chunk.empty())
            ++emptyCalls;
        busy = false;
    }
    std::string text() const {
        const std::lock_guard lock(mutex);
        return bytes;
    }

    mutable std::mutex mutex;
    std::string bytes;
    std::size_t largest = 0;
    std::atomic<bool> busy = false;
    std::atomic<bool> overlapping = false;
    std::atomic<bool> onMain = false;
    std::atomic<int> emptyCalls = 0;
};

class ProcessContract : public ContractTest {
protected:
    ~ProcessContract() override {
        // No child may outlive its case.
        if (process_ && process_->isRunning()) {
            process_->terminate();
            runUntil([this] { return !process_->isRunning(); }, 5);
        }
    }

    void prepare(const std::string& path) {
        process_ = platform().makeProcess();
        process_->setExecutablePath(path);
        process_->setCurrentDirectoryPath(world_->folder());
        process_->setEnvironment({{"PATH", "/usr/bin:/bin"}});
        output_ = attach();
        process_->setStandardOutput(pipe_);
        process_->setStandardError(pipe_);
        process_->setTerminationHandler([ends = ends_, onMain = endedOnMain_, status = endStatus_](Process& process) {
            *onMain = onMainThread();
            *status = process.terminationStatus();
            ++*ends;
        });
    }
    /// A fresh pipe with a reader.
    std::shared_ptr<Output> attach() {
        pipe_ = platform().makePipe();
        auto output = std::make_shared<Output>();
        pipe_->fileHandleForReading().setReadabilityHandler([output](FileHandle& handle) {
            output->onMain = output->onMain || onMainThread();
            output->read(handle);
        });
        return output;
    }
    void launch(const std::vector<ChildStep>& steps) {
        prepare(world_->makeProgram(steps));
        const auto error = process_->run();
        ASSERT_FALSE(error.has_value()) << error->localizedDescription;
    }
    bool ended() {
        return runUntil([this] { return *ends_ > 0; });
    }
    bool wrote(const std::string& text) {
        return runUntil([this, &text] { return output_->text() == text; });
    }
    void expectLaunchError() {
        const auto error = process_->run();
        ASSERT_TRUE(error.has_value());
        EXPECT_FALSE(error->localizedDescription.empty());
        EXPECT_FALSE(error->description.empty());
        EXPECT_FALSE(process_->isRunning());
        EXPECT_EQ(process_->processIdentifier(), 0);
        EXPECT_EQ(process_->terminationStatus(), 0);
        runFor(0.1);
        EXPECT_EQ(*ends_, 0);
        process_->terminate();
    }

    std::shared_ptr<Process> process_;
    std::shared_ptr<Pipe> pipe_;
    std::shared_ptr<Output> output_;
    std::shared_ptr<std::atomic<int>> ends_ = std::make_shared<std::atomic<int>>(0);
    std::shared_ptr<std::atomic<bool>> endedOnMain_ = std::make_shared<std::atomic<bool>>(false);
    std::shared_ptr<std::atomic<int>> endStatus_ = std::make_shared<std::atomic<int>>(-1);
};

TEST_F(ProcessContract, AsMade) {
    const auto process = platform().makeProcess();
    EXPECT_EQ(process->executablePath(), std::nullopt);
    EXPECT_EQ(process->currentDirectoryPath(), std::nullopt);
    EXPECT_FALSE(process->isRunning());
    EXPECT_EQ(process->processIdentifier(), 0);
    EXPECT_EQ(process->terminationStatus(), 0);
}

TEST_F(ProcessContract, PathsReadBackAsTheyWereSet) {
    const auto process = platform().makeProcess();
    process->setExecutablePath("/some where/../with blanks/🤖");
    process->setCurrentDirectoryPath("/no/such/folder");
    EXPECT_EQ(process->executablePath(), "/some where/../with blanks/🤖");
    EXPECT_EQ(process->currentDirectoryPath(), "/no/such/folder");
}

TEST_F(ProcessContract, RunsUntilItEnds) {
    launch({waitForever()});
    EXPECT_TRUE(process_->isRunning());
    EXPECT_GT(process_->processIdentifier(), 0);
    EXPECT_EQ(process_->terminationStatus(), 0);
    EXPECT_EQ(*ends_, 0);
}

TEST_F(ProcessContract, ExitCodes) {
    for (const int code : {0, 1, 7, 255}) {
        *ends_ = 0;
        launch({exitWith(code)});
        EXPECT_TRUE(ended());
        EXPECT_EQ(*endStatus_, code);
        EXPECT_EQ(process_->terminationStatus(), code);
        EXPECT_FALSE(process_->isRunning());
        EXPECT_GT(process_->processIdentifier(), 0);
    }
}

TEST_F(ProcessContract, SignalsCountAsTheirNumber) {
    for (const int signal : {SIGKILL, SIGTERM, SIGABRT}) {
        *ends_ = 0;
        launch({raiseSignal(signal)});
        EXPECT_TRUE(ended());
        EXPECT_EQ(*endStatus_, signal);
    }
}

TEST_F(ProcessContract, EndIsToldOnceOffTheMainThread) {
    launch({exitWith(0)});
    EXPECT_TRUE(ended());
    runFor(0.1);
    EXPECT_EQ(*ends_, 1);
    EXPECT_FALSE(*endedOnMain_);
}

TEST_F(ProcessContract, MissingFileIsALaunchError) {
    prepare(world_->folder() + "/none");
    expectLaunchError();
}

TEST_F(ProcessContract, FileWithoutPermissionIsALaunchError) {
    const std::string path = world_->folder() + "/closed";
    world_->makeFile(path, "#!/bin/sh\n", 0644);
    prepare(path);
    expectLaunchError();
}

TEST_F(ProcessContract, FileThatIsNoProgramIsALaunchError) {
    const std::string path = world_->folder() + "/garbage";
    world_->makeFile(path, "neither a script nor a program", 0755);
    prepare(path);
    expectLaunchError();
}

TEST_F(ProcessContract, FolderIsALaunchError) {
    prepare(world_->folder());
    expectLaunchError();
}

TEST_F(ProcessContract, MissingWorkingDirectoryIsALaunchError) {
    prepare(world_->makeProgram({exitWith(0)}));
    process_->setCurrentDirectoryPath(world_->folder() + "/none");
    expectLaunchError();
}

TEST_F(ProcessContract, OnePipeJoinsBothStreamsInOrder) {
    launch({print("one "), printError("two "), print("three "), printError("four")});
    EXPECT_TRUE(wrote("one two three four")) << output_->text();
}

TEST_F(ProcessContract, TwoPipesKeepThemApart) {
    prepare(world_->makeProgram({print("out"), printError("err")}));
    const auto out = output_;
    const auto err = attach();
    process_->setStandardError(pipe_);
    ASSERT_EQ(process_->run(), std::nullopt);
    EXPECT_TRUE(runUntil([&] { return out->text() == "out" && err->text() == "err"; }))
        << out->text() << "|" << err->text();
}

TEST_F(ProcessContract, OutputArrivesWhileTheChildRuns) {
    launch({print("early"), waitForever()});
    EXPECT_TRUE(wrote("early"));
    EXPECT_TRUE(process_->isRunning());
}

TEST_F(ProcessContract, OutputBeforeTheEndIsNeverLost) {
    launch({printMany(300'000), exitWith(3)});
    EXPECT_TRUE(runUntil([this] { return output_->text().size() == 300'000; })) << output_->text().size();
    EXPECT_TRUE(ended());
    EXPECT_LE(output_->largest, 65'536U);
}

TEST_F(ProcessContract, ReaderIsCalledOneAfterTheOtherOffTheMainThread) {
    launch({printMany(200'000), printError("x"), printMany(200'000)});
    EXPECT_TRUE(runUntil([this] { return output_->text().size() == 400'001; })) << output_->text().size();
    EXPECT_FALSE(output_->overlapping);
    EXPECT_FALSE(output_->onMain);
}

TEST_F(ProcessContract, ReaderIsLeftAloneAfterTheEndOfOutput) {
    launch({print("x")});
    EXPECT_TRUE(wrote("x"));
    EXPECT_TRUE(ended());
    runFor(0.2);
    EXPECT_LE(output_->emptyCalls, 1);
    EXPECT_EQ(output_->text(), "x");
}

TEST_F(ProcessContract, BytesArriveAsTheyAre) {
    const std::string bytes = "\xFF\x00\xC3\n\r\x1B"s;
    launch({print(bytes)});
    EXPECT_TRUE(wrote(bytes));
}

TEST_F(ProcessContract, WorkingDirectoryIsTheOneSet) {
    launch({printWorkingDirectory()});
    EXPECT_TRUE(wrote(world_->folder())) << output_->text();
}

TEST_F(ProcessContract, EnvironmentReplacesTheInheritedOneAndLeavesOutWhatCannotBeHeld) {
    prepare(world_->makeProgram({printEnvironment(), print("END\n")}));
    process_->setEnvironment({{"PATH", "/usr/bin:/bin"},
                              {"KEY ", " v"},
                              {"EMPTY", ""},
                              {"export GOOD", "a=b"},
                              {"ÜML", "🤖"},
                              {"", "no name"},
                              {"A=B", "sign in name"},
                              {"N\0UL"s, "in name"},
                              {"VALUE", "in \0 value"s}});
    ASSERT_EQ(process_->run(), std::nullopt);
    EXPECT_TRUE(runUntil([this] { return output_->text().ends_with("END\n"); }));
    std::vector<std::string> lines;
    std::istringstream stream(output_->text());
    for (std::string line; std::getline(stream, line) && line != "END";)
        lines.push_back(line);
    EXPECT_THAT(lines, ::testing::UnorderedElementsAre("PATH=/usr/bin:/bin", "KEY = v", "EMPTY=", "export GOOD=a=b",
                                                       "ÜML=🤖"));
}

TEST_F(ProcessContract, TerminationIsARequestThatEndsTheChild) {
    launch({print("up"), waitForever()});
    EXPECT_TRUE(wrote("up"));
    process_->terminate();
    EXPECT_TRUE(ended());
    EXPECT_EQ(*endStatus_, SIGTERM);
    process_->terminate();
}

TEST_F(ProcessContract, ChildMayAnswerTheRequestInItsOwnWay) {
    launch({exitOnTermination(5)});
    EXPECT_TRUE(wrote("ready"));
    process_->terminate();
    EXPECT_TRUE(ended());
    EXPECT_EQ(*endStatus_, 5);
}

TEST_F(ProcessContract, ChildMayIgnoreTheRequest) {
    launch({ignoreTermination(), print("deaf"), pauseFor(0.6), exitWith(9)});
    EXPECT_TRUE(wrote("deaf"));
    process_->terminate();
    runFor(0.2);
    EXPECT_TRUE(process_->isRunning());
    EXPECT_TRUE(ended());
    EXPECT_EQ(*endStatus_, 9);
}

TEST_F(ProcessContract, WaitingLastsUntilTheEnd) {
    launch({print("up"), waitForever()});
    EXPECT_TRUE(wrote("up"));
    auto waited = std::make_shared<std::atomic<bool>>(false);
    platform().globalQueue().async([process = process_, waited] {
        process->waitUntilExit();
        *waited = !process->isRunning();
    });
    runFor(0.1);
    EXPECT_FALSE(*waited);
    process_->terminate();
    EXPECT_TRUE(runUntil([&] { return waited->load(); }));
}

TEST_F(ProcessContract, WaitingForAnEndedChildReturnsAtOnce) {
    launch({exitWith(0)});
    EXPECT_TRUE(ended());
    auto waited = std::make_shared<std::atomic<bool>>(false);
    platform().globalQueue().async([process = process_, waited] {
        process->waitUntilExit();
        *waited = true;
    });
    EXPECT_TRUE(runUntil([&] { return waited->load(); }));
}

TEST_F(ProcessContract, HandlerIsKeptWhenTheHandleIsReleased) {
    launch({print("up"), pauseFor(0.1), exitWith(4)});
    process_.reset();
    EXPECT_TRUE(ended());
    EXPECT_EQ(*endStatus_, 4);
}

} // namespace
} // namespace vantorel::contract
