// Vantorel. MIT licence, see LICENSE.
// From a key press in the window system's terms to the seam's key event.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/appkit.h"
#include "platform/portable/virtual_keys.h"

namespace vantorel::gtk {

/// A key press as the window system tells it.
struct PressedKey {
    /// The key's number, 8 above evdev's; so on X11 and, in GTK, on Wayland too.
    unsigned keyCode = 0;
    /// The symbol (keysym) that the key gives under the present layout and modifiers; 0 for none.
    std::uint32_t symbol = 0;
    HeldModifiers held;
};

/// The characters of a key press: nothing for a key that types none (arrows, function keys), an empty text for a dead
/// key. With Control held, letters and @[\]^_ give the control characters U+0000 to U+001F; Backspace gives U+007F, the
/// number pad's Enter U+0003 and a tab backwards U+0019, as they do on the home platform.
std::optional<std::string> charactersOf(std::uint32_t symbol, bool controlHeld);

/// The event for a press, or nothing when the key only changes modifiers. A key at a position that the table of virtual
/// key codes does not have gets kUnknownVirtualKeyCode.
std::optional<KeyEvent> keyEventOf(const PressedKey& press);

} // namespace vantorel::gtk
