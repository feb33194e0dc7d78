// Vantorel. MIT licence, see LICENSE.
// Page zoom and reload: plain 64-bit arithmetic, a floor and no ceiling.
#include <gtest/gtest.h>

#include "tests/unit/fake/shell_fixture.h"

namespace vantorel::fake {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ZoomTest : public ShellTest {
protected:
    void SetUp() override { launchQuietly(); }
    double afterZoomIn() {
        shell_->zoomIn();
        return page().pageZoom();
    }
    double afterZoomOut() {
        shell_->zoomOut();
        return page().pageZoom();
    }
};

// Exact comparisons: the values are the sums and differences of doubles, not tenths.

TEST_F(ZoomTest, OutOfActualSizeDownToTheFloor) {
    EXPECT_EQ(afterZoomOut(), 0.9);
    EXPECT_EQ(afterZoomOut(), 0.8);
    EXPECT_EQ(afterZoomOut(), 0.7000000000000001);
    EXPECT_EQ(afterZoomOut(), 0.6000000000000001);
    EXPECT_EQ(afterZoomOut(), 0.5000000000000001);
    EXPECT_EQ(afterZoomOut(), 0.5);
    EXPECT_EQ(afterZoomOut(), 0.5);
}

TEST_F(ZoomTest, InHasNoCeiling) {
    EXPECT_EQ(afterZoomIn(), 1.1);
    EXPECT_EQ(afterZoomIn(), 1.2000000000000002);
    EXPECT_EQ(afterZoomIn(), 1.3000000000000003);
    double expected = page().pageZoom();
    for (int i = 0; i < 200; ++i) {
        expected += 0.1;
        ASSERT_EQ(afterZoomIn(), expected);
    }
    EXPECT_GT(page().pageZoom(), 21);
}

TEST_F(ZoomTest, ActualSizeIsExactlyOne) {
    shell_->zoomIn();
    shell_->zoomIn();
    shell_->zoomOut();
    shell_->resetZoom();
    EXPECT_EQ(page().pageZoom(), 1.0);
}

TEST_F(ZoomTest, StepsStartFromWhatTheViewHolds) {
    page().setPageZoom(2.25);
    EXPECT_EQ(afterZoomIn(), 2.25 + 0.1);
    page().setPageZoom(0.3);
    EXPECT_EQ(afterZoomIn(), 0.3 + 0.1);
    page().setPageZoom(0.3);
    EXPECT_EQ(afterZoomOut(), 0.5);
}

TEST_F(ZoomTest, EachActionIsOneCall) {
    shell_->zoomIn();
    shell_->zoomOut();
    shell_->resetZoom();
    shell_->reload();
    EXPECT_THAT(platform_.recorder.lines(), ElementsAre("webView1.setPageZoom(1.1)", "webView1.setPageZoom(1)",
                                                        "webView1.setPageZoom(1)", "webView1.reload()"));
    EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(ZoomTest, ReloadLeavesTheZoom) {
    shell_->zoomIn();
    shell_->reload();
    EXPECT_EQ(page().pageZoom(), 1.1);
    EXPECT_EQ(page().reloads(), 1);
}

class ZoomDeathTest : public ShellTest {
protected:
    ZoomDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(ZoomDeathTest, WithoutAWebViewTheProcessEnds) {
    construct();
    EXPECT_DEATH(shell_->reload(), "webView");
    EXPECT_DEATH(shell_->resetZoom(), "webView");
    EXPECT_DEATH(shell_->zoomIn(), "webView");
    EXPECT_DEATH(shell_->zoomOut(), "webView");
}

} // namespace
} // namespace vantorel::fake
