// Vantorel. MIT licence, see LICENSE.
// Which X windows are the application's own, as a plain value.
#pragma once

#include <gdk/gdk.h>

namespace vantorel::gtk {

/// The numbers (XIDs) that the X server gave one client for its windows. For any thread.
struct WindowNumbers {
    unsigned long base = 0;
    /// The bits that differ from one window of the client to another; 0 for no windows at all.
    unsigned long mask = 0;

    bool contain(unsigned long window) const { return mask != 0 && window != 0 && (window & ~mask) == base; }
};

/// The numbers of every window that the toolkit makes on `display`: top levels, alerts, menus. None for a display that
/// is not an X11 one. Main thread.
WindowNumbers windowNumbersOf(GdkDisplay* display);

} // namespace vantorel::gtk
