// Vantorel. MIT licence, see LICENSE.
// The main menu, built from its table.
#include <string_view>

#include "app/app_delegate.h"
#include "app/require.h"
#include "ui/menu_table.h"

namespace vantorel {

namespace {

std::shared_ptr<MenuItem> makeItem(AppDelegate& app, const MenuEntry& entry) {
    if (*entry.title == '\0')
        return app.platform().makeSeparatorItem();
    std::shared_ptr<MenuItem> item = app.platform().makeMenuItem(entry.title, entry.action, entry.key);
    const std::string_view action = entry.action;
    if (action == kToggleAlwaysOnTopAction) {
        item->setState(app.alwaysOnTop() ? ControlState::on : ControlState::off);
    } else if (action == kToggleHideInScreenshotsAction) {
        item->setState(app.hideInScreenshots() ? ControlState::on : ControlState::off);
    }
    return item;
}

} // namespace

void AppDelegate::createMenu() {
    const std::shared_ptr<Menu> mainMenu = platform().makeMenu("");
    for (const MenuDescription& description : kMenus) {
        const std::shared_ptr<MenuItem> barItem = platform().makeMenuItem("", "", "");
        mainMenu->addItem(barItem);
        const std::shared_ptr<Menu> menu = platform().makeMenu(description.title);
        barItem->setSubmenu(menu);
        for (const MenuEntry& entry : description.entries)
            menu->addItem(makeItem(*this, entry));
    }
    require(platform().application(), "application").setMainMenu(mainMenu);
}

} // namespace vantorel
