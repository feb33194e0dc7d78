// Vantorel. MIT licence, see LICENSE.
// Menus: the model that is shown, check marks, shortcuts, and the way of an action.
#include "platform/linux/menu.h"

#include <gtest/gtest.h>

#include "platform/linux/window.h"
#include "tests/linux/gtk_world.h"

namespace vantorel::gtk {
namespace {

using Texts = std::vector<std::string>;

TEST(Accelerators, HaveControl) {
    EXPECT_EQ(acceleratorsFor("t"), Texts{"<Control>t"});
    EXPECT_EQ(acceleratorsFor(""), Texts{});
    EXPECT_EQ(acceleratorsFor("ab"), Texts{});
    EXPECT_EQ(acceleratorsFor("\xff"), Texts{});
}

TEST(Accelerators, ReachTheNumberPad) {
    EXPECT_EQ(acceleratorsFor("0"), (Texts{"<Control>0", "<Control>KP_0"}));
    EXPECT_EQ(acceleratorsFor("-"), (Texts{"<Control>minus", "<Control>KP_Subtract"}));
    EXPECT_EQ(acceleratorsFor("+"), (Texts{"<Control>plus", "<Control>equal", "<Control>KP_Add"}));
}

std::string labelAt(GMenuModel* model, int index) {
    gchar* label = nullptr;
    g_menu_model_get_item_attribute(model, index, G_MENU_ATTRIBUTE_LABEL, "s", &label);
    const GText owner(label);
    return label == nullptr ? "" : label;
}

Object<GMenuModel> linkAt(GMenuModel* model, int index, const char* link) {
    return Object<GMenuModel>::take(g_menu_model_get_item_link(model, index, link));
}

class MenuTest : public GtkWorld {
public:
    /// A main menu with one menu titled `title` that holds `items`.
    std::shared_ptr<NativeMenu> install(const std::string& title, const std::vector<std::shared_ptr<MenuItem>>& items) {
        const auto main = std::make_shared<NativeMenu>("");
        const auto menu = std::make_shared<NativeMenu>(title);
        for (const auto& item : items) {
            menu->addItem(item);
        }
        const auto bar = makeMenuItem(*app, "", "", "");
        main->addItem(bar);
        bar->setSubmenu(menu);
        app->setMainMenu(main);
        return menu;
    }
    /// Chooses `item` as the toolkit does.
    void choose(const std::shared_ptr<MenuItem>& item) const {
        const std::string action = std::static_pointer_cast<NativeMenuItem>(item)->detailedAction();
        g_action_group_activate_action(G_ACTION_GROUP(app->application()), action.substr(4).c_str(), nullptr);
    }
    void note(const std::string& text) const { delegate->record.push_back(text); }
    GVariant* stateOf(const std::shared_ptr<MenuItem>& item) const {
        const std::string action = std::static_pointer_cast<NativeMenuItem>(item)->detailedAction();
        return g_action_group_get_action_state(G_ACTION_GROUP(app->application()), action.substr(4).c_str());
    }
};

TEST_F(MenuTest, TheUntitledMenuBearsTheProductsName) {
    install("", {makeMenuItem(*app, "Quit", "terminate:", "q")});
    GMenuModel* bar = gtk_application_get_menubar(app->application());
    ASSERT_EQ(g_menu_model_get_n_items(bar), 1);
    EXPECT_EQ(labelAt(bar, 0), "Vantor");
}

TEST_F(MenuTest, AMenuIsLabelledByItsOwnTitle) {
    install("View", {makeMenuItem(*app, "Reload", "reload", "r")});
    EXPECT_EQ(labelAt(gtk_application_get_menubar(app->application()), 0), "View");
}

TEST_F(MenuTest, SeparatorsDivideAMenuIntoSections) {
    const auto menu = install("", {makeMenuItem(*app, "One", "one", ""), makeSeparatorItem(*app),
                                   makeMenuItem(*app, "Two", "two", ""), makeMenuItem(*app, "Three", "three", "")});
    ASSERT_EQ(g_menu_model_get_n_items(menu->model()), 2);
    const auto second = linkAt(menu->model(), 1, G_MENU_LINK_SECTION);
    ASSERT_TRUE(second);
    EXPECT_EQ(labelAt(second.get(), 0), "Two");
    EXPECT_EQ(labelAt(second.get(), 1), "Three");
    EXPECT_EQ(menu->itemArray().size(), 4U);
    EXPECT_EQ(menu->itemAtIndex(4), nullptr);
}

TEST_F(MenuTest, AnUnderscoreIsALetter) {
    const auto menu = install("", {makeMenuItem(*app, "a_b", "one", "")});
    EXPECT_EQ(labelAt(linkAt(menu->model(), 0, G_MENU_LINK_SECTION).get(), 0), "a__b");
}

TEST_F(MenuTest, ActionsGoToTheDelegate) {
    const auto item = makeMenuItem(*app, "Reload", "reload", "r");
    install("View", {item});
    choose(item);
    EXPECT_EQ(delegate->record, (Texts{"launched", "perform reload"}));
}

TEST_F(MenuTest, AnItemOutsideTheMenuBarDoesNothing) {
    const auto item = makeMenuItem(*app, "Reload", "reload", "r");
    choose(item);
    EXPECT_EQ(delegate->record, Texts{"launched"});
}

TEST_F(MenuTest, QuitEndsTheApplicationOnce) {
    const auto item = makeMenuItem(*app, "Quit", "terminate:", "q");
    install("", {item});
    choose(item);
    choose(item);
    EXPECT_TRUE(waitUntil([this] { return app->isTerminating(); }));
    choose(item);
    app->terminate();
    EXPECT_EQ(delegate->record, (Texts{"launched", "will terminate"}));
}

TEST_F(MenuTest, WhatIsReadyComesBeforeTheEnd) {
    const auto item = makeMenuItem(*app, "Quit", "terminate:", "q");
    install("", {item});
    g_idle_add_full(
        G_PRIORITY_DEFAULT,
        [](gpointer data) -> gboolean {
            static_cast<MenuTest*>(data)->note("ready");
            return G_SOURCE_REMOVE;
        },
        this, nullptr);
    struct Choice {
        MenuTest* test;
        std::shared_ptr<MenuItem> item;
    };
    Choice choice{this, item};
    g_idle_add_full(
        G_PRIORITY_DEFAULT,
        [](gpointer data) -> gboolean {
            const auto* chosen = static_cast<Choice*>(data);
            chosen->test->choose(chosen->item);
            return G_SOURCE_REMOVE;
        },
        &choice, nullptr);
    g_idle_add_full(
        G_PRIORITY_DEFAULT,
        [](gpointer data) -> gboolean {
            static_cast<MenuTest*>(data)->note("ready too");
            return G_SOURCE_REMOVE;
        },
        this, nullptr);
    EXPECT_TRUE(waitUntil([this] { return app->isTerminating(); }));
    EXPECT_EQ(delegate->record, (Texts{"launched", "ready", "ready too", "will terminate"}));
}

TEST_F(MenuTest, WindowActionsReachTheWindow) {
    const auto zoom = makeMenuItem(*app, "Zoom", "zoom:", "");
    const auto minimize = makeMenuItem(*app, "Minimize", "miniaturize:", "m");
    install("Window", {zoom, minimize});
    choose(zoom); // without a window nothing happens
    NativeWindow window(*app, {{0, 0}, {500, 400}}, 15);
    window.makeKeyAndOrderFront();
    choose(zoom);
    EXPECT_TRUE(waitUntil([&] { return gtk_window_is_maximized(window.gtkWindow()) != FALSE; }));
    choose(minimize);
    EXPECT_TRUE(waitUntil([&] { return window.isMinimized(); }));
    EXPECT_EQ(delegate->record, Texts{"launched"});
}

TEST_F(MenuTest, OnlyItemsWithAStateHaveACheckMark) {
    const auto plain = makeMenuItem(*app, "Reload", "reload", "r");
    const auto marked = makeMenuItem(*app, "Always on Top", "toggleAlwaysOnTop", "t");
    marked->setState(ControlState::off);
    install("", {plain, marked});
    EXPECT_EQ(stateOf(plain), nullptr);
    const auto read = [&] {
        GVariant* state = stateOf(marked);
        const bool on = g_variant_get_boolean(state) != FALSE;
        g_variant_unref(state);
        return on;
    };
    EXPECT_FALSE(read());
    marked->setState(ControlState::on);
    EXPECT_TRUE(read());
    choose(marked); // the toolkit must not flip it by itself
    EXPECT_TRUE(read());
    EXPECT_EQ(delegate->record.back(), "perform toggleAlwaysOnTop");
}

TEST_F(MenuTest, AnItemMayChangeItsMarkWhileItActs) {
    const auto item = makeMenuItem(*app, "Mode", "mode", "");
    install("", {item});
    delegate->onAction = [&](const Selector&) { item->setState(ControlState::on); };
    choose(item);
    GVariant* state = stateOf(item);
    ASSERT_NE(state, nullptr);
    EXPECT_TRUE(g_variant_get_boolean(state));
    g_variant_unref(state);
}

} // namespace
} // namespace vantorel::gtk
