// Vantorel. MIT licence, see LICENSE.
// The X server's keyboard layout, kept up to date: from a key and its state to what it types.
#pragma once

#include <X11/XKBlib.h>
#include <X11/Xlib.h>

#include <memory>

#include "platform/linux/key_events.h"

namespace vantorel::gtk {

/// The layout as one connection learns it. For the thread that uses the connection.
class KeyboardMap {
public:
    /// Asks to be told of changes on `display`, which outlives the map.
    explicit KeyboardMap(Display* display);

    /// To be called with each event of the connection.
    void notice(const XEvent& event);

    /// The press of the key `keyCode` in the core state `state`, group bits included.
    PressedKey pressedKey(unsigned keyCode, unsigned state);

private:
    struct FreeDescription {
        void operator()(XkbDescPtr description) const { XkbFreeKeyboard(description, XkbAllComponentsMask, True); }
    };

    void fetch();
    unsigned long symbolOf(unsigned keyCode, unsigned state) const;

    Display* display_;
    int eventBase_ = 0;
    unsigned optionMask_ = Mod1Mask;
    unsigned commandMask_ = Mod4Mask;
    // None when it is to be fetched anew.
    std::unique_ptr<XkbDescRec, FreeDescription> description_;
};

} // namespace vantorel::gtk
