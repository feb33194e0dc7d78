// Vantorel. MIT licence, see LICENSE.
// The top level window: content of the size asked for, a menu bar above it, and what the window manager is asked to do.
#pragma once

#include <gtk/gtk.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/appkit.h"
#include "platform/linux/object.h"
#include "platform/linux/view.h"
#include "platform/linux/x11.h"

namespace vantorel::gtk {

class GtkApp;

/// A content rectangle with finite numbers, cut to sizes that a display of `screen` can show.
Rect openingRect(Rect asked, Size screen);

/// Where the client area of a window begins whose frame stands in the middle of `area`. The title bar stays in it.
Point centredClient(Size client, const x11::FrameExtents& extents, const Rect& area);

class NativeWindow : public Window {
public:
    /// `app` must outlive the window.
    NativeWindow(GtkApp& app, Rect contentRect, unsigned style);
    NativeWindow(const NativeWindow&) = delete;
    NativeWindow& operator=(const NativeWindow&) = delete;
    ~NativeWindow() override;

    void setTitle(const std::string& title) override;
    void setMinSize(Size size) override;
    void setLevel(WindowLevel level) override;
    void setSharingType(WindowSharingType type) override;
    std::shared_ptr<View> contentView() override;
    void makeKeyAndOrderFront() override;
    void center() override;
    Rect frame() const override;

    GtkWindow* gtkWindow() const { return GTK_WINDOW(window_.get()); }
    bool isVisible() const;
    bool isMinimized() const;
    /// Whether the window manager keeps the window above the others at present.
    bool isAbove() const;
    WindowSharingType sharingType() const { return sharingType_; }

    /// Brings the window to the front, with the keyboard, from wherever it is.
    void raise();
    void miniaturize();
    /// Maximises the window, or gives it back its size.
    void zoom();
    void hide();
    /// Gives the keyboard back to the content when the menu bar has it, as soon as the menu is gone.
    void returnFocusFromMenuBar();

private:
    void realized();
    void mapped();
    void focusMoved();
    void returnFocusSoon();
    void returnFocusNow();
    void frameExtentsChanged();
    void applyMinSize();
    void applyLevel();
    /// Makes the window as large as the content asked for needs.
    void applyOpeningSize();
    /// Cuts a window that is larger than what panels leave free. True when it had to.
    bool cutToScreen();
    void centreNow();

    GdkSurface* surface() const;
    int menuBarHeight() const;
    /// The title bar's height, drawn by the window manager or by GTK itself.
    double titleBarHeight() const;
    bool hasState(GdkToplevelState state) const;

    GtkApp& app_;
    Object<GtkWidget> window_;
    std::shared_ptr<ViewOf<View>> content_;
    Rect opening_;
    Size minSize_;
    WindowLevel level_ = WindowLevel::normal;
    WindowSharingType sharingType_ = WindowSharingType::readOnly;
    bool centring_ = false;
    /// Until then a change of the frame around the window puts it in the middle again. On GLib's monotonic clock.
    gint64 settlesUntil_ = 0;
    mutable std::optional<Rect> lastFrame_;
    /// The widget of the content that had the keyboard last.
    Object<GtkWidget> contentFocus_;
    SourceId focusReturn_;
    /// Until when (GLib's monotonic clock) the menu bar has to give the keyboard back.
    gint64 focusReturnEnds_ = 0;
    std::vector<SignalConnection> connections_;
    std::vector<SignalConnection> surfaceConnections_;
    std::vector<SignalConnection> menuConnections_;
};

std::shared_ptr<Window> makeWindow(GtkApp& app, Rect contentRect, unsigned style);

} // namespace vantorel::gtk
