// Vantorel. MIT licence, see LICENSE.
// The four preferences: absence, the store's conversions, saving and restoring the window's frame.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "app/port.h"
#include "tests/unit/fake/shell_fixture.h"

namespace vantorel::fake {
namespace {

class PreferencesTest : public ShellTest {
protected:
    std::string savedFrame() { return std::get<std::string>(platform_.defaults.values.at("windowFrame")); }
    Size launchedWith(const FakeUserDefaults::Value& frame) {
        platform_.defaults.values["windowFrame"] = frame;
        launch();
        return window().content().bounds().size;
    }
};

TEST_F(PreferencesTest, EmptyStoreHidesInScreenshotsAndDoesNotFloat) {
    launch();
    EXPECT_TRUE(shell_->hideInScreenshots());
    EXPECT_FALSE(shell_->alwaysOnTop());
    EXPECT_EQ(window().level(), WindowLevel::normal);
    EXPECT_EQ(platform_.recorder.countStartingWith("window1.setLevel("), 0U);
}

TEST_F(PreferencesTest, StoredModesAreRestored) {
    platform_.defaults.values["hideInScreenshots"] = false;
    platform_.defaults.values["alwaysOnTop"] = true;
    launch();
    EXPECT_FALSE(shell_->hideInScreenshots());
    EXPECT_TRUE(shell_->alwaysOnTop());
    EXPECT_EQ(window().level(), WindowLevel::floating);
}

TEST_F(PreferencesTest, TheOtherStoredModesAreRestored) {
    platform_.defaults.values["hideInScreenshots"] = true;
    platform_.defaults.values["alwaysOnTop"] = false;
    launch();
    EXPECT_TRUE(shell_->hideInScreenshots());
    EXPECT_FALSE(shell_->alwaysOnTop());
    EXPECT_EQ(platform_.recorder.countStartingWith("window1.setLevel("), 0U);
}

TEST_F(PreferencesTest, RestoringAsksForPresenceAndThenForTheValue) {
    platform_.defaults.values["hideInScreenshots"] = false;
    platform_.defaults.values["alwaysOnTop"] = true;
    construct();
    shell_->setWindow(platform_.makeWindow({{0, 0}, {500, 500}}, 15));
    platform_.recorder.clear();
    shell_->restorePreferences();
    EXPECT_THAT(platform_.recorder.lines(),
                ::testing::ElementsAre("userDefaults.hasObject(\"hideInScreenshots\")",
                                       "userDefaults.boolForKey(\"hideInScreenshots\")",
                                       "userDefaults.hasObject(\"alwaysOnTop\")",
                                       "userDefaults.boolForKey(\"alwaysOnTop\")", "window1.setLevel(3)"));
}

TEST_F(PreferencesTest, RestoringOverwritesWhatTheFieldsHeld) {
    construct();
    shell_->setWindow(platform_.makeWindow({{0, 0}, {500, 500}}, 15));
    shell_->setHideInScreenshots(false);
    shell_->setAlwaysOnTop(true);
    shell_->restorePreferences();
    EXPECT_TRUE(shell_->hideInScreenshots());
    EXPECT_FALSE(shell_->alwaysOnTop());
}

TEST_F(PreferencesTest, OtherStoredTypesAreReadByTheStoresOwnConversions) {
    platform_.defaults.values["hideInScreenshots"] = std::int64_t{0};
    platform_.defaults.values["alwaysOnTop"] = std::string("YES");
    launch();
    EXPECT_FALSE(shell_->hideInScreenshots());
    EXPECT_TRUE(shell_->alwaysOnTop());
}

TEST_F(PreferencesTest, TextWithoutATruthReadsAsFalse) {
    platform_.defaults.values["hideInScreenshots"] = std::string("perhaps");
    platform_.defaults.values["alwaysOnTop"] = 2.5;
    launch();
    EXPECT_FALSE(shell_->hideInScreenshots());
    EXPECT_TRUE(shell_->alwaysOnTop());
}

TEST_F(PreferencesTest, NoStoredFrameGivesTheDefaultContent) {
    launch();
    EXPECT_EQ(platform_.recorder.count("makeWindow({{100, 100}, {900, 750}}, 15) -> window1"), 1U);
}

TEST_F(PreferencesTest, StoredFrameBecomesTheContentRectangle) {
    EXPECT_EQ(launchedWith(std::string("{{12, 34}, {640, 480.5}}")), (Size{640, 480.5}));
    EXPECT_EQ(platform_.recorder.count("makeWindow({{12, 34}, {640, 480.5}}, 15) -> window1"), 1U);
}

TEST_F(PreferencesTest, StoredOriginNeverSurvives) {
    platform_.defaults.values["windowFrame"] = std::string("{{90000, -70000}, {640, 472}}");
    launch();
    EXPECT_EQ(window().frame(), (Rect{{400, 200}, {640, 500}}));
}

TEST_F(PreferencesTest, UnreadableFrameGivesTheZeroRectangle) {
    EXPECT_EQ(launchedWith(std::string("none of it")), (Size{0, 0}));
    EXPECT_EQ(platform_.recorder.count("makeWindow({{0, 0}, {0, 0}}, 15) -> window1"), 1U);
}

TEST_F(PreferencesTest, EmptyFrameTextIsAStoredFrame) { EXPECT_EQ(launchedWith(std::string()), (Size{0, 0})); }

TEST_F(PreferencesTest, MissingNumbersCountAsZero) {
    EXPECT_EQ(launchedWith(std::string("{{1, 2}, {300")), (Size{300, 0}));
}

TEST_F(PreferencesTest, FrameStoredAsANumberIsReadAsText) {
    EXPECT_EQ(launchedWith(std::int64_t{7}), (Size{0, 0}));
    EXPECT_EQ(platform_.recorder.count("makeWindow({{7, 0}, {0, 0}}, 15) -> window1"), 1U);
}

TEST_F(PreferencesTest, WindowGrowsByItsTitleBarOnEachRelaunch) {
    launch();
    platform_.app.terminate();
    EXPECT_EQ(savedFrame(), "{{270, 61}, {900, 778}}");

    FakePlatform next;
    next.defaults.values = platform_.defaults.values;
    const auto again = std::make_shared<AppDelegate>(next);
    again->applicationDidFinishLaunching();
    EXPECT_EQ(next.windows.at(0)->content().bounds().size, (Size{900, 778}));
    EXPECT_EQ(next.windows.at(0)->frame().size, (Size{900, 806}));
}

TEST_F(PreferencesTest, MinimumSizeBoundsTheOuterFrame) {
    launch();
    EXPECT_EQ(window().minSize(), (Size{400, 350}));
    window().resizeContent({100, 100});
    EXPECT_EQ(window().frame().size, (Size{400, 350}));
}

TEST(PortText, TakesTheWholeTextAsADecimalInteger) {
    EXPECT_EQ(portFromText("8080"), 8080);
    EXPECT_EQ(portFromText("0"), 0);
    EXPECT_EQ(portFromText("-0"), 0);
    EXPECT_EQ(portFromText("+0"), 0);
    EXPECT_EQ(portFromText("007"), 7);
    EXPECT_EQ(portFromText("+00000000000000000000000000000001"), 1);
    EXPECT_EQ(portFromText("-9223372036854775808"), INT64_MIN);
    EXPECT_EQ(portFromText("9223372036854775807"), INT64_MAX);
}

TEST(PortText, RefusesEverythingElse) {
    for (const std::string_view text : {"",
                                        "+",
                                        "-",
                                        "+-1",
                                        "-+1",
                                        "++1",
                                        "80a",
                                        "a80",
                                        " 80",
                                        "80 ",
                                        "8 0",
                                        "\t80",
                                        "80\n",
                                        "8,080",
                                        "80.0",
                                        "0x10",
                                        "1e3",
                                        "9223372036854775808",
                                        "-9223372036854775809",
                                        "99999999999999999999999",
                                        "１"}) {
        EXPECT_EQ(portFromText(text), std::nullopt) << text;
    }
    EXPECT_EQ(portFromText(std::string_view("80\0", 3)), std::nullopt);
}

} // namespace
} // namespace vantorel::fake
