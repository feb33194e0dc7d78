// Vantorel. MIT licence, see LICENSE.
// What only this system's child processes and pipes can get wrong.
#include <sys/resource.h>

#include <csignal>
#include <memory>
#include <string>

#include "tests/contract/process_fixture.h"

namespace vantorel::contract {
namespace {

class MacChild : public ProcessContract {
protected:
    /// Seconds of processor time that this process has used.
    static double processorTime() {
        rusage usage{};
        ::getrusage(RUSAGE_SELF, &usage);
        const auto seconds = [](const timeval& time) {
            return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
        };
        return seconds(usage.ru_utime) + seconds(usage.ru_stime);
    }
};

TEST_F(MacChild, EndOfOutputCostsNoProcessorTime) {
    launch({print("x"), exitWith(0)});
    EXPECT_TRUE(wrote("x"));
    EXPECT_TRUE(ended());
    const double before = processorTime();
    platform().globalQueue().async([] {});
    std::this_thread::sleep_for(std::chrono::seconds(1));
    EXPECT_LT(processorTime() - before, 0.2) << "the reader is called without end";
}

TEST_F(MacChild, ReaderThatTakesNothingIsLeftAloneAtTheEnd) {
    prepare(world_->makeProgram({exitWith(0)}));
    auto calls = std::make_shared<std::atomic<int>>(0);
    pipe_->fileHandleForReading().setReadabilityHandler([calls](FileHandle&) { ++*calls; });
    ASSERT_EQ(process_->run(), std::nullopt);
    EXPECT_TRUE(ended());
    runFor(0.3);
    EXPECT_LE(*calls, 2);
}

TEST_F(MacChild, SecondReadInOneCallDoesNotWait) {
    prepare(world_->makeProgram({print("x"), waitForever()}));
    auto reads = std::make_shared<std::atomic<int>>(0);
    pipe_->fileHandleForReading().setReadabilityHandler([reads](FileHandle& handle) {
        handle.availableData();
        handle.availableData();
        ++*reads;
    });
    ASSERT_EQ(process_->run(), std::nullopt);
    EXPECT_TRUE(runUntil([&] { return *reads > 0; }, 5));
}

TEST_F(MacChild, QuickEndIsToldWithItsOwnStatus) {
    for (int round = 0; round < 20; ++round) {
        *ends_ = 0;
        *endStatus_ = -1;
        launch({exitWith(3)});
        EXPECT_TRUE(ended());
        EXPECT_EQ(*endStatus_, 3);
    }
}

TEST_F(MacChild, EndedChildLetsGoOfItsHandler) {
    const auto held = std::make_shared<int>(0);
    prepare(world_->makeProgram({exitWith(0)}));
    process_->setTerminationHandler([held, ends = ends_](Process&) { ++*ends; });
    ASSERT_EQ(process_->run(), std::nullopt);
    EXPECT_TRUE(ended());
    EXPECT_TRUE(runUntil([&] { return held.use_count() == 1; }, 5));
}

TEST_F(MacChild, PipeMayGoFromItsOwnReader) {
    auto pipe = std::make_shared<std::shared_ptr<Pipe>>(platform().makePipe());
    auto done = std::make_shared<std::atomic<bool>>(false);
    prepare(world_->makeProgram({print("x"), exitWith(0)}));
    process_->setStandardOutput(*pipe);
    (*pipe)->fileHandleForReading().setReadabilityHandler([pipe, done](FileHandle& handle) {
        handle.availableData();
        pipe->reset();
        *done = true;
    });
    ASSERT_EQ(process_->run(), std::nullopt);
    EXPECT_TRUE(runUntil([&] { return done->load(); }));
    EXPECT_TRUE(ended());
}

TEST_F(MacChild, ShellsOwnSignalsAreNotInherited) {
    // A child that inherited "ignore" would live on.
    launch({print("up"), raiseSignal(SIGPIPE)});
    EXPECT_TRUE(ended());
    EXPECT_EQ(*endStatus_, SIGPIPE);
}

TEST_F(MacChild, RunsInAGroupOfItsOwn) {
    launch({waitForever()});
    EXPECT_EQ(::getpgid(process_->processIdentifier()), process_->processIdentifier());
}

} // namespace
} // namespace vantorel::contract
