// Vantorel. MIT licence, see LICENSE.
// Menus over NSMenu. Items have no target: their actions travel the responder chain.
#import "platform/macos/menu.h"

#include <utility>
#include <vector>

#import "platform/macos/bridge.h"

namespace vantorel::mac {

namespace {

class MacMenu : public Menu {
public:
    explicit MacMenu(NSMenu* menu) : menu_(menu) {}

    NSMenu* nsMenu() const { return menu_; }
    void addItem(std::shared_ptr<MenuItem> item) override;
    std::shared_ptr<MenuItem> itemAtIndex(std::size_t index) const override {
        return index < items_.size() ? items_[index] : nullptr;
    }
    std::vector<std::shared_ptr<MenuItem>> itemArray() const override { return items_; }

private:
    NSMenu* menu_;
    std::vector<std::shared_ptr<MenuItem>> items_;
};

class MacMenuItem : public MenuItem {
public:
    MacMenuItem(NSMenuItem* item, Selector action) : item_(item), action_(std::move(action)) {}

    NSMenuItem* nsMenuItem() const { return item_; }
    Selector action() const override { return action_; }
    void setState(ControlState state) override { item_.state = static_cast<NSControlStateValue>(state); }
    void setSubmenu(std::shared_ptr<Menu> submenu) override {
        submenu_ = std::move(submenu);
        item_.submenu = nsMenuOf(submenu_);
    }
    std::shared_ptr<Menu> submenu() const override { return submenu_; }

private:
    NSMenuItem* item_;
    Selector action_;
    std::shared_ptr<Menu> submenu_;
};

void MacMenu::addItem(std::shared_ptr<MenuItem> item) {
    if (const auto* const native = dynamic_cast<const MacMenuItem*>(item.get())) [menu_ addItem:native->nsMenuItem()];
    items_.push_back(std::move(item));
}

}  // namespace

NSMenu* nsMenuOf(const std::shared_ptr<Menu>& menu) {
    const auto* const native = dynamic_cast<const MacMenu*>(menu.get());
    return native == nullptr ? nil : native->nsMenu();
}

std::shared_ptr<Menu> makeMenu(const std::string& title) {
    NSMenu* const menu = title.empty() ? [[NSMenu alloc] init] : [[NSMenu alloc] initWithTitle:toNSString(title)];
    return std::make_shared<MacMenu>(menu);
}

std::shared_ptr<MenuItem> makeMenuItem(const std::string& title, const Selector& action,
                                       const std::string& keyEquivalent) {
    if (title.empty() && action.empty()) return std::make_shared<MacMenuItem>([[NSMenuItem alloc] init], action);
    const SEL selector = action.empty() ? nullptr : NSSelectorFromString(toNSString(action));
    NSMenuItem* const item = [[NSMenuItem alloc] initWithTitle:toNSString(title)
                                                        action:selector
                                                 keyEquivalent:toNSString(keyEquivalent)];
    return std::make_shared<MacMenuItem>(item, action);
}

std::shared_ptr<MenuItem> makeSeparatorItem() {
    return std::make_shared<MacMenuItem>([NSMenuItem separatorItem], "");
}

}  // namespace vantorel::mac
