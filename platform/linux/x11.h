// Vantorel. MIT licence, see LICENSE.
// What GTK 4 has no call for on X11: the window manager's frame, placing a window, keeping it above, raising it.
//
// Everything here is in application pixels (the server's divided by the surface's scale), with y growing downwards. On
// a display that is not X11 each question is answered with "nothing" and each request does nothing.
#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <optional>

#include "platform/geometry.h"
#include "platform/linux/object.h"

namespace vantorel::gtk::x11 {

/// What the window manager draws around a window.
struct FrameExtents {
    double left = 0;
    double right = 0;
    double top = 0;
    double bottom = 0;
    friend bool operator==(const FrameExtents&, const FrameExtents&) = default;
};

bool isX11(GdkDisplay* display);

/// Sets the class part of WM_CLASS for windows to come; GTK would write the program's name with a capital letter.
void setProgramClass(GdkDisplay* display, const char* name);

/// Whether a window manager runs that tells the frames it draws.
bool willHaveFrameExtents(GdkSurface* surface);

/// The frame that the window manager put around `surface`; nothing while it has not told it.
std::optional<FrameExtents> frameExtents(GdkSurface* surface);

/// The client area of `surface` on the screen: top left corner and size.
std::optional<Rect> clientArea(GdkSurface* surface);

/// The part of the monitor under `surface` that panels leave free.
std::optional<Rect> workArea(GdkSurface* surface);

/// The height of the whole screen, all monitors together.
std::optional<double> screenHeight(GdkSurface* surface);

/// Moves the window so that its client area begins at `corner`; `extents` is what surrounds it.
void moveClientTo(GdkSurface* surface, Point corner, const FrameExtents& extents);

/// Asks the window manager to keep the window above all others, or no longer. For mapped windows only.
void setAbove(GdkSurface* surface, bool above);

/// Whether the window manager says that it does. GTK 4 does not pass this state on.
bool isAbove(GdkSurface* surface);

/// A time stamp that lets a window be raised although no input asked for it; GDK_CURRENT_TIME elsewhere.
guint32 serverTime(GdkSurface* surface);

/// Calls `changed` whenever the window manager tells a new frame for `surface`.
[[nodiscard]] SignalConnection watchFrameExtents(GdkSurface* surface, std::function<void()> changed);

} // namespace vantorel::gtk::x11
