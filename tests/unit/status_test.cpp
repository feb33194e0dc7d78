// Vantorel. MIT licence, see LICENSE.
// The status strip, updateStatus and showError.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "tests/unit/fake/shell_fixture.h"

namespace vantorel::fake {
namespace {

using ::testing::ElementsAre;

class StatusTest : public ShellTest {
protected:
    /// A controller with a window and a strip, and nothing else.
    void buildStrip() {
        construct();
        shell_->setWindow(platform_.makeWindow({{0, 0}, {900, 750}}, 15));
        shell_->createStatusBar();
        platform_.recorder.clear();
    }
    FakeView& strip() { return *platform_.views.at(0); }
};

TEST_F(StatusTest, StripAndLabelAsBuilt) {
    buildStrip();
    EXPECT_EQ(strip().frame(), (Rect{{0, 720}, {900, 30}}));
    EXPECT_EQ(strip().autoresizingMask(), 10U);
    EXPECT_TRUE(strip().hasLayer());
    EXPECT_EQ(strip().layerColor(), Color(CalibratedRgb{0.95, 0.95, 0.95, 1.0}));
    EXPECT_EQ(label().frame(), (Rect{{10, 5}, {880, 20}}));
    EXPECT_EQ(label().autoresizingMask(), 2U);
    EXPECT_FALSE(label().editable());
    EXPECT_FALSE(label().bordered());
    EXPECT_EQ(label().backgroundColor(), Color(SystemColor::clear));
    EXPECT_EQ(label().fontPoints(), 11);
    EXPECT_EQ(label().stringValue(), "🔄 Starting server...");
    EXPECT_EQ(label().textColor(), std::nullopt);
    EXPECT_THAT(strip().subviews(), ElementsAre(shell_->statusLabel()));
    EXPECT_THAT(window().content().subviews(), ElementsAre(shell_->statusBar()));
}

TEST_F(StatusTest, RightAfterLaunchTheLabelStillShowsTheFirstText) {
    launch();
    EXPECT_EQ(label().stringValue(), "🔄 Starting server...");
    EXPECT_EQ(label().textColor(), std::nullopt);
}

TEST_F(StatusTest, StripFollowsTheWindow) {
    launch();
    for (const Size size : {Size{1200, 1000}, Size{500, 400}, Size{901, 333.5}}) {
        window().resizeContent(size);
        EXPECT_EQ(strip().frame(), (Rect{{0, size.height - 30}, {size.width, 30}}));
        EXPECT_EQ(label().frame(), (Rect{{10, 5}, {size.width - 20, 20}}));
        EXPECT_EQ(page().frame(), (Rect{{0, 0}, {size.width, size.height - 30}}));
    }
}

TEST_F(StatusTest, StripGoesByTheContentAsItIs) {
    construct();
    shell_->setWindow(platform_.makeWindow({{50, 60}, {333, 222}}, 15));
    shell_->createStatusBar();
    EXPECT_EQ(strip().frame(), (Rect{{0, 192}, {333, 30}}));
    EXPECT_EQ(label().frame(), (Rect{{10, 5}, {313, 20}}));
}

TEST_F(StatusTest, ViewWithoutALayerGetsNoBackground) {
    platform_.onMakeView = [](FakeView& view) { view.setCanHaveLayer(false); };
    buildStrip();
    EXPECT_FALSE(strip().layerColor().has_value());
    EXPECT_THAT(window().content().subviews(), ElementsAre(shell_->statusBar()));
}

TEST_F(StatusTest, UpdateTakesEffectLaterAndInTwoSteps) {
    buildStrip();
    shell_->updateStatus("one", SystemColor::red);
    EXPECT_THAT(platform_.recorder.lines(), ElementsAre("mainQueue.async()"));
    platform_.runMainQueue();
    EXPECT_THAT(platform_.recorder.lines(),
                ElementsAre("mainQueue.async()", "textField1.setStringValue(\"one\")", "textField1.setTextColor(red)"));
}

TEST_F(StatusTest, LastCallWins) {
    buildStrip();
    shell_->updateStatus("one", SystemColor::red);
    shell_->updateStatus("two", SystemColor::orange);
    expectStatus("two", SystemColor::orange);
    EXPECT_THAT(platform_.recorder.lines(),
                ElementsAre("mainQueue.async()", "mainQueue.async()", "textField1.setStringValue(\"one\")",
                            "textField1.setTextColor(red)", "textField1.setStringValue(\"two\")",
                            "textField1.setTextColor(orange)"));
}

TEST_F(StatusTest, UpdatesMayComeFromAnyThread) {
    buildStrip();
    onBackgroundThread([this] {
        shell_->updateStatus("one", SystemColor::red);
        shell_->updateStatus("two", SystemColor::systemGreen);
    });
    EXPECT_EQ(label().stringValue(), "🔄 Starting server...");
    expectStatus("two", SystemColor::systemGreen);
}

TEST_F(StatusTest, FixedColoursAreTakenToo) {
    buildStrip();
    const Color grey = CalibratedRgb{0.5, 0.5, 0.5, 0.25};
    shell_->updateStatus("", grey);
    platform_.runMainQueue();
    EXPECT_EQ(label().stringValue(), "");
    EXPECT_EQ(label().textColor(), grey);
}

TEST_F(StatusTest, UpdateDoesNothingWhenTheControllerIsGone) {
    buildStrip();
    shell_->updateStatus("late", SystemColor::red);
    releaseShell();
    platform_.runMainQueue();
    EXPECT_EQ(label().stringValue(), "🔄 Starting server...");
    EXPECT_EQ(label().textColor(), std::nullopt);
}

TEST_F(StatusTest, ErrorIsACriticalAlertWithOneButton) {
    construct();
    platform_.recorder.clear();
    shell_->showError("Title", "Message");
    EXPECT_THAT(platform_.recorder.lines(), ElementsAre("mainQueue.async()"));
    platform_.runMainQueue();
    EXPECT_THAT(platform_.recorder.lines(),
                ElementsAre("mainQueue.async()", "makeAlert() -> alert1", "alert1.setMessageText(\"Title\")",
                            "alert1.setInformativeText(\"Message\")", "alert1.setAlertStyle(2)",
                            "alert1.addButtonWithTitle(\"OK\")", "alert1.runModal()", "alert1 answered 1000"));
}

TEST_F(StatusTest, ErrorMayComeFromAnyThread) {
    construct();
    onBackgroundThread([this] { shell_->showError("Title", "Message"); });
    EXPECT_EQ(platform_.alerts.size(), 0U);
    platform_.runMainQueue();
    EXPECT_THAT(alert().buttons(), ElementsAre("OK"));
    EXPECT_EQ(alert().style(), AlertStyle::critical);
    EXPECT_EQ(alert().runCount(), 1);
}

TEST_F(StatusTest, ErrorIsShownEvenWhenTheControllerIsGone) {
    construct();
    shell_->showError("Title", "Message");
    releaseShell();
    platform_.runMainQueue();
    EXPECT_EQ(alert().messageText(), "Title");
    EXPECT_EQ(alert().runCount(), 1);
}

TEST_F(StatusTest, EachErrorHasItsOwnAlert) {
    construct();
    shell_->showError("One", "1");
    shell_->showError("Two", "2");
    platform_.runMainQueue();
    ASSERT_EQ(platform_.alerts.size(), 2U);
    EXPECT_EQ(alert(0).messageText(), "One");
    EXPECT_EQ(alert(1).messageText(), "Two");
}

TEST_F(StatusTest, StatusGoesOnWhileAnErrorIsUp) {
    buildStrip();
    platform_.user.willAnswer([this](FakeAlert&) {
        shell_->updateStatus("meanwhile", SystemColor::orange);
        shell_->showError("Second", "2");
        platform_.runMainQueue();
        EXPECT_EQ(label().stringValue(), "meanwhile");
        EXPECT_EQ(platform_.alerts.size(), 2U);
        return kAlertFirstButtonReturn;
    });
    shell_->showError("First", "1");
    platform_.runMainQueue();
    EXPECT_EQ(platform_.recorder.count("alert1 answered 1000"), 1U);
    EXPECT_EQ(platform_.recorder.count("alert2 answered 1000"), 1U);
}

TEST_F(StatusTest, ContentViewThatIsGoneAtTheInsertionIsTolerated) {
    construct();
    platform_.onMakeWindow = [](FakeWindow& made) {
        made.hasContentView = [reads = 0]() mutable { return reads++ < 1; };
    };
    shell_->setWindow(platform_.makeWindow({{0, 0}, {900, 750}}, 15));
    shell_->createStatusBar();
    ASSERT_NE(shell_->statusBar(), nullptr);
    EXPECT_EQ(strip().subviews().size(), 1U);
    EXPECT_TRUE(window().content().subviews().empty());
}

class StatusDeathTest : public StatusTest {
protected:
    StatusDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(StatusDeathTest, StripWithoutAWindowEndsTheProcess) {
    construct();
    EXPECT_DEATH(shell_->createStatusBar(), "window");
}

TEST_F(StatusDeathTest, UpdateWithoutALabelEndsTheProcess) {
    construct();
    shell_->updateStatus("text", SystemColor::red);
    EXPECT_DEATH(platform_.runMainQueue(), "missing: status");
}

TEST_F(StatusDeathTest, RestoringAFloatingWindowThatIsAbsentEndsTheProcess) {
    platform_.defaults.values["alwaysOnTop"] = true;
    construct();
    EXPECT_DEATH(shell_->restorePreferences(), "window");
}

} // namespace
} // namespace vantorel::fake
