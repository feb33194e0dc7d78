// Vantorel. MIT licence, see LICENSE.
// Menus of the fake.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/appkit.h"
#include "tests/unit/fake/record.h"

namespace vantorel::fake {

class FakeMenuItem final : public MenuItem {
public:
    enum class Kind {
        entry,
        separator,
    };

    FakeMenuItem(Record& record, std::string name, Kind kind, std::string title, Selector action,
                 std::string keyEquivalent);

    Selector action() const override { return action_; }
    void setState(ControlState state) override;
    void setSubmenu(std::shared_ptr<Menu> submenu) override;
    std::shared_ptr<Menu> submenu() const override { return submenu_; }

    const std::string& name() const { return name_; }
    bool isSeparator() const { return kind_ == Kind::separator; }
    const std::string& title() const { return title_; }
    const std::string& keyEquivalent() const { return keyEquivalent_; }
    ControlState state() const { return state_; }

private:
    Record& record_;
    std::string name_;
    Kind kind_;
    std::string title_;
    Selector action_;
    std::string keyEquivalent_;
    ControlState state_ = ControlState::off;
    std::shared_ptr<Menu> submenu_;
};

class FakeMenu final : public Menu {
public:
    FakeMenu(Record& record, std::string name, std::string title);

    void addItem(std::shared_ptr<MenuItem> item) override;
    std::shared_ptr<MenuItem> itemAtIndex(std::size_t index) const override;
    std::vector<std::shared_ptr<MenuItem>> itemArray() const override { return items_; }

    const std::string& name() const { return name_; }
    const std::string& title() const { return title_; }
    /// The item at `index`; throws where there is none.
    FakeMenuItem& at(std::size_t index) const { return dynamic_cast<FakeMenuItem&>(*items_.at(index)); }
    std::size_t size() const { return items_.size(); }

private:
    Record& record_;
    std::string name_;
    std::string title_;
    std::vector<std::shared_ptr<MenuItem>> items_;
};

} // namespace vantorel::fake
