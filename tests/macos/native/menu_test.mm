// Vantorel. MIT licence, see LICENSE.
// Menus as AppKit sees them.
#import <AppKit/AppKit.h>

#include <memory>
#include <string>

#include <gtest/gtest.h>

#import "platform/macos/bridge.h"
#import "platform/macos/menu.h"
#include "tests/macos/native/mac_world.h"
#include "ui/menu_table.h"

namespace vantorel::mac::test {
namespace {

TEST(MacMenu, EveryEntryOfTheTableBecomesAnItem) {
    for (const MenuDescription& description : kMenus) {
        const auto menu = makeMenu(description.title);
        for (const MenuEntry& entry : description.entries) {
            const bool isSeparator = std::string(entry.title).empty();
            menu->addItem(isSeparator ? makeSeparatorItem() : makeMenuItem(entry.title, entry.action, entry.key));
        }
        NSMenu* const native = nsMenuOf(menu);
        EXPECT_EQ(toText(native.title), description.title);
        ASSERT_EQ(native.itemArray.count, description.entries.size());
        NSUInteger index = 0;
        for (const MenuEntry& entry : description.entries) {
            NSMenuItem* const item = native.itemArray[index++];
            if (std::string(entry.title).empty()) {
                EXPECT_TRUE(item.separatorItem);
                continue;
            }
            EXPECT_EQ(toText(item.title), entry.title);
            EXPECT_EQ(toText(item.keyEquivalent), entry.key);
            EXPECT_EQ(toText(NSStringFromSelector(item.action)), entry.action);
            EXPECT_EQ(item.target, nil) << "the responder chain finds it";
            EXPECT_EQ(item.keyEquivalentModifierMask, NSEventModifierFlagCommand);
        }
    }
}

TEST(MacMenu, CheckMarksAndSubmenusShow) {
    const auto bar = makeMenu("");
    const auto item = makeMenuItem("", "", "");
    const auto submenu = makeMenu("View");
    item->setSubmenu(submenu);
    bar->addItem(item);
    nativePlatform().application()->setMainMenu(bar);
    NSMenuItem* const native = NSApplication.sharedApplication.mainMenu.itemArray[0];
    EXPECT_EQ(native.submenu, nsMenuOf(submenu));
    item->setState(ControlState::on);
    EXPECT_EQ(native.state, 1);
    item->setState(ControlState::off);
    EXPECT_EQ(native.state, 0);
    nativePlatform().application()->setMainMenu(nullptr);
}

} // namespace
} // namespace vantorel::mac::test
