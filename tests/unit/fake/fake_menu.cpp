// Vantorel. MIT licence, see LICENSE.
// Menus of the fake.
#include "tests/unit/fake/fake_menu.h"

#include <utility>

namespace vantorel::fake {

FakeMenuItem::FakeMenuItem(Record& record, std::string name, Kind kind, std::string title, Selector action,
                           std::string keyEquivalent)
    : record_(record),
      name_(std::move(name)),
      kind_(kind),
      title_(std::move(title)),
      action_(std::move(action)),
      keyEquivalent_(std::move(keyEquivalent)) {}

void FakeMenuItem::setState(ControlState state) {
    record_.addOnMain(name_ + ".setState(" + std::to_string(static_cast<int>(state)) + ")");
    state_ = state;
}

void FakeMenuItem::setSubmenu(std::shared_ptr<Menu> submenu) {
    record_.addOnMain(name_ + ".setSubmenu(" + dynamic_cast<FakeMenu&>(*submenu).name() + ")");
    submenu_ = std::move(submenu);
}

FakeMenu::FakeMenu(Record& record, std::string name, std::string title)
    : record_(record),
      name_(std::move(name)),
      title_(std::move(title)) {}

void FakeMenu::addItem(std::shared_ptr<MenuItem> item) {
    record_.addOnMain(name_ + ".addItem(" + dynamic_cast<FakeMenuItem&>(*item).name() + ")");
    items_.push_back(std::move(item));
}

std::shared_ptr<MenuItem> FakeMenu::itemAtIndex(std::size_t index) const {
    return index < items_.size() ? items_[index] : nullptr;
}

} // namespace vantorel::fake
