// Vantorel. MIT licence, see LICENSE.
// Windows: sizes exact to the point, the frame that is told, and what the window manager is asked for.
#include "platform/linux/window.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "tests/linux/gtk_world.h"

namespace vantorel::gtk {
namespace {

constexpr unsigned kStyle = 1 | 2 | 4 | 8;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(OpeningRect, KeepsWhatAScreenCanShow) {
    const Rect asked{{100, 100}, {900, 750}};
    EXPECT_EQ(openingRect(asked, {1280, 1024}), asked);
}

TEST(OpeningRect, CutsWhatItCannot) {
    EXPECT_EQ(openingRect({{0, 0}, {1e300, 5000}}, {1280, 1024}).size, (Size{1280, 1024}));
    EXPECT_EQ(openingRect({{0, 0}, {-5, -1e300}}, {1280, 1024}).size, (Size{0, 0}));
}

TEST(OpeningRect, TakesNumbersThatAreNoneAsZero) {
    EXPECT_EQ(openingRect({{kNan, kInfinity}, {kNan, -kInfinity}}, {1280, 1024}), Rect{});
}

TEST(CentredClient, LeavesTheSameSpaceOnBothSides) {
    const x11::FrameExtents extents{5, 5, 29, 5};
    EXPECT_EQ(centredClient({900, 774}, extents, {{0, 0}, {1280, 1024}}), (Point{190, 137}));
    EXPECT_EQ(centredClient({900, 774}, {}, {{100, 50}, {1000, 800}}), (Point{150, 63}));
}

TEST(CentredClient, NeverHidesTheTitleBar) {
    EXPECT_EQ(centredClient({900, 2000}, {0, 0, 29, 0}, {{0, 24}, {1280, 1000}}).y, 24 + 29);
}

class WindowTest : public GtkWorld {
protected:
    void show(Rect content) {
        window = std::make_shared<NativeWindow>(*app, content, kStyle);
        window->setMinSize({400, 350});
        window->makeKeyAndOrderFront();
        window->center();
        ASSERT_TRUE(waitUntil([this] { return titleBar() > 0; })) << "no frame from the window manager";
    }
    GdkSurface* surface() const { return gtk_native_get_surface(GTK_NATIVE(window->gtkWindow())); }
    double titleBar() const { return x11::frameExtents(surface()).value_or(x11::FrameExtents{}).top; }

