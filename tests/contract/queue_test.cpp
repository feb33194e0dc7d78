// Vantorel. MIT licence, see LICENSE.
// What platform/dispatch.h promises, and the timer of platform/platform.h.
#include <atomic>
#include <cstddef>
#include <memory>
#include <thread>
#include <vector>

#include "tests/contract/world.h"

namespace vantorel::contract {
namespace {

using ::testing::ElementsAre;

class QueueContract : public ContractTest {};

TEST_F(QueueContract, MainBlocksRunLaterInOrderOnTheMainThread) {
    std::vector<int> order;
    bool allOnMain = true;
    for (int i = 0; i < 5; ++i) {
        platform().mainQueue().async([&, i] {
            order.push_back(i);
            allOnMain = allOnMain && onMainThread();
        });
    }
    EXPECT_TRUE(order.empty());
    EXPECT_TRUE(runUntil([&] { return order.size() == 5; }));
    EXPECT_THAT(order, ElementsAre(0, 1, 2, 3, 4));
    EXPECT_TRUE(allOnMain);
}

TEST_F(QueueContract, BlockOfABlockRunsAfterIt) {
    std::vector<int> order;
    platform().mainQueue().async([&] {
        platform().mainQueue().async([&] { order.push_back(2); });
        order.push_back(1);
    });
    EXPECT_TRUE(runUntil([&] { return order.size() == 2; }));
    EXPECT_THAT(order, ElementsAre(1, 2));
}

TEST_F(QueueContract, MainBlocksOfAnotherThreadKeepTheirOrder) {
    std::vector<int> order;
    std::thread([&] {
        for (int i = 0; i < 100; ++i) {
            platform().mainQueue().async([&order, i] { order.push_back(onMainThread() ? i : -1); });
        }
    }).join();
    EXPECT_TRUE(runUntil([&] { return order.size() == 100; }));
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
}

TEST_F(QueueContract, GlobalBlocksRunOnceOffTheMainThread) {
    std::atomic<int> runs = 0;
    std::atomic<bool> onMain = false;
    platform().globalQueue().async([&] {
        onMain = onMainThread();
        ++runs;
    });
    EXPECT_TRUE(runUntil([&] { return runs == 1; }));
    EXPECT_FALSE(onMain);
    runFor(0.05);
    EXPECT_EQ(runs, 1);
}

TEST_F(QueueContract, GlobalBlocksRunBesideEachOther) {
    std::atomic<int> here = 0;
    std::atomic<int> met = 0;
    for (int i = 0; i < 2; ++i) {
        platform().globalQueue().async([&] {
            ++here;
            while (here < 2)
                std::this_thread::yield();
            ++met;
        });
    }
    EXPECT_TRUE(runUntil([&] { return met == 2; }));
    here = 2;
    EXPECT_TRUE(runUntil([&] { return met == 2; }));
}

TEST_F(QueueContract, DelayedBlockIsNeverEarly) {
    const double begin = world_->now();
    double ran = -1;
    platform().mainQueue().asyncAfter(0.2, [&] { ran = onMainThread() ? world_->now() : -2; });
    EXPECT_TRUE(runUntil([&] { return ran != -1; }));
    EXPECT_GE(ran, begin + 0.2 - 1e-6);
    EXPECT_LT(ran, begin + 5);
}

TEST_F(QueueContract, DelayedBlocksRunInOrderOfTime) {
    std::vector<int> order;
    platform().mainQueue().asyncAfter(0.15, [&] { order.push_back(3); });
    platform().mainQueue().asyncAfter(0.05, [&] { order.push_back(2); });
    platform().mainQueue().async([&] { order.push_back(1); });
    EXPECT_TRUE(runUntil([&] { return order.size() == 3; }));
    EXPECT_THAT(order, ElementsAre(1, 2, 3));
}

TEST_F(QueueContract, DelayOfZeroIsStillLater) {
    bool ran = false;
    platform().mainQueue().asyncAfter(0, [&] { ran = true; });
    EXPECT_FALSE(ran);
    EXPECT_TRUE(runUntil([&] { return ran; }));
}

TEST_F(QueueContract, DelayMayBeAskedForFromAnyThread) {
    std::atomic<int> ran = 0;
    std::thread([&] {
        platform().mainQueue().asyncAfter(0.01, [&] { ran += onMainThread() ? 1 : 100; });
        platform().globalQueue().asyncAfter(0.01, [&] { ran += onMainThread() ? 100 : 1; });
    }).join();
    EXPECT_TRUE(runUntil([&] { return ran == 2; }));
}

class TimerContract : public ContractTest {};

TEST_F(TimerContract, FiresFirstAfterTheIntervalAndThenAgainAndAgain) {
    const double begin = world_->now();
    std::vector<double> firings;
    const auto timer = platform().scheduleRepeatingTimer(0.2, [&] {
        EXPECT_TRUE(onMainThread());
        firings.push_back(world_->now() - begin);
    });
    EXPECT_TRUE(firings.empty());
    EXPECT_TRUE(runUntil([&] { return firings.size() >= 3; }));
    timer->invalidate();
    ASSERT_GE(firings.size(), 3U);
    EXPECT_GE(firings[0], 0.2 - 1e-6);
    EXPECT_GE(firings[1], 0.4 - 0.02);
    EXPECT_GE(firings[2], 0.6 - 0.02);
}

TEST_F(TimerContract, NoFiringAfterInvalidation) {
    int firings = 0;
    const auto timer = platform().scheduleRepeatingTimer(0.05, [&] { ++firings; });
    timer->invalidate();
    runFor(0.3);
    EXPECT_EQ(firings, 0);
    timer->invalidate();
}

TEST_F(TimerContract, MayBeInvalidatedInsideItsBlock) {
    int firings = 0;
    std::shared_ptr<Timer> timer;
    timer = platform().scheduleRepeatingTimer(0.05, [&] {
        ++firings;
        timer->invalidate();
    });
    EXPECT_TRUE(runUntil([&] { return firings == 1; }));
    runFor(0.3);
    EXPECT_EQ(firings, 1);
}

TEST_F(TimerContract, GoesOnWhenTheHandleIsReleased) {
    auto firings = std::make_shared<int>(0);
    std::weak_ptr<Timer> weak;
    {
        auto timer = platform().scheduleRepeatingTimer(0.05, [firings] { ++*firings; });
        weak = timer;
    }
    EXPECT_TRUE(runUntil([&] { return *firings >= 2; }));
    if (const auto timer = weak.lock())
        timer->invalidate();
}

} // namespace
} // namespace vantorel::contract
