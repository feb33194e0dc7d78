// Vantorel. MIT licence, see LICENSE.
// The two window modes: each toggle applies, saves and shows its new value at once.
#include "app/app_delegate.h"
#include "app/preference_keys.h"
#include "app/require.h"
#include "ui/menu_table.h"

namespace vantorel {

namespace {

/// Sets the check mark of every item in the application menu whose action is `action`.
void showModeInMenu(AppDelegate& app, const Selector& action, bool on) {
    const std::shared_ptr<Menu> mainMenu = require(app.platform().application(), "application").mainMenu();
    if (!mainMenu)
        return;
    const std::shared_ptr<MenuItem> barItem = mainMenu->itemAtIndex(0);
    const std::shared_ptr<Menu> applicationMenu = barItem ? barItem->submenu() : nullptr;
    if (!applicationMenu)
        return;
    for (const std::shared_ptr<MenuItem>& item : applicationMenu->itemArray()) {
        if (item->action() == action)
            item->setState(on ? ControlState::on : ControlState::off);
    }
}

} // namespace

void AppDelegate::toggleAlwaysOnTop() {
    setAlwaysOnTop(!alwaysOnTop());
    require(window(), "window").setLevel(alwaysOnTop() ? WindowLevel::floating : WindowLevel::normal);
    platform().userDefaults().setBool(alwaysOnTop(), kAlwaysOnTopKey);
    showModeInMenu(*this, kToggleAlwaysOnTopAction, alwaysOnTop());
}

void AppDelegate::toggleHideInScreenshots() {
    setHideInScreenshots(!hideInScreenshots());
    require(window(), "window").setSharingType(sharingTypeFor(hideInScreenshots()));
    platform().userDefaults().setBool(hideInScreenshots(), kHideInScreenshotsKey);
    showModeInMenu(*this, kToggleHideInScreenshotsAction, hideInScreenshots());
}

} // namespace vantorel
