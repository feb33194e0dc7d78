// Vantorel. MIT licence, see LICENSE.
// One outcome for each load, whatever the order in which the engine tells about it.
#include <gtest/gtest.h>

#include <string>

#include "platform/linux/load_tracker.h"

namespace vantorel::gtk::test {
namespace {

using Kind = LoadOutcome::Kind;

const std::string kPage = "http://localhost:8080/";
const PlatformError kError{"broken", "broken"};

std::string describe(const LoadTracker::Ended& ended) {
    if (!ended) {
        return "nothing";
    }
    const std::string text = ended->error ? " " + ended->error->localizedDescription : "";
    switch (ended->kind) {
    case Kind::finished:
        return "finished" + text;
    case Kind::failed:
        return "failed" + text;
    case Kind::failedProvisionally:
        return "failed provisionally" + text;
    }
    return "";
}

class LoadTrackerTest : public testing::Test {
protected:
    /// The engine starts the load that was asked for.
    void start() {
        EXPECT_EQ(describe(tracker_.requested(kPage)), "nothing");
        EXPECT_EQ(describe(tracker_.started(kPage)), "nothing");
    }

    LoadTracker tracker_;
};

TEST_F(LoadTrackerTest, ALoadFinishes) {
    start();
    EXPECT_TRUE(tracker_.waitsForAnswer());
    tracker_.answered();
    EXPECT_FALSE(tracker_.waitsForAnswer());
    tracker_.committed(kPage);
    EXPECT_EQ(describe(tracker_.finished()), "finished");
    EXPECT_EQ(describe(tracker_.finished()), "nothing");
    EXPECT_EQ(describe(tracker_.failed(LoadFailure::broken, kError)), "nothing");
}

TEST_F(LoadTrackerTest, AFailureBeforeTheAnswerIsProvisional) {
    start();
    EXPECT_EQ(describe(tracker_.failed(LoadFailure::broken, kError)), "failed provisionally broken");
    EXPECT_EQ(describe(tracker_.finished()), "nothing");
}

TEST_F(LoadTrackerTest, AFailureAfterTheHeadOrTheFirstBytesIsNone) {
    start();
    tracker_.answered();
    EXPECT_EQ(describe(tracker_.failed(LoadFailure::broken, kError)), "failed broken");
    start();
    tracker_.committed(kPage);
    EXPECT_EQ(describe(tracker_.failed(LoadFailure::broken, kError)), "failed broken");
}

TEST_F(LoadTrackerTest, AnAnswerWithNothingToShowFailsProvisionally) {
    start();
    tracker_.answered();
    EXPECT_EQ(describe(tracker_.failed(LoadFailure::interrupted, kError)), "failed provisionally broken");
}

TEST_F(LoadTrackerTest, AnEmptyPageInPlaceOfAnAddressIsNoSuccess) {
    start();
    tracker_.committed("about:blank");
    EXPECT_TRUE(describe(tracker_.finished()).starts_with("failed provisionally"));
    EXPECT_EQ(describe(tracker_.started("about:blank")), "nothing");
    tracker_.committed("about:blank");
    EXPECT_EQ(describe(tracker_.finished()), "finished");
}

TEST_F(LoadTrackerTest, ANewLoadEndsTheOneBefore) {
    start();
    EXPECT_TRUE(describe(tracker_.requested(kPage)).starts_with("failed provisionally"));
    // The engine tells about the old one now.
    EXPECT_EQ(describe(tracker_.failed(LoadFailure::cancelled, kError)), "nothing");
    EXPECT_EQ(describe(tracker_.finished()), "nothing");
    EXPECT_EQ(describe(tracker_.started(kPage)), "nothing");
    tracker_.committed(kPage);
    EXPECT_EQ(describe(tracker_.finished()), "finished");
}

TEST_F(LoadTrackerTest, ANewLoadEndsTheOneBeforeThatHadBegunToArrive) {
    start();
    tracker_.committed(kPage);
    EXPECT_TRUE(describe(tracker_.requested(kPage)).starts_with("failed T"));
    // The engine has not heard of the new one yet.
    EXPECT_EQ(describe(tracker_.finished()), "nothing");
    EXPECT_EQ(describe(tracker_.started(kPage)), "nothing");
    tracker_.committed(kPage);
    EXPECT_EQ(describe(tracker_.finished()), "finished");
}

TEST_F(LoadTrackerTest, TheOldLoadMayStartAfterTheNewOneWasAskedFor) {
    EXPECT_EQ(describe(tracker_.requested(kPage)), "nothing");
    EXPECT_TRUE(describe(tracker_.requested(kPage)).starts_with("failed provisionally"));
    EXPECT_EQ(describe(tracker_.started(kPage)), "nothing");
    EXPECT_EQ(describe(tracker_.failed(LoadFailure::cancelled, kError)), "nothing");
    EXPECT_EQ(describe(tracker_.started(kPage)), "nothing");
    tracker_.committed(kPage);
    EXPECT_EQ(describe(tracker_.finished()), "finished");
}

TEST_F(LoadTrackerTest, OfManyLoadsInARowEachEndsOnce) {
    EXPECT_EQ(describe(tracker_.requested(kPage)), "nothing");
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(describe(tracker_.requested(kPage)).starts_with("failed provisionally"));
    }
    EXPECT_EQ(describe(tracker_.started(kPage)), "nothing");
    tracker_.committed(kPage);
    EXPECT_EQ(describe(tracker_.finished()), "finished");
}

TEST_F(LoadTrackerTest, APageThatGoesElsewhereWhileItLoads) {
    start();
    EXPECT_TRUE(describe(tracker_.started("http://localhost:8080/other")).starts_with("failed provisionally"));
    tracker_.committed("http://localhost:8080/other");
    EXPECT_EQ(describe(tracker_.finished()), "finished");
}

TEST_F(LoadTrackerTest, AnAbortedLoadEndsOnce) {
    start();
    EXPECT_EQ(describe(tracker_.aborted(kError)), "failed provisionally broken");
    EXPECT_EQ(describe(tracker_.failed(LoadFailure::cancelled, kError)), "nothing");
    EXPECT_EQ(describe(tracker_.finished()), "nothing");
    EXPECT_EQ(describe(tracker_.aborted(kError)), "nothing");
}

} // namespace
} // namespace vantorel::gtk::test
