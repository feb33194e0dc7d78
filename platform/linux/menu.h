// Vantorel. MIT licence, see LICENSE.
// Menus over GMenu: each item is an action of the application, each separator begins a new section.
#pragma once

#include <gio/gio.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/appkit.h"
#include "platform/linux/object.h"

namespace vantorel::gtk {

class GtkApp;
class NativeMenu;

/// The accelerators for a key equivalent of one character, the one to show first: "+" is also answered to without Shift
/// and on the number pad. None for an empty or unknown equivalent.
std::vector<std::string> acceleratorsFor(const std::string& keyEquivalent);

class NativeMenuItem : public MenuItem {
public:
    /// An entry with an action. `app` must outlive the item.
    NativeMenuItem(GtkApp& app, std::string title, Selector action, const std::string& keyEquivalent);
    /// A separator.
    explicit NativeMenuItem(GtkApp& app);
    NativeMenuItem(const NativeMenuItem&) = delete;
    NativeMenuItem& operator=(const NativeMenuItem&) = delete;
    ~NativeMenuItem() override;

    Selector action() const override { return selector_; }
    void setState(ControlState state) override;
    void setSubmenu(std::shared_ptr<Menu> submenu) override;
    std::shared_ptr<Menu> submenu() const override;

    bool isSeparator() const { return separator_; }
    const std::string& title() const { return title_; }
    /// "app.NAME" of the item's action; empty when there is none.
    std::string detailedAction() const;
    const std::shared_ptr<NativeMenu>& nativeSubmenu() const { return submenu_; }
    void setParent(NativeMenu* parent) { parent_ = parent; }

private:
    void installAction(const Object<GSimpleAction>& action);

    GtkApp& app_;
    std::string title_;
    Selector selector_;
    bool separator_ = false;
    std::shared_ptr<NativeMenu> submenu_;
    NativeMenu* parent_ = nullptr;
    std::string actionName_;
    Object<GSimpleAction> gAction_;
    SignalConnection activated_;
};

class NativeMenu : public Menu {
public:
    explicit NativeMenu(std::string title);
    NativeMenu(const NativeMenu&) = delete;
    NativeMenu& operator=(const NativeMenu&) = delete;
    ~NativeMenu() override;

    void addItem(std::shared_ptr<MenuItem> item) override;
    std::shared_ptr<MenuItem> itemAtIndex(std::size_t index) const override;
    std::vector<std::shared_ptr<MenuItem>> itemArray() const override;

    const std::string& title() const { return title_; }
    GMenuModel* model() const { return G_MENU_MODEL(model_.get()); }
    /// Fills the model anew, after an item changed.
    void refresh();
    /// Whether `item` is in this menu or in a submenu of it.
    bool contains(const NativeMenuItem& item) const;

private:
    std::string title_;
    std::vector<std::shared_ptr<NativeMenuItem>> items_;
    Object<GMenu> model_;
};

std::shared_ptr<Menu> makeMenu(const std::string& title);
std::shared_ptr<MenuItem> makeMenuItem(GtkApp& app, const std::string& title, const Selector& action,
                                       const std::string& keyEquivalent);
std::shared_ptr<MenuItem> makeSeparatorItem(GtkApp& app);

} // namespace vantorel::gtk
