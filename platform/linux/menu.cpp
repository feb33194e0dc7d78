// Vantorel. MIT licence, see LICENSE.
// Menus over GMenu.
#include "platform/linux/menu.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <iterator>

#include "platform/linux/application.h"
#include "platform/linux/main_thread.h"

namespace vantorel::gtk {
namespace {

/// A label as menu models want it: an underscore marks a mnemonic there.
std::string labelOf(const std::string& title) {
    std::string label;
    for (const char c : title) {
        label += c;
        if (c == '_')
            label += c;
    }
    return label;
}

} // namespace

std::vector<std::string> acceleratorsFor(const std::string& keyEquivalent) {
    if (keyEquivalent == "+")
        return {"<Control>plus", "<Control>equal", "<Control>KP_Add"};
    if (keyEquivalent == "-")
        return {"<Control>minus", "<Control>KP_Subtract"};
    if (g_utf8_validate(keyEquivalent.c_str(), -1, nullptr) == FALSE || g_utf8_strlen(keyEquivalent.c_str(), -1) != 1) {
        return {};
    }
    const gunichar character = g_utf8_get_char(keyEquivalent.c_str());
    const char* name = gdk_keyval_name(gdk_unicode_to_keyval(character));
    if (name == nullptr)
        return {};
    std::vector<std::string> accelerators = {std::string("<Control>") + name};
    if (g_unichar_isdigit(character) != FALSE)
        accelerators.push_back(std::string("<Control>KP_") + name);
    return accelerators;
}

// Items ---------------------------------------------------------------------------------------------------------------

NativeMenuItem::NativeMenuItem(GtkApp& app, std::string title, Selector action, const std::string& keyEquivalent)
    : app_(app),
      title_(std::move(title)),
      selector_(std::move(action)) {
    assertMainThread();
    if (selector_.empty())
        return;
    actionName_ = "item" + std::to_string(app.nextNumber());
    installAction(Object<GSimpleAction>::take(g_simple_action_new(actionName_.c_str(), nullptr)));

    const std::vector<std::string> accelerators = acceleratorsFor(keyEquivalent);
    std::vector<const char*> names;
    std::transform(accelerators.begin(), accelerators.end(), std::back_inserter(names),
                   [](const std::string& text) { return text.c_str(); });
    names.push_back(nullptr);
    gtk_application_set_accels_for_action(app_.application(), detailedAction().c_str(), names.data());
}

NativeMenuItem::NativeMenuItem(GtkApp& app) : app_(app), separator_(true) { assertMainThread(); }

NativeMenuItem::~NativeMenuItem() {
    // At the end GTK 4.8 still tells the shortcut labels of menus that are half gone, and complains about them.
    if (actionName_.empty() || app_.isTerminating())
        return;
    const char* const none[] = {nullptr};
    gtk_application_set_accels_for_action(app_.application(), detailedAction().c_str(), none);
    g_action_map_remove_action(G_ACTION_MAP(app_.application()), actionName_.c_str());
}

std::string NativeMenuItem::detailedAction() const {
    return actionName_.empty() ? std::string() : "app." + actionName_;
}

void NativeMenuItem::installAction(const Object<GSimpleAction>& action) {
    gAction_ = action;
    activated_ = connect<void(GVariant*)>(action.get(), "activate", [this](GVariant*) {
        // An item outside the menu bar is no way to reach its action.
        const auto menu = std::dynamic_pointer_cast<NativeMenu>(app_.mainMenu());
        if (menu && menu->contains(*this))
            app_.perform(selector_);
    });
    g_action_map_add_action(G_ACTION_MAP(app_.application()), G_ACTION(action.get()));
}

void NativeMenuItem::setState(ControlState state) {
    assertMainThread();
    if (!gAction_)
        return;
    GVariant* value = g_variant_new_boolean(state == ControlState::on);
    if (g_action_get_state_type(G_ACTION(gAction_.get())) != nullptr) {
        g_simple_action_set_state(gAction_.get(), value);
    } else {
        // Only an action made with a state has a check mark; it takes the place of the one without.
        installAction(Object<GSimpleAction>::take(g_simple_action_new_stateful(actionName_.c_str(), nullptr, value)));
    }
}

void NativeMenuItem::setSubmenu(std::shared_ptr<Menu> submenu) {
    assertMainThread();
    submenu_ = std::dynamic_pointer_cast<NativeMenu>(std::move(submenu));
    if (parent_ != nullptr)
        parent_->refresh();
}

std::shared_ptr<Menu> NativeMenuItem::submenu() const {
    assertMainThread();
    return submenu_;
}

// Menus ---------------------------------------------------------------------------------------------------------------

NativeMenu::NativeMenu(std::string title) : title_(std::move(title)), model_(Object<GMenu>::take(g_menu_new())) {
    assertMainThread();
}

NativeMenu::~NativeMenu() {
    for (const auto& item : items_) {
        item->setParent(nullptr);
    }
}

void NativeMenu::addItem(std::shared_ptr<MenuItem> item) {
    assertMainThread();
    auto native = std::dynamic_pointer_cast<NativeMenuItem>(std::move(item));
    if (!native)
        return;
    native->setParent(this);
    items_.push_back(std::move(native));
    refresh();
}

std::shared_ptr<MenuItem> NativeMenu::itemAtIndex(std::size_t index) const {
    assertMainThread();
    return index < items_.size() ? items_[index] : nullptr;
}

std::vector<std::shared_ptr<MenuItem>> NativeMenu::itemArray() const {
    assertMainThread();
    return {items_.begin(), items_.end()};
}

bool NativeMenu::contains(const NativeMenuItem& item) const {
    return std::any_of(items_.begin(), items_.end(), [&item](const auto& own) {
        return own.get() == &item || (own->nativeSubmenu() && own->nativeSubmenu()->contains(item));
    });
}

void NativeMenu::refresh() {
    g_menu_remove_all(model_.get());
    auto section = Object<GMenu>::take(g_menu_new());
    const auto closeSection = [&] {
        if (g_menu_model_get_n_items(G_MENU_MODEL(section.get())) > 0) {
            g_menu_append_section(model_.get(), nullptr, G_MENU_MODEL(section.get()));
        }
        section = Object<GMenu>::take(g_menu_new());
    };
    for (const auto& item : items_) {
        if (item->isSeparator()) {
            closeSection();
        } else if (const auto& submenu = item->nativeSubmenu()) {
            // A menu bar takes its menus directly. The untitled menu is the application's own, which carries its name.
            closeSection();
            const std::string& title = item->title().empty() ? submenu->title() : item->title();
            g_menu_append_submenu(model_.get(), labelOf(title.empty() ? kShortName : title).c_str(), submenu->model());
        } else if (!item->title().empty()) {
            const std::string action = item->detailedAction();
            g_menu_append(section.get(), labelOf(item->title()).c_str(), action.empty() ? nullptr : action.c_str());
        }
    }
    closeSection();
}

std::shared_ptr<Menu> makeMenu(const std::string& title) { return std::make_shared<NativeMenu>(title); }

std::shared_ptr<MenuItem> makeMenuItem(GtkApp& app, const std::string& title, const Selector& action,
                                       const std::string& keyEquivalent) {
    return std::make_shared<NativeMenuItem>(app, title, action, keyEquivalent);
}

std::shared_ptr<MenuItem> makeSeparatorItem(GtkApp& app) { return std::make_shared<NativeMenuItem>(app); }

} // namespace vantorel::gtk
