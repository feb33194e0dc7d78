// Vantorel. MIT licence, see LICENSE.
// From a key press in the window system's terms to the seam's key event.

#include "platform/linux/key_events.h"

#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon.h>

#include <array>

namespace vantorel::gtk {

namespace {

constexpr unsigned kEvdevOffset = 8;

bool isBetween(std::uint32_t symbol, std::uint32_t first, std::uint32_t last) {
    return symbol >= first && symbol <= last;
}

// Num Lock is not among them: at its position the home platform has a key that types.
bool changesModifiers(std::uint32_t symbol) {
    return isBetween(symbol, XKB_KEY_Shift_L, XKB_KEY_Hyper_R) || symbol == XKB_KEY_Mode_switch ||
           isBetween(symbol, XKB_KEY_ISO_Lock, XKB_KEY_ISO_Level5_Lock);
}

bool isDead(std::uint32_t symbol) {
    constexpr std::uint32_t kLastDead = 0xfe93;
    return isBetween(symbol, XKB_KEY_dead_grave, kLastDead);
}

std::uint16_t positionOf(unsigned keyCode) {
    const auto position = keyCode >= kEvdevOffset ? virtualKeyCode(keyCode - kEvdevOffset) : std::nullopt;
    return position ? *position : kUnknownVirtualKeyCode;
}

std::string controlCharacter(const std::string& text) {
    if (text.size() != 1) {
        return text;
    }
    const char letter = text.front();
    const bool hasControl = (letter >= '@' && letter <= '_') || (letter >= 'a' && letter <= 'z');
    constexpr char kControlBits = 0x1f;
    return hasControl ? std::string(1, static_cast<char>(letter & kControlBits)) : text;
}

} // namespace

std::optional<std::string> charactersOf(std::uint32_t symbol, bool controlHeld) {
    switch (symbol) {
    case XKB_KEY_BackSpace:
        return "\x7f";
    case XKB_KEY_KP_Enter:
        return "\x03";
    case XKB_KEY_ISO_Left_Tab:
        return "\x19";
    case XKB_KEY_Delete:
        return std::nullopt;
    default:
        break;
    }
    if (isDead(symbol)) {
        return "";
    }
    std::array<char, 8> buffer{};
    // The count takes in the NUL at the end.
    const int count = xkb_keysym_to_utf8(symbol, buffer.data(), buffer.size());
    if (count <= 1) {
        return std::nullopt;
    }
    const std::string text(buffer.data(), static_cast<std::size_t>(count - 1));
    return controlHeld ? controlCharacter(text) : text;
}

std::optional<KeyEvent> keyEventOf(const PressedKey& press) {
    const std::uint16_t position = positionOf(press.keyCode);
    // What the layout makes of a key counts; the position decides for a key without a symbol.
    if (press.symbol != 0 ? changesModifiers(press.symbol) : isModifierKey(position)) {
        return std::nullopt;
    }
    KeyEvent event;
    event.keyCode = position;
    event.modifierFlags = modifierFlags(press.held, event.keyCode);
    event.characters = charactersOf(press.symbol, press.held.control);
    return event;
}

} // namespace vantorel::gtk
