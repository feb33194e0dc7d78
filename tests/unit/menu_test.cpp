// Vantorel. MIT licence, see LICENSE.
// The menu bar, its actions, and the About panel.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "tests/unit/fake/shell_fixture.h"
#include "ui/about_text.h"

namespace vantorel::fake {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kAboutLines = "Unified macOS Application with Go Server\n"
                                    "\n"
                                    "Version 2.0\n"
                                    "\n"
                                    "Features:\n"
                                    "• Integrated Go backend server\n"
                                    "• Always-on-Top mode (Cmd+T)\n"
                                    "• Hide in Screenshots (Cmd+H)\n"
                                    "• Zoom controls (Cmd+0, Cmd++, Cmd+-)\n"
                                    "• Auto-save window position and size\n"
                                    "• Real-time connection status\n"
                                    "\n"
                                    "Server Port: ";

TEST(AboutText, EndsWithThePort) {
    EXPECT_EQ(aboutText(8080), std::string(kAboutLines) + "8080");
    EXPECT_EQ(aboutText(-1), std::string(kAboutLines) + "-1");
}

class MenuTest : public ShellTest {
protected:
    FakeMenu& mainMenu() { return dynamic_cast<FakeMenu&>(*platform_.app.mainMenu()); }
    FakeMenu& submenu(std::size_t index) { return dynamic_cast<FakeMenu&>(*mainMenu().at(index).submenu()); }
    /// Each item as "title|key|action", separators as "-".
    static std::vector<std::string> shownItems(const FakeMenu& menu) {
        std::vector<std::string> items;
        for (std::size_t i = 0; i < menu.size(); ++i) {
            const FakeMenuItem& item = menu.at(i);
            items.push_back(item.isSeparator() ? "-" : item.title() + "|" + item.keyEquivalent() + "|" + item.action());
        }
        return items;
    }
};

TEST_F(MenuTest, ThreeMenusWithTheirItems) {
    launch();
    EXPECT_EQ(mainMenu().title(), "");
    EXPECT_THAT(shownItems(mainMenu()), ElementsAre("||", "||", "||"));
    EXPECT_EQ(submenu(0).title(), "");
    EXPECT_THAT(shownItems(submenu(0)),
                ElementsAre("About Vantor||showAbout", "-", "Always on Top|t|toggleAlwaysOnTop",
                            "Hide in Screenshots|h|toggleHideInScreenshots", "-", "Quit|q|terminate:"));
    EXPECT_EQ(submenu(1).title(), "View");
    EXPECT_THAT(shownItems(submenu(1)),
                ElementsAre("Reload|r|reload", "Actual Size|0|resetZoom", "Zoom In|+|zoomIn", "Zoom Out|-|zoomOut"));
    EXPECT_EQ(submenu(2).title(), "Window");
    EXPECT_THAT(shownItems(submenu(2)), ElementsAre("Minimize|m|miniaturize:", "Zoom||zoom:"));
}

TEST_F(MenuTest, DefaultCheckMarks) {
    launch();
    EXPECT_EQ(submenu(0).at(2).state(), ControlState::off);
    EXPECT_EQ(submenu(0).at(3).state(), ControlState::on);
}

TEST_F(MenuTest, RestoredCheckMarks) {
    platform_.defaults.values["alwaysOnTop"] = true;
    platform_.defaults.values["hideInScreenshots"] = false;
    launch();
    EXPECT_EQ(submenu(0).at(2).state(), ControlState::on);
    EXPECT_EQ(submenu(0).at(3).state(), ControlState::off);
}

TEST_F(MenuTest, EveryActionHasAReceiver) {
    launchQuietly();
    for (const char* title : {"About Vantor", "Always on Top", "Hide in Screenshots", "Reload", "Actual Size",
                              "Zoom In", "Zoom Out", "Minimize", "Zoom", "Quit"}) {
        EXPECT_TRUE(platform_.app.choose(title)) << title;
    }
    EXPECT_EQ(window().miniaturizeCount(), 1);
    EXPECT_EQ(window().zoomCount(), 1);
    EXPECT_EQ(page().reloads(), 1);
    EXPECT_EQ(platform_.alerts.size(), 1U);
    EXPECT_TRUE(platform_.app.terminated());
}

TEST_F(MenuTest, ShortcutsReachTheSameActions) {
    launchQuietly();
    EXPECT_TRUE(platform_.app.pressCommand("t"));
    EXPECT_TRUE(shell_->alwaysOnTop());
    EXPECT_TRUE(platform_.app.pressCommand("h"));
    EXPECT_FALSE(shell_->hideInScreenshots());
    EXPECT_TRUE(window().visible());
    EXPECT_TRUE(platform_.app.pressCommand("r"));
    EXPECT_EQ(page().reloads(), 1);
    EXPECT_TRUE(platform_.app.pressCommand("+"));
    EXPECT_EQ(page().pageZoom(), 1.1);
    EXPECT_TRUE(platform_.app.pressCommand("0"));
    EXPECT_EQ(page().pageZoom(), 1.0);
    EXPECT_TRUE(platform_.app.pressCommand("-"));
    EXPECT_EQ(page().pageZoom(), 0.9);
    EXPECT_TRUE(platform_.app.pressCommand("m"));
    EXPECT_EQ(window().miniaturizeCount(), 1);
    EXPECT_TRUE(platform_.app.pressCommand("q"));
    EXPECT_TRUE(platform_.app.terminated());
}

TEST_F(MenuTest, ActionsThatAreNotItsOwnAreRefused) {
    launchQuietly();
    for (const char* action : {"", "terminate:", "miniaturize:", "zoom:", "loadWebPage", "reload:", "Reload"}) {
        EXPECT_FALSE(shell_->performAction(action)) << action;
    }
    EXPECT_THAT(platform_.recorder.lines(), IsEmpty());
}

TEST_F(MenuTest, AboutIsAnInformationalPanel) {
    platform_.surroundings.variables["WEBSOCKET_PORT"] = "9123";
    launchQuietly();
    shell_->showAbout();
    EXPECT_EQ(alert().messageText(), "Vantor");
    EXPECT_EQ(alert().informativeText(), std::string(kAboutLines) + "9123");
    EXPECT_EQ(alert().style(), AlertStyle::informational);
    EXPECT_TRUE(alert().styleWasSet());
    EXPECT_THAT(alert().buttons(), ElementsAre("OK"));
    EXPECT_EQ(alert().accessory(), nullptr);
    EXPECT_EQ(alert().runCount(), 1);
    EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(MenuTest, EachAboutIsAFreshAlert) {
    launchQuietly();
    shell_->showAbout();
    shell_->showAbout();
    EXPECT_EQ(platform_.alerts.size(), 2U);
}

class MenuDeathTest : public MenuTest {
protected:
    MenuDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(MenuDeathTest, WithoutAnApplicationTheProcessEnds) {
    construct();
    platform_.applicationMissing = true;
    EXPECT_DEATH(shell_->createMenu(), "missing");
}

} // namespace
} // namespace vantorel::fake
