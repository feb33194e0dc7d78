// Vantorel. MIT licence, see LICENSE.
// The X server's keyboard layout, kept up to date: from a key and its state to what it types.

#include "platform/linux/keyboard_map.h"

#include <X11/keysym.h>
#include <xkbcommon/xkbcommon.h>

namespace vantorel::gtk {

namespace {

constexpr unsigned kChanges = XkbNewKeyboardNotifyMask | XkbMapNotifyMask;
constexpr unsigned kParts =
    XkbKeyTypesMask | XkbKeySymsMask | XkbModifierMapMask | XkbVirtualModsMask | XkbVirtualModMapMask;

// The modifier bits of the first of two symbols that has a key; the customary ones when neither has.
unsigned maskOf(Display* display, KeySym symbol, KeySym other, unsigned custom) {
    unsigned mask = XkbKeysymToModifiers(display, symbol);
    if (mask == 0) {
        mask = XkbKeysymToModifiers(display, other);
    }
    return mask != 0 ? mask : custom;
}

} // namespace

KeyboardMap::KeyboardMap(Display* display) : display_(display) {
    int opcode = 0;
    int error = 0;
    int major = XkbMajorVersion;
    int minor = XkbMinorVersion;
    if (XkbQueryExtension(display, &opcode, &eventBase_, &error, &major, &minor) != 0) {
        XkbSelectEvents(display, XkbUseCoreKbd, kChanges, kChanges);
    }
}

void KeyboardMap::notice(const XEvent& event) {
    if (event.type == MappingNotify || (eventBase_ != 0 && event.type == eventBase_)) {
        // Xlib keeps a map of its own, which tells what the modifiers are.
        XMappingEvent mapping = event.xmapping;
        if (event.type == MappingNotify) {
            XRefreshKeyboardMapping(&mapping);
        }
        description_.reset();
    }
}

void KeyboardMap::fetch() {
    description_.reset(XkbGetMap(display_, kParts, XkbUseCoreKbd));
    optionMask_ = maskOf(display_, XK_Alt_L, XK_Alt_R, Mod1Mask);
    commandMask_ = maskOf(display_, XK_Super_L, XK_Super_R, Mod4Mask);
}

unsigned long KeyboardMap::symbolOf(unsigned keyCode, unsigned state) const {
    KeySym symbol = NoSymbol;
    unsigned consumed = 0;
    if (!description_ ||
        XkbTranslateKeyCode(description_.get(), static_cast<KeyCode>(keyCode), state, &consumed, &symbol) == 0) {
        return NoSymbol;
    }
    const bool capsLockIsLeft = (state & LockMask) != 0 && (consumed & LockMask) == 0;
    return capsLockIsLeft ? xkb_keysym_to_upper(static_cast<xkb_keysym_t>(symbol)) : symbol;
}

PressedKey KeyboardMap::pressedKey(unsigned keyCode, unsigned state) {
    if (!description_) {
        fetch();
    }
    PressedKey press;
    press.keyCode = keyCode;
    press.symbol = static_cast<std::uint32_t>(symbolOf(keyCode, state));
    press.held.capsLock = (state & LockMask) != 0;
    press.held.shift = (state & ShiftMask) != 0;
    press.held.control = (state & ControlMask) != 0;
    press.held.option = (state & optionMask_) != 0;
    press.held.command = (state & commandMask_) != 0;
    return press;
}

} // namespace vantorel::gtk
