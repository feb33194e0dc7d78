// Vantorel. MIT licence, see LICENSE.
// Which X windows are the application's own.

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

WindowNumbers windowNumbersOf(GdkDisplay* display) {
    if (!GDK_IS_X11_DISPLAY(display)) {
        return {};
    }
    const Display* connection = gdk_x11_display_get_xdisplay(display);
    return {connection->resource_base, connection->resource_mask};
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
