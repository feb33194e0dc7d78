// Vantorel. MIT licence, see LICENSE.
// Which X windows are the application's own.
#pragma once

#include <X11/Xlib.h>

#include <gdk/gdk.h>

namespace vantorel::gtk {

/// The numbers that the server gave one client for its windows. A plain value, for any thread.
struct WindowNumbers {
    XID base = 0;
    XID mask = 0;

    bool contain(XID window) const { return mask != 0 && window != None && (window & ~mask) == base; }
};

/// The numbers of every window that the toolkit makes on `display`: top levels, alerts, menus. None for a display that
/// is not an X11 one. Main thread.
WindowNumbers windowNumbersOf(GdkDisplay* display);

/// Whether the keyboard belongs to one of `own` now: the window with the input focus, or where the focus follows the
/// pointer the one below it. One question to the server, or a few.
bool hasKeyboard(Display* display, const WindowNumbers& own);

} // namespace vantorel::gtk
