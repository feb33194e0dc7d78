// Vantorel. MIT licence, see LICENSE.
// The real log on a real standard output: whole lines in order, and a reader that lags, stalls or leaves.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "app/log.h"
#include "app/require.h"
#include "tests/unit/fake/forked_child.h"

namespace vantorel::fake {
namespace {

constexpr double kLongEnough = 30;

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

/// A line of `size` bytes that says who wrote it and as which one.
std::string lineOf(int thread, int number, std::size_t size) {
    std::string line = std::to_string(thread) + " " + std::to_string(number) + " ";
    line.resize(size, static_cast<char>('a' + thread));
    return line;
}

TEST(Log, WritesTheTextAndOneLineFeed) {
    using namespace std::string_view_literals;
    ForkedChild child([] {
        logLine("✅ one");
        logLine("");
        logLine("\ntwo\n");
        logLine("nul \0 inside"sv);
        logBulk("bulk");
        flushLog(kLongEnough);
    });
    EXPECT_EQ(child.readOutput(), "✅ one\n\n\ntwo\n\nnul \0 inside\nbulk\n"sv);
    EXPECT_EQ(child.wait(), 0);
}

TEST(Log, ALineIsOutWhenTheReaderIsWaiting) {
    ForkedChild child([] {
        logLine("first");
        // No flush and no orderly end: what was logged must not depend on them.
        ::_exit(7);
    });
    EXPECT_EQ(child.readOutput(), "first\n");
    EXPECT_EQ(child.wait(), 7);
}

TEST(Log, LinesOfManyThreadsNeverInterleave) {
    constexpr int kThreads = 8;
    constexpr int kLines = 400;
    ForkedChild child([] {
        std::vector<std::thread> threads;
        for (int thread = 0; thread < kThreads; ++thread) {
            threads.emplace_back([thread] {
                for (int i = 0; i < kLines; ++i) {
                    // Short ones, and ones that no pipe takes in one piece.
                    const std::string line = lineOf(thread, i, i % 50 == 0 ? 9000 : 60);
                    (thread % 2 == 0 ? logLine : logBulk)(line);
                }
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        flushLog(kLongEnough);
    });
    std::map<int, int> next;
    for (const std::string& line : linesOf(child.readOutput())) {
        std::istringstream words(line);
        int thread = -1;
        int number = -1;
        words >> thread >> number;
        ASSERT_EQ(line, lineOf(thread, number, number % 50 == 0 ? 9000 : 60));
        ASSERT_EQ(number, next[thread]++) << "out of order in thread " << thread;
    }
    EXPECT_EQ(child.wait(), 0);
    ASSERT_EQ(next.size(), static_cast<std::size_t>(kThreads));
    for (const auto& [thread, count] : next)
        EXPECT_EQ(count, kLines) << "thread " << thread;
}

TEST(Log, AStalledReaderNeverHoldsUpALine) {
    constexpr int kLines = 4000;
    ForkedChild child([] {
        // Forty times what a pipe holds.
        for (int i = 0; i < kLines; ++i)
            logLine(lineOf(0, i, 700));
        reportProgress();
        flushLog(kLongEnough);
    });
    ASSERT_TRUE(child.waitForReport(20'000)) << "logLine waits for the reader";
    const auto lines = linesOf(child.readOutput());
    EXPECT_EQ(child.wait(), 0);
    ASSERT_EQ(lines.size(), static_cast<std::size_t>(kLines));
    for (int i = 0; i < kLines; ++i)
        ASSERT_EQ(lines[static_cast<std::size_t>(i)], lineOf(0, i, 700));
}

TEST(Log, BulkWaitsForAReaderThatLagsFarBehind) {
    constexpr int kLines = 400;
    ForkedChild child([] {
        for (int i = 0; i < kLines; ++i)
            logBulk(lineOf(1, i, 60'000));
        reportProgress();
        flushLog(kLongEnough);
    });
    EXPECT_FALSE(child.waitForReport(300)) << "24 MB were taken without a reader";
    const auto lines = linesOf(child.readOutput());
    EXPECT_TRUE(child.waitForReport(20'000));
    EXPECT_EQ(child.wait(), 0);
    ASSERT_EQ(lines.size(), static_cast<std::size_t>(kLines));
    for (int i = 0; i < kLines; ++i)
        ASSERT_EQ(lines[static_cast<std::size_t>(i)], lineOf(1, i, 60'000));
}

TEST(Log, ALineDoesNotWaitBehindBulkThatDoes) {
    ForkedChild child([] {
        std::thread bulk([] {
            for (int i = 0; i < 400; ++i)
                logBulk(lineOf(1, i, 60'000));
        });
        for (int i = 0; i < 1000; ++i)
            logLine("short");
        reportProgress();
        bulk.join();
        flushLog(kLongEnough);
    });
    ASSERT_TRUE(child.waitForReport(20'000));
    std::size_t shorts = 0;
    for (const std::string& line : linesOf(child.readOutput()))
        shorts += line == "short" ? 1 : 0;
    EXPECT_EQ(shorts, 1000U);
    EXPECT_EQ(child.wait(), 0);
}

TEST(Log, OrderOfLinesAndBulkIsTheOrderOfTheCalls) {
    ForkedChild child([] {
        for (int i = 0; i < 500; ++i)
            (i % 2 == 0 ? logLine : logBulk)(lineOf(0, i, 900));
        reportProgress();
        flushLog(kLongEnough);
    });
    ASSERT_TRUE(child.waitForReport(20'000));
    const auto lines = linesOf(child.readOutput());
    ASSERT_EQ(lines.size(), 500U);
    for (int i = 0; i < 500; ++i)
        ASSERT_EQ(lines[static_cast<std::size_t>(i)], lineOf(0, i, 900));
}

TEST(Log, AReaderThatLeftCostsTheLinesOnly) {
    ForkedChild child([] {
        // The test closes the other end before it sends this copy on.
        for (int i = 0; i < 20'000; ++i)
            logLine("into the void");
        for (int i = 0; i < 200; ++i)
            logBulk(lineOf(0, i, 60'000));
        flushLog(kLongEnough);
        reportProgress();
    });
    child.closeOutput();
    EXPECT_TRUE(child.waitForReport(20'000));
    EXPECT_EQ(child.wait(), 0);
}

TEST(Log, AReaderThatLeavesAStalledPipeFreesTheWriter) {
    ForkedChild child([] {
        for (int i = 0; i < 2000; ++i)
            logLine(lineOf(0, i, 700));
        reportProgress();
        flushLog(kLongEnough);
        reportProgress();
    });
    ASSERT_TRUE(child.waitForReport(20'000));
    child.closeOutput();
    EXPECT_TRUE(child.waitForReport(20'000));
    EXPECT_EQ(child.wait(), 0);
}

/// A copy whose standard output is replaced by `path` before it logs.
int exitCodeWithOutputOn(const char* path, int flags) {
    ForkedChild child([path, flags] {
        const int other = ::open(path, flags, 0600);
        if (other < 0 || ::dup2(other, STDOUT_FILENO) < 0)
            ::_exit(98);
        for (int i = 0; i < 1000; ++i)
            logLine("somewhere");
        logBulk(std::string(200'000, 'x'));
        flushLog(kLongEnough);
    });
    return child.wait();
}

TEST(Log, AFullDiskCostsTheLinesOnly) { EXPECT_EQ(exitCodeWithOutputOn("/dev/full", O_WRONLY), 0); }

TEST(Log, AnOutputThatCannotBeWrittenCostsTheLinesOnly) { EXPECT_EQ(exitCodeWithOutputOn("/dev/null", O_RDONLY), 0); }

TEST(Log, AClosedOutputCostsTheLinesOnly) {
    ForkedChild child([] {
        ::close(STDOUT_FILENO);
        for (int i = 0; i < 1000; ++i)
            logLine("nowhere");
        flushLog(kLongEnough);
    });
    EXPECT_EQ(child.wait(), 0);
}

TEST(Log, AnOutputThatNeverBlocksLosesNothing) {
    constexpr int kLines = 3000;
    ForkedChild child([] {
        ::fcntl(STDOUT_FILENO, F_SETFL, ::fcntl(STDOUT_FILENO, F_GETFL) | O_NONBLOCK);
        for (int i = 0; i < kLines; ++i)
            logLine(lineOf(0, i, 700));
        reportProgress();
        flushLog(kLongEnough);
    });
    ASSERT_TRUE(child.waitForReport(20'000));
    const auto lines = linesOf(child.readOutput());
    ASSERT_EQ(lines.size(), static_cast<std::size_t>(kLines));
    for (int i = 0; i < kLines; ++i)
        ASSERT_EQ(lines[static_cast<std::size_t>(i)], lineOf(0, i, 700));
}

TEST(Log, FlushGivesUpAfterItsTime) {
    ForkedChild child([] {
        for (int i = 0; i < 1000; ++i)
            logLine(lineOf(0, i, 700));
        flushLog(0.05);
        reportProgress();
        flushLog(kLongEnough);
    });
    ASSERT_TRUE(child.waitForReport(20'000));
    EXPECT_EQ(linesOf(child.readOutput()).size(), 1000U);
    EXPECT_EQ(child.wait(), 0);
}

TEST(Log, FlushOfNothingReturnsAtOnce) {
    ForkedChild child([] { flushLog(3600); });
    EXPECT_EQ(child.wait(), 0);
}

TEST(Log, SinkGetsTheLinesOnTheCallingThreadAndMayLogItself) {
    std::vector<std::string> seen;
    std::vector<std::thread::id> threads;
    setLogSink([&](std::string_view line) {
        seen.emplace_back(line);
        threads.push_back(std::this_thread::get_id());
        if (line == "outer")
            logLine("inner");
    });
    logLine("outer");
    std::thread::id other;
    std::thread([&other] {
        other = std::this_thread::get_id();
        logBulk("elsewhere\n");
    }).join();
    setLogSink({});
    EXPECT_EQ(seen, (std::vector<std::string>{"outer", "inner", "elsewhere\n"}));
    EXPECT_EQ(threads, (std::vector<std::thread::id>{std::this_thread::get_id(), std::this_thread::get_id(), other}));
}

TEST(Log, StandardOutputIsBackAfterASink) {
    ForkedChild child([] {
        setLogSink([](std::string_view) {});
        logLine("hidden");
        setLogSink({});
        logLine("shown");
        flushLog(kLongEnough);
    });
    EXPECT_EQ(child.readOutput(), "shown\n");
}

TEST(Require, AMissingObjectIsNamedAndTheLogWrittenFirst) {
    ForkedChild child([] {
        for (int i = 0; i < 200; ++i)
            logLine(lineOf(0, i, 700));
        const std::shared_ptr<int> nothing;
        require(nothing, "the thing");
    });
    EXPECT_EQ(linesOf(child.readOutput()).size(), 200U);
    const std::string report = child.readReport();
    EXPECT_NE(report.find("the thing"), std::string::npos) << report;
    EXPECT_EQ(child.wait(), -SIGABRT);
}

TEST(Require, AnObjectThatIsThereIsGivenBack) {
    const auto number = std::make_shared<int>(7);
    EXPECT_EQ(&require(number, "number"), number.get());
    EXPECT_EQ(&require(number.get(), "number"), number.get());
}

} // namespace
} // namespace vantorel::fake
