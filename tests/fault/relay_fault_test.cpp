// Vantorel. MIT licence, see LICENSE.
// A server that prints for minutes without ever ending a line.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "tests/unit/fake/shell_fixture.h"

namespace vantorel::fault {
namespace {

using ::testing::IsEmpty;

class UnendedLine : public fake::ShellTest {};

TEST_F(UnendedLine, IsRelayedPieceByPieceForMinutesAndNothingElseSuffers) {
    constexpr int kMinutes = 10;
    constexpr int kPiecesInSecond = 20;
    const std::string piece(500, 'x');
    launchQuietly();
    for (int second = 0; second < kMinutes * 60; ++second) {
        for (int number = 0; number < kPiecesInSecond; ++number) {
            child().writeOutput(piece);
        }
        // Each piece is on the log at once: none waits for a line's end, so none can pile up.
        const std::vector<std::string> lines = log_.take();
        std::size_t relayed = 0;
        for (const std::string& line : lines) {
            if (line == "🤖 Server: " + piece)
                ++relayed;
        }
        ASSERT_EQ(relayed, static_cast<std::size_t>(kPiecesInSecond)) << "in second " << second;
        platform_.advance(1);
        platform_.runMainQueue();
    }
    EXPECT_EQ(page().loads().size(), 1U);
    EXPECT_EQ(platform_.http.taskCount(), static_cast<std::size_t>(kMinutes * 30));
    EXPECT_EQ(platform_.loop.pendingMainBlocks(), 0U);
    EXPECT_EQ(platform_.loop.activeTimers(), 1U);
    EXPECT_THAT(platform_.alerts, IsEmpty());
    EXPECT_TRUE(child().isRunning());
}

TEST_F(UnendedLine, ThatEndsAtLastIsTrimmedOnlyThere) {
    launchQuietly();
    child().writeOutput("begun ");
    child().writeOutput(" goes on ");
    child().writeOutput(" ended\n");
    EXPECT_THAT(log_.take(),
                ::testing::ElementsAre("🤖 Server: begun", "🤖 Server: goes on", "🤖 Server: ended"));
}

} // namespace
} // namespace vantorel::fault