    std::shared_ptr<NativeWindow> window;
};

TEST_F(WindowTest, TellsAUsableFrameBeforeItWasShown) {
    const Rect asked{{100, 80}, {900, 750}};
    window = std::make_shared<NativeWindow>(*app, asked, kStyle);
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(window->frame(), asked);
    EXPECT_EQ(window->contentView()->bounds(), (Rect{{0, 0}, {900, 750}}));
}

TEST_F(WindowTest, HasTheContentAskedForAndAFrameWithItsTitleBar) {
    show({{100, 100}, {900, 750}});
    EXPECT_TRUE(waitUntil([this] { return window->contentView()->bounds().size == Size{900, 750}; }));
    EXPECT_EQ(window->frame().size, (Size{900, 750 + titleBar()}));
}

TEST_F(WindowTest, AMenuBarIsNoPartOfTheContent) {
    const auto menu = Object<GMenu>::take(g_menu_new());
    const auto submenu = Object<GMenu>::take(g_menu_new());
    g_menu_append(submenu.get(), "Item", "app.item");
    g_menu_append_submenu(menu.get(), "Menu", G_MENU_MODEL(submenu.get()));
    gtk_application_set_menubar(app->application(), G_MENU_MODEL(menu.get()));
    show({{100, 100}, {640, 480}});
    EXPECT_TRUE(waitUntil([this] { return window->contentView()->bounds().size == Size{640, 480}; }));
    EXPECT_EQ(window->frame().size, (Size{640, 480 + titleBar()}));
    EXPECT_GT(x11::clientArea(surface())->size.height, 480);
}

TEST_F(WindowTest, StandsInTheMiddleOfTheScreen) {
    show({{4000, 4000}, {600, 500}});
    const auto area = x11::workArea(surface());
    ASSERT_TRUE(area);
    const auto extents = x11::frameExtents(surface());
    const Point middle = centredClient({600, 500}, *extents, *area);
    EXPECT_TRUE(waitUntil([&] { return x11::clientArea(surface())->origin == middle; }));
    const double below = *x11::screenHeight(surface()) - middle.y - 500;
    EXPECT_EQ(window->frame().origin, (Point{middle.x, below}));
}

TEST_F(WindowTest, OpensUsableFromASizeOfZero) {
    show({});
    EXPECT_TRUE(waitUntil([this] { return window->contentView()->bounds().size.width >= 400; }));
    EXPECT_GE(window->frame().size.height, 350);
}

TEST_F(WindowTest, AHugeWindowIsCutToTheScreen) {
    show({{0, 0}, {1e9, 1e9}});
    const auto area = x11::workArea(surface());
    EXPECT_TRUE(waitUntil([&] {
        const auto client = x11::clientArea(surface());
        return client && client->size.width <= area->size.width &&
               client->size.height + titleBar() <= area->size.height;
    }));
}

TEST_F(WindowTest, FloatsAndComesDownAgain) {
    window = std::make_shared<NativeWindow>(*app, Rect{{0, 0}, {500, 400}}, kStyle);
    window->setLevel(WindowLevel::floating);
    window->makeKeyAndOrderFront();
    EXPECT_TRUE(waitUntil([this] { return window->isAbove(); }));
    window->setLevel(WindowLevel::normal);
    EXPECT_TRUE(waitUntil([this] { return !window->isAbove(); }));
    window->setLevel(WindowLevel::floating);
    EXPECT_TRUE(waitUntil([this] { return window->isAbove(); }));
}

TEST_F(WindowTest, FloatsAgainAfterItWasHidden) {
    show({{0, 0}, {500, 400}});
    window->setLevel(WindowLevel::floating);
    ASSERT_TRUE(waitUntil([this] { return window->isAbove(); }));
    window->hide();
    ASSERT_TRUE(waitUntil([this] { return !window->isAbove() || !window->isVisible(); }));
    window->makeKeyAndOrderFront();
    EXPECT_TRUE(waitUntil([this] { return window->isVisible() && window->isAbove(); }));
}

TEST_F(WindowTest, ZoomsAndComesBack) {
    show({{0, 0}, {500, 400}});
    window->zoom();
    EXPECT_TRUE(waitUntil([this] { return gtk_window_is_maximized(window->gtkWindow()) != FALSE; }));
    window->zoom();
    EXPECT_TRUE(waitUntil([this] { return gtk_window_is_maximized(window->gtkWindow()) == FALSE; }));
    EXPECT_TRUE(waitUntil([this] { return window->contentView()->bounds().size == Size{500, 400}; }));
}

TEST_F(WindowTest, AMinimizedWindowTellsItsFrame) {
    show({{0, 0}, {500, 400}});
    ASSERT_TRUE(waitUntil([this] { return window->contentView()->bounds().size == Size{500, 400}; }));
    window->miniaturize();
    ASSERT_TRUE(waitUntil([this] { return window->isMinimized(); }));
    EXPECT_EQ(window->frame().size, (Size{500, 400 + titleBar()}));
    window->raise();
    EXPECT_TRUE(waitUntil([this] { return !window->isMinimized(); }));
}

TEST_F(WindowTest, ClosingTheLastWindowEndsTheApplicationOnce) {
    show({{0, 0}, {500, 400}});
    gtk_window_close(window->gtkWindow());
    EXPECT_TRUE(waitUntil([this] { return delegate->record.size() >= 3; }));
    app->terminate();
    EXPECT_EQ(delegate->record, (std::vector<std::string>{"launched", "last window closed", "will terminate"}));
}

TEST_F(WindowTest, AWindowThatMayGoWithoutTheApplicationIsHidden) {
    delegate->endsWithLastWindow = false;
    show({{0, 0}, {500, 400}});
    const Rect frame = window->frame();
    gtk_window_close(window->gtkWindow());
    EXPECT_TRUE(waitUntil([this] { return !window->isVisible(); }));
    EXPECT_EQ(window->frame(), frame);
    EXPECT_EQ(delegate->record, (std::vector<std::string>{"launched", "last window closed"}));
}

TEST_F(WindowTest, KeepsItsSharingType) {
    window = std::make_shared<NativeWindow>(*app, Rect{{0, 0}, {500, 400}}, kStyle);
    window->setSharingType(WindowSharingType::none);
    EXPECT_EQ(window->sharingType(), WindowSharingType::none);
}

TEST_F(WindowTest, ATitleMayHoldAnything) {
    window = std::make_shared<NativeWindow>(*app, Rect{{0, 0}, {500, 400}}, kStyle);
    window->setTitle("🤖 Vantor");
    EXPECT_STREQ(gtk_window_get_title(window->gtkWindow()), "🤖 Vantor");
    window->setTitle("\xff");
    EXPECT_STREQ(gtk_window_get_title(window->gtkWindow()), "\uFFFD");
}

} // namespace
} // namespace vantorel::gtk
