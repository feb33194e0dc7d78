// Vantorel. MIT licence, see LICENSE.
// Always on Top and Hide in Screenshots.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <variant>

#include "tests/unit/fake/shell_fixture.h"

namespace vantorel::fake {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ModesTest : public ShellTest {
protected:
    FakeMenuItem& itemFor(const std::string& action) {
        return *platform_.app.find([&action](const FakeMenuItem& item) { return item.action() == action; });
    }
    bool saved(const std::string& key) { return std::get<bool>(platform_.defaults.values.at(key)); }
    FakeMenu& applicationMenu() {
        return dynamic_cast<FakeMenu&>(*platform_.app.mainMenu()->itemAtIndex(0)->submenu());
    }
};

TEST_F(ModesTest, FreshInstallation) {
    launch();
    EXPECT_EQ(window().level(), WindowLevel::normal);
    EXPECT_EQ(window().sharingType(), WindowSharingType::none);
    EXPECT_EQ(itemFor("toggleHideInScreenshots").state(), ControlState::on);
    EXPECT_EQ(itemFor("toggleAlwaysOnTop").state(), ControlState::off);
    EXPECT_FALSE(platform_.defaults.values.contains("alwaysOnTop"));
    EXPECT_FALSE(platform_.defaults.values.contains("hideInScreenshots"));
}

TEST_F(ModesTest, AlwaysOnTopThereAndBack) {
    launchQuietly();
    shell_->toggleAlwaysOnTop();
    EXPECT_THAT(platform_.recorder.lines(),
                ElementsAre("window1.setLevel(3)", "userDefaults.setBool(true, \"alwaysOnTop\")", "item4.setState(1)"));
    EXPECT_TRUE(shell_->alwaysOnTop());
    EXPECT_TRUE(saved("alwaysOnTop"));
    platform_.recorder.clear();
    shell_->toggleAlwaysOnTop();
    EXPECT_THAT(
        platform_.recorder.lines(),
        ElementsAre("window1.setLevel(0)", "userDefaults.setBool(false, \"alwaysOnTop\")", "item4.setState(0)"));
    EXPECT_FALSE(shell_->alwaysOnTop());
    EXPECT_FALSE(saved("alwaysOnTop"));
}

TEST_F(ModesTest, HideInScreenshotsThereAndBack) {
    launchQuietly();
    shell_->toggleHideInScreenshots();
    EXPECT_THAT(platform_.recorder.lines(),
                ElementsAre("window1.setSharingType(1)", "userDefaults.setBool(false, \"hideInScreenshots\")",
                            "item5.setState(0)"));
    EXPECT_FALSE(shell_->hideInScreenshots());
    platform_.recorder.clear();
    shell_->toggleHideInScreenshots();
    EXPECT_THAT(platform_.recorder.lines(),
                ElementsAre("window1.setSharingType(0)", "userDefaults.setBool(true, \"hideInScreenshots\")",
                            "item5.setState(1)"));
    EXPECT_TRUE(shell_->hideInScreenshots());
}

TEST_F(ModesTest, TheMappingOfTheSharingType) {
    EXPECT_EQ(sharingTypeFor(true), WindowSharingType::none);
    EXPECT_EQ(sharingTypeFor(false), WindowSharingType::readOnly);
}

TEST_F(ModesTest, RelaunchRestoresTheModes) {
    launch();
    shell_->toggleAlwaysOnTop();
    shell_->toggleHideInScreenshots();
    FakePlatform next;
    next.defaults.values = platform_.defaults.values;
    const auto again = std::make_shared<AppDelegate>(next);
    again->applicationDidFinishLaunching();
    EXPECT_EQ(next.windows.at(0)->level(), WindowLevel::floating);
    EXPECT_EQ(next.windows.at(0)->sharingType(), WindowSharingType::readOnly);
    const auto* top = next.app.find([](const FakeMenuItem& item) { return item.action() == "toggleAlwaysOnTop"; });
    EXPECT_EQ(top->state(), ControlState::on);
}

TEST_F(ModesTest, EveryItemWithTheActionIsMarked) {
    launch();
    const auto second = platform_.makeMenuItem("Keep Above", "toggleAlwaysOnTop", "");
    applicationMenu().addItem(second);
    shell_->toggleAlwaysOnTop();
    EXPECT_EQ(itemFor("toggleAlwaysOnTop").state(), ControlState::on);
    EXPECT_EQ(dynamic_cast<FakeMenuItem&>(*second).state(), ControlState::on);
    shell_->toggleAlwaysOnTop();
    EXPECT_EQ(dynamic_cast<FakeMenuItem&>(*second).state(), ControlState::off);
}

TEST_F(ModesTest, OnlyTheFirstMenuIsLookedThrough) {
    launch();
    const auto elsewhere = platform_.makeMenuItem("Keep Above", "toggleAlwaysOnTop", "");
    platform_.app.mainMenu()->itemAtIndex(1)->submenu()->addItem(elsewhere);
    shell_->toggleAlwaysOnTop();
    EXPECT_EQ(dynamic_cast<FakeMenuItem&>(*elsewhere).state(), ControlState::off);
}

TEST_F(ModesTest, WithoutAMainMenuTheRestHappens) {
    launch();
    platform_.app.setMainMenu(nullptr);
    shell_->toggleAlwaysOnTop();
    shell_->toggleHideInScreenshots();
    EXPECT_EQ(window().level(), WindowLevel::floating);
    EXPECT_EQ(window().sharingType(), WindowSharingType::readOnly);
    EXPECT_TRUE(saved("alwaysOnTop"));
    EXPECT_FALSE(saved("hideInScreenshots"));
}

TEST_F(ModesTest, WithAnEmptyMainMenuTheRestHappens) {
    launch();
    platform_.app.setMainMenu(platform_.makeMenu(""));
    shell_->toggleAlwaysOnTop();
    EXPECT_TRUE(saved("alwaysOnTop"));
}

TEST_F(ModesTest, WithoutASubmenuTheRestHappens) {
    launch();
    const auto bare = platform_.makeMenu("");
    bare->addItem(platform_.makeMenuItem("", "toggleAlwaysOnTop", ""));
    platform_.app.setMainMenu(bare);
    shell_->toggleAlwaysOnTop();
    EXPECT_TRUE(saved("alwaysOnTop"));
    EXPECT_EQ(dynamic_cast<FakeMenu&>(*bare).at(0).state(), ControlState::off);
}

TEST_F(ModesTest, TogglesSayNothing) {
    launchQuietly();
    shell_->toggleAlwaysOnTop();
    shell_->toggleHideInScreenshots();
    EXPECT_THAT(log_.lines(), IsEmpty());
    EXPECT_EQ(platform_.loop.pendingMainBlocks(), 0U);
    EXPECT_THAT(page().scripts(), IsEmpty());
}

class ModesDeathTest : public ModesTest {
protected:
    ModesDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(ModesDeathTest, WithoutAWindowTheProcessEnds) {
    construct();
    EXPECT_DEATH(shell_->toggleAlwaysOnTop(), "window");
    EXPECT_DEATH(shell_->toggleHideInScreenshots(), "window");
}

TEST_F(ModesDeathTest, WithoutAnApplicationTheProcessEnds) {
    launch();
    platform_.applicationMissing = true;
    EXPECT_DEATH(shell_->toggleAlwaysOnTop(), "missing");
    EXPECT_DEATH(shell_->toggleHideInScreenshots(), "missing");
}

} // namespace
} // namespace vantorel::fake
