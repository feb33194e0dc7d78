// Vantorel. MIT licence, see LICENSE.
// Presses keys on the display of the test through XTEST, as a keyboard would.
#pragma once

#include <X11/Xlib.h>

#include <X11/extensions/XTest.h>

#include "platform/linux/x_connection.h"

namespace vantorel::gtk::test {

/// X key codes of some positions on every PC keyboard.
namespace keys {
inline constexpr unsigned kA = 38;
inline constexpr unsigned kS = 39;
inline constexpr unsigned kZ = 52;
inline constexpr unsigned kLeftShift = 50;
inline constexpr unsigned kLeftControl = 37;
inline constexpr unsigned kLeftAlt = 64;
inline constexpr unsigned kLeftSuper = 133;
inline constexpr unsigned kCapsLock = 66;
inline constexpr unsigned kLeftArrow = 113;
inline constexpr unsigned kKeypad5 = 84;
} // namespace keys

class KeyDriver {
public:
    Display* display() const { return connection_.get(); }
    explicit operator bool() const { return static_cast<bool>(connection_); }

    void press(unsigned keyCode) { send(keyCode, True); }
    void release(unsigned keyCode) { send(keyCode, False); }
    void tap(unsigned keyCode) {
        press(keyCode);
        release(keyCode);
    }

    /// Gives the keyboard to `window`, or to nobody.
    void focus(XID window) {
        XSetInputFocus(display(), window, RevertToNone, CurrentTime);
        XSync(display(), False);
    }

    /// A mapped window that takes key presses, as another program has them, or takes none.
    XID makeWindow(long eventMask) {
        const XID window = XCreateSimpleWindow(display(), DefaultRootWindow(display()), 0, 0, 50, 50, 0, 0, 0);
        XSetWindowAttributes attributes{};
        attributes.override_redirect = True;
        XChangeWindowAttributes(display(), window, CWOverrideRedirect, &attributes);
        XSelectInput(display(), window, eventMask);
        XMapWindow(display(), window);
        XSync(display(), False);
        return window;
    }

private:
    void send(unsigned keyCode, Bool isDown) {
        XTestFakeKeyEvent(display(), keyCode, isDown, CurrentTime);
        XFlush(display());
    }

    XConnection connection_{""};
};

} // namespace vantorel::gtk::test
