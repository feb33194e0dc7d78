// Vantorel. MIT licence, see LICENSE.
// Asking an X connection for its windows, and the server for the window with the keyboard.

#include "platform/linux/own_windows.h"

#include <gdk/x11/gdkx.h>

// The client's range of numbers is in no public call of Xlib; this header, made for extension libraries, has it.
#include <X11/Xlibint.h>

namespace vantorel::gtk {

namespace {

Window windowBelowPointer(Display* display) {
    Window window = DefaultRootWindow(display);
    while (true) {
        Window root = None;
        Window child = None;
        int rootX = 0;
        int rootY = 0;
        int x = 0;
        int y = 0;
        unsigned buttons = 0;
        if (XQueryPointer(display, window, &root, &child, &rootX, &rootY, &x, &y, &buttons) == 0 || child == None) {
            return window;
        }
        window = child;
    }
}

} // namespace

WindowNumbers windowNumbersOf(const Display* connection) {
    return {connection->resource_base, connection->resource_mask};
}

WindowNumbers windowNumbersOf(GdkDisplay* display) {
    return GDK_IS_X11_DISPLAY(display) ? windowNumbersOf(gdk_x11_display_get_xdisplay(display)) : WindowNumbers{};
}

bool hasKeyboard(Display* display, const WindowNumbers& own) {
    Window focus = None;
    int revert = 0;
    XGetInputFocus(display, &focus, &revert);
    if (focus == PointerRoot) {
        focus = windowBelowPointer(display);
    }
    return own.contain(focus);
}

} // namespace vantorel::gtk
