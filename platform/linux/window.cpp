// Vantorel. MIT licence, see LICENSE.
// The top level window.
#include "platform/linux/window.h"

#include <algorithm>
#include <cmath>

#include "platform/linux/application.h"
#include "platform/linux/main_thread.h"
#include "platform/linux/menu_bar.h"

namespace vantorel::gtk {
namespace {

class ContentView : public ViewOf<View> {
public:
    using ViewOf::ViewOf;
};

constexpr gint64 kSettlingTime = 2 * G_TIME_SPAN_SECOND;

double finite(double value) { return std::isfinite(value) ? value : 0; }

int whole(double value) { return static_cast<int>(std::lround(std::clamp(value, 0.0, 32767.0))); }

/// The largest monitor's size: which one the window will open on is the window manager's choice.
Size largestMonitor() {
    Size largest;
    GListModel* monitors = gdk_display_get_monitors(gdk_display_get_default());
    for (guint i = 0; i < g_list_model_get_n_items(monitors); ++i) {
        const auto monitor = Object<GdkMonitor>::take(static_cast<GdkMonitor*>(g_list_model_get_item(monitors, i)));
        GdkRectangle area = {};
        gdk_monitor_get_geometry(monitor.get(), &area);
        largest.width = std::max(largest.width, static_cast<double>(area.width));
        largest.height = std::max(largest.height, static_cast<double>(area.height));
    }
    return largest;
}

bool hasStyle(unsigned style, WindowStyle bit) { return (style & static_cast<unsigned>(bit)) != 0; }

} // namespace

Rect openingRect(Rect asked, Size screen) {
    const auto cut = [](double value, double most) { return std::clamp(std::round(finite(value)), 0.0, most); };
    return {{finite(asked.origin.x), finite(asked.origin.y)},
            {cut(asked.size.width, screen.width), cut(asked.size.height, screen.height)}};
}

Point centredClient(Size client, const x11::FrameExtents& extents, const Rect& area) {
    const double width = client.width + extents.left + extents.right;
    const double height = client.height + extents.top + extents.bottom;
    return {std::floor(area.origin.x + (area.size.width - width) / 2) + extents.left,
            std::max(area.origin.y, std::floor(area.origin.y + (area.size.height - height) / 2)) + extents.top};
}

NativeWindow::NativeWindow(GtkApp& app, Rect contentRect, unsigned style)
    : app_(app),
      window_(Object<GtkWidget>::share(gtk_application_window_new(app.application()))),
      opening_(openingRect(contentRect, largestMonitor())) {
    assertMainThread();
    content_ = std::make_shared<ContentView>(Rect{{0, 0}, opening_.size});
    gtk_window_set_child(gtkWindow(), content_->core().widget());
    gtk_window_set_decorated(gtkWindow(), hasStyle(style, WindowStyle::titled) ? TRUE : FALSE);
    gtk_window_set_deletable(gtkWindow(), hasStyle(style, WindowStyle::closable) ? TRUE : FALSE);
    gtk_window_set_resizable(gtkWindow(), hasStyle(style, WindowStyle::resizable) ? TRUE : FALSE);
    gtk_application_window_set_show_menubar(GTK_APPLICATION_WINDOW(window_.get()), TRUE);

    connections_.push_back(connect<gboolean()>(window_.get(), "close-request", [this]() -> gboolean {
        app_.windowWantsToClose(*this);
        return TRUE;
    }));
    connections_.push_back(connect<void()>(window_.get(), "realize", [this] { realized(); }));
    connections_.push_back(connect<void()>(window_.get(), "unrealize", [this] { surfaceConnections_.clear(); }));
    connections_.push_back(connect<void()>(window_.get(), "map", [this] { mapped(); }));
    connections_.push_back(
        connect<void(GParamSpec*)>(window_.get(), "notify::focus-widget", [this](GParamSpec*) { focusMoved(); }));
    app_.addWindow(*this);
}

NativeWindow::~NativeWindow() {
    app_.removeWindow(*this);
    surfaceConnections_.clear();
    menuConnections_.clear();
    connections_.clear();
    gtk_window_destroy(gtkWindow());
}

void NativeWindow::realized() {
    GdkSurface* own = surface();
    surfaceConnections_.push_back(x11::watchFrameExtents(own, [this] { frameExtentsChanged(); }));
    // An answer to an earlier size can make GTK forget a later one.
    surfaceConnections_.push_back(connect<void(int, int)>(own, "layout", [this](int, int) {
        if (g_get_monotonic_time() < settlesUntil_ && cutToScreen())
            centreNow();
    }));
    // GTK drops the close button's request while an alert is modal, and would leave no way out of alerts without end.
    surfaceConnections_.push_back(connect<gboolean(GdkEvent*)>(own, "event", [this](GdkEvent* event) -> gboolean {
        if (gdk_event_get_event_type(event) != GDK_DELETE || app_.modals().empty())
            return FALSE;
        app_.windowWantsToClose(*this);
        return TRUE;
    }));
}

void NativeWindow::mapped() {
    // GTK writes the window's state anew at each map; what was asked for earlier is lost.
    applyLevel();
    menuConnections_ = mirrorMenus(menuBarOf(window_.get()));
    if (x11::frameExtents(surface())) {
        frameExtentsChanged();
    } else if (centring_ && !x11::willHaveFrameExtents(surface())) {
        centreNow();
    }
}

void NativeWindow::focusMoved() {
    GtkWidget* focus = gtk_window_get_focus(gtkWindow());
    if (focus == nullptr)
        return;
    if (gtk_widget_is_ancestor(focus, content_->core().widget()) != FALSE) {
        contentFocus_ = Object<GtkWidget>::share(focus);
    } else if (g_get_monotonic_time() < focusReturnEnds_) {
        returnFocusSoon();
    }
}

void NativeWindow::returnFocusFromMenuBar() {
    // GTK 4.8 leaves the keyboard with the menu bar once an item was chosen with the mouse; the menu hands it there
    // while it closes, which may be after the item's action.
    focusReturnEnds_ = g_get_monotonic_time() + G_USEC_PER_SEC;
    returnFocusSoon();
}

void NativeWindow::returnFocusSoon() {
    if (focusReturn_)
        return;
    focusReturn_ = SourceId(g_idle_add_full(
        G_PRIORITY_LOW,
        [](gpointer self) -> gboolean {
            guarded([self] {
                static_cast<NativeWindow*>(self)->focusReturn_.forget();
                static_cast<NativeWindow*>(self)->returnFocusNow();
            });
            return G_SOURCE_REMOVE;
        },
        this, nullptr));
}

void NativeWindow::returnFocusNow() {
    GtkWidget* focus = gtk_window_get_focus(gtkWindow());
    GtkWidget* bar = menuBarOf(window_.get());
    const bool barHasIt = focus != nullptr && bar != nullptr && gtk_widget_is_ancestor(focus, bar) != FALSE;
    if (barHasIt && contentFocus_ && !hasOpenMenu(bar))
        gtk_widget_grab_focus(contentFocus_.get());
}

void NativeWindow::frameExtentsChanged() {
    applyMinSize();
    // The first extents can be a window manager's guess; its word follows when it has dressed the window.
    const bool settles = centring_ || g_get_monotonic_time() < settlesUntil_;
    if (settles && gtk_widget_get_mapped(window_.get()) != FALSE) {
        cutToScreen();
        centreNow();
    }
}

void NativeWindow::setTitle(const std::string& title) {
    assertMainThread();
    const GText valid(g_utf8_make_valid(title.data(), static_cast<gssize>(title.size())));
    gtk_window_set_title(gtkWindow(), valid.get());
}

void NativeWindow::setMinSize(Size size) {
    assertMainThread();
    minSize_ = {finite(size.width), finite(size.height)};
    applyMinSize();
}

void NativeWindow::applyMinSize() {
    gtk_widget_set_size_request(content_->core().widget(), whole(minSize_.width),
                                whole(minSize_.height - titleBarHeight()));
}

void NativeWindow::setLevel(WindowLevel level) {
    assertMainThread();
    const bool changes = level_ != level;
    level_ = level;
    if (!changes || gtk_widget_get_mapped(window_.get()) == FALSE)
        return;
    x11::setAbove(surface(), level_ == WindowLevel::floating);
}

void NativeWindow::applyLevel() {
    if (level_ == WindowLevel::floating)
        x11::setAbove(surface(), true);
}

void NativeWindow::setSharingType(WindowSharingType type) {
    assertMainThread();
    sharingType_ = type;
}

std::shared_ptr<View> NativeWindow::contentView() {
    assertMainThread();
    return content_;
}

void NativeWindow::applyOpeningSize() {
    GtkWidget* window = window_.get();
    gtk_widget_realize(window);
    int needed = 0;
    gtk_widget_measure(window, GTK_ORIENTATION_VERTICAL, whole(opening_.size.width), &needed, nullptr, nullptr,
                       nullptr);
    int contentNeeds = 0;
    gtk_widget_measure(content_->core().widget(), GTK_ORIENTATION_VERTICAL, -1, &contentNeeds, nullptr, nullptr,
                       nullptr);
    const int bars = needed - contentNeeds;
    gtk_window_set_default_size(gtkWindow(), whole(opening_.size.width), whole(opening_.size.height) + bars);
}

void NativeWindow::makeKeyAndOrderFront() {
    assertMainThread();
    if (!isVisible() && !lastFrame_)
        applyOpeningSize();
    raise();
}

bool NativeWindow::cutToScreen() {
    const auto area = x11::workArea(surface());
    const auto extents = x11::frameExtents(surface());
    if (!area || !extents || hasState(GDK_TOPLEVEL_STATE_MAXIMIZED))
        return false;
    int width = 0;
    int height = 0;
    gtk_window_get_default_size(gtkWindow(), &width, &height);
    const int mostWidth = whole(area->size.width - extents->left - extents->right);
    const int mostHeight = whole(area->size.height - extents->top - extents->bottom);
    if (width <= mostWidth && height <= mostHeight)
        return false;
    gtk_window_set_default_size(gtkWindow(), std::min(width, mostWidth), std::min(height, mostHeight));
    return true;
}

void NativeWindow::center() {
    assertMainThread();
    centring_ = true;
    settlesUntil_ = g_get_monotonic_time() + kSettlingTime;
    if (gtk_widget_get_mapped(window_.get()) != FALSE)
        mapped();
}

void NativeWindow::centreNow() {
    const auto area = x11::workArea(surface());
    if (!area)
        return;
    centring_ = false;
    const x11::FrameExtents extents = x11::frameExtents(surface()).value_or(x11::FrameExtents{});
    // The size that the window is going to have: the server may not know it yet.
    int width = 0;
    int height = 0;
    gtk_window_get_default_size(gtkWindow(), &width, &height);
    const Size client = {static_cast<double>(width), static_cast<double>(height)};
    x11::moveClientTo(surface(), centredClient(client, extents, *area), extents);
}

Rect NativeWindow::frame() const {
    assertMainThread();
    if (gtk_widget_get_mapped(window_.get()) == FALSE)
        return lastFrame_.value_or(opening_);

    Rect frame = {opening_.origin, content_->bounds().size};
    const auto client = x11::clientArea(surface());
    const auto screen = x11::screenHeight(surface());
    if (client && screen) {
        frame.origin.x = client->origin.x;
        frame.origin.y = *screen - client->origin.y - client->size.height;
    }
    frame.size.height += titleBarHeight();
    lastFrame_ = frame;
    return frame;
}

GdkSurface* NativeWindow::surface() const { return gtk_native_get_surface(GTK_NATIVE(window_.get())); }

int NativeWindow::menuBarHeight() const {
    GtkWidget* bar = menuBarOf(window_.get());
    return bar == nullptr ? 0 : gtk_widget_get_height(bar);
}

double NativeWindow::titleBarHeight() const {
    const auto extents = x11::frameExtents(surface());
    double height = extents ? extents->top : 0;
    // A title bar that GTK draws is part of the window: it is what lies above menu bar and content.
    double x = 0;
    double y = 0;
    if (gtk_widget_translate_coordinates(content_->core().widget(), window_.get(), 0, 0, &x, &y) != FALSE) {
        height += std::max(0.0, y - menuBarHeight());
    }
    return height;
}

bool NativeWindow::hasState(GdkToplevelState state) const {
    GdkSurface* own = surface();
    return own != nullptr && GDK_IS_TOPLEVEL(own) && (gdk_toplevel_get_state(GDK_TOPLEVEL(own)) & state) != 0;
}

bool NativeWindow::isVisible() const { return gtk_widget_get_visible(window_.get()) != FALSE; }

bool NativeWindow::isMinimized() const { return hasState(GDK_TOPLEVEL_STATE_MINIMIZED); }

bool NativeWindow::isAbove() const { return x11::isAbove(surface()); }

void NativeWindow::raise() { gtk_window_present_with_time(gtkWindow(), x11::serverTime(surface())); }

void NativeWindow::miniaturize() { gtk_window_minimize(gtkWindow()); }

void NativeWindow::zoom() {
    if (gtk_window_is_maximized(gtkWindow()) != FALSE) {
        gtk_window_unmaximize(gtkWindow());
    } else {
        gtk_window_maximize(gtkWindow());
    }
}

void NativeWindow::hide() {
    frame();
    gtk_widget_set_visible(window_.get(), FALSE);
}

std::shared_ptr<Window> makeWindow(GtkApp& app, Rect contentRect, unsigned style) {
    return std::make_shared<NativeWindow>(app, contentRect, style);
}

} // namespace vantorel::gtk
