// Vantorel. MIT licence, see LICENSE.
// The queues and the repeating timer.

#include "platform/linux/queue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <vector>

#include "platform/linux/timer.h"
#include "tests/linux/system_support.h"

namespace vantorel::gtk::test {
namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

TEST(MainQueueTest, RunsBlocksLaterAndInOrder) {
    std::vector<int> ran;
    for (int number = 0; number < 100; ++number) {
        mainQueue().async([&ran, number] { ran.push_back(number); });
    }
    EXPECT_TRUE(ran.empty()) << "never inside the call";
    ASSERT_TRUE(runLoopUntil([&] { return ran.size() == 100; }));
    for (int number = 0; number < 100; ++number) {
        EXPECT_EQ(ran[static_cast<std::size_t>(number)], number);
    }
}

TEST(MainQueueTest, TakesBlocksFromOtherThreads) {
    std::atomic<int> ran = 0;
    std::atomic<bool> wasMain = true;
    const auto main = std::this_thread::get_id();
    std::vector<std::thread> threads;
    for (int index = 0; index < 4; ++index) {
        threads.emplace_back([&] {
            for (int number = 0; number < 250; ++number) {
                mainQueue().async([&] {
                    wasMain = wasMain && std::this_thread::get_id() == main;
                    ++ran;
                });
            }
        });
    }
    EXPECT_TRUE(runLoopUntil([&] { return ran == 1000; }));
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(wasMain);
}

TEST(MainQueueTest, GoesOnInANestedLoop) {
    std::vector<int> ran;
    mainQueue().async([&] {
        ran.push_back(1);
        EXPECT_TRUE(runLoopUntil([&] { return ran.size() == 3; }));
        ran.push_back(4);
    });
    mainQueue().async([&] { ran.push_back(2); });
    mainQueue().async([&] { ran.push_back(3); });
    ASSERT_TRUE(runLoopUntil([&] { return ran.size() == 4; }));
    EXPECT_EQ(ran, (std::vector<int>{1, 2, 3, 4}));
}

TEST(MainQueueTest, ReleasesABlockAfterItRan) {
    const auto token = std::make_shared<int>(0);
    mainQueue().async([held = token] {});
    EXPECT_EQ(token.use_count(), 2);
    EXPECT_TRUE(runLoopUntil([&] { return token.use_count() == 1; }));
}

TEST(MainQueueTest, WaitsNoLessThanAsked) {
    const auto start = Clock::now();
    double after = 0;
    mainQueue().asyncAfter(0.05, [&] { after = secondsSince(start); });
    ASSERT_TRUE(runLoopUntil([&] { return after > 0; }));
    EXPECT_GE(after, 0.05);
}

TEST(MainQueueTest, TakesOddDelays) {
    int ran = 0;
    mainQueue().asyncAfter(-1, [&] { ++ran; });
    mainQueue().asyncAfter(std::numeric_limits<double>::quiet_NaN(), [&] { ++ran; });
    mainQueue().asyncAfter(1e30, [&] { ran += 100; });
    EXPECT_TRUE(runLoopUntil([&] { return ran == 2; }));
}

TEST(GlobalQueueTest, RunsBesideOthers) {
    // Each block waits for all: they end only when they run at the same time.
    constexpr int kBlocks = 8;
    std::atomic<int> arrived = 0;
    std::atomic<int> left = 0;
    for (int index = 0; index < kBlocks; ++index) {
        globalQueue().async([&] {
            ++arrived;
            waitUntil([&] { return arrived == kBlocks; });
            ++left;
        });
    }
    EXPECT_TRUE(waitUntil([&] { return left == kBlocks; }));
    EXPECT_EQ(arrived, kBlocks);
}

TEST(GlobalQueueTest, RunsEveryBlock) {
    std::atomic<int> ran = 0;
    for (int index = 0; index < 10'000; ++index) {
        globalQueue().async([&] { ++ran; });
    }
    EXPECT_TRUE(waitUntil([&] { return ran == 10'000; }));
}

TEST(GlobalQueueTest, WaitsNoLessThanAsked) {
    const auto start = Clock::now();
    std::atomic<double> after = 0;
    std::atomic<bool> wasElsewhere = false;
    globalQueue().asyncAfter(0.03, [&, main = std::this_thread::get_id()] {
        wasElsewhere = std::this_thread::get_id() != main;
        after = secondsSince(start);
    });
    ASSERT_TRUE(runLoopUntil([&] { return after > 0; }));
    EXPECT_GE(after, 0.03);
    EXPECT_TRUE(wasElsewhere);
}

TEST(GlobalQueueTest, KeepsWhatNoThreadWasThereFor) {
    std::atomic<int> begun{0};
    std::atomic<int> ran{0};
    const int many = 80; // more than threads that could be idle from before
    std::atomic<bool> release{false};
    const auto block = [&] {
        ++begun;
        waitUntil([&release] { return release.load(); });
        ++ran;
    };
    {
        const NoThreads none;
        for (int number = 0; number < many; ++number) {
            globalQueue().async(block);
        }
    }
    release = true;
    globalQueue().async([] {});
    EXPECT_TRUE(waitUntil([&ran] { return ran == many; })) << begun << " of the blocks were begun";
}

TEST(GlobalQueueTest, HoldsUpNoExit) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            std::atomic<bool> isStuck = false;
            globalQueue().async([&] {
                isStuck = true;
                while (true) {
                    std::this_thread::sleep_for(std::chrono::hours(1));
                }
            });
            waitUntil([&] { return isStuck.load(); });
            std::exit(0);
        },
        testing::ExitedWithCode(0), "");
}

TEST(TimerTest, FiresOnTheGridUntilInvalidated) {
    const auto start = Clock::now();
    std::vector<double> firings;
    const auto timer = scheduleRepeatingTimer(0.04, [&] { firings.push_back(secondsSince(start)); });
    ASSERT_TRUE(runLoopUntil([&] { return firings.size() == 3; }));
    timer->invalidate();
    EXPECT_GE(firings[0], 0.04);
    EXPECT_GE(firings[1], 0.08);
    EXPECT_GE(firings[2], 0.12);
    EXPECT_FALSE(runLoopUntil([&] { return firings.size() > 3; }, std::chrono::milliseconds(100)));
}

TEST(TimerTest, LeavesMissedFiringsOut) {
    int firings = 0;
    const auto start = Clock::now();
    const auto timer = scheduleRepeatingTimer(0.03, [&] { ++firings; });
    waitUntil([&] { return secondsSince(start) > 0.1; });
    ASSERT_TRUE(runLoopUntil([&] { return firings == 1; }));
    // Due at 0.12, on the grid of the first; not at once, for the three that were missed.
    ASSERT_TRUE(runLoopUntil([&] { return firings == 2; }));
    EXPECT_GE(secondsSince(start), 0.12);
    timer->invalidate();
}

TEST(TimerTest, GoesOnWithoutItsHandle) {
    const auto firings = std::make_shared<int>(0);
    const auto stop = std::make_shared<std::shared_ptr<Timer>>();
    *stop = scheduleRepeatingTimer(0.005, [firings, stop] {
        if (++*firings == 3) {
            (*stop)->invalidate();
            stop->reset();
        }
    });
    EXPECT_TRUE(runLoopUntil([&] { return *firings == 3; }));
    EXPECT_TRUE(runLoopUntil([&] { return firings.use_count() == 1; })) << "an invalid timer lets its block go";
}

TEST(TimerTest, FiresInsideANestedLoop) {
    int firings = 0;
    const auto timer = scheduleRepeatingTimer(0.01, [&] { ++firings; });
    bool wasNested = false;
    mainQueue().async([&] { wasNested = runLoopUntil([&] { return firings >= 3; }); });
    EXPECT_TRUE(runLoopUntil([&] { return wasNested; }));
    timer->invalidate();
}

} // namespace
} // namespace vantorel::gtk::test
