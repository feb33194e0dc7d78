// Vantorel. MIT licence, see LICENSE.
// What platform/foundation.h promises of a child's launch, its end, and requests to end.
#include <atomic>
#include <csignal>
#include <memory>
#include <optional>
#include <string>

#include "tests/contract/process_fixture.h"

namespace vantorel::contract {
namespace {

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
