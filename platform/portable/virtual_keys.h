// Vantorel. MIT licence, see LICENSE.
// Key positions and held modifiers in the terms of the hotkey table: virtual key codes and the modifier word.
#pragma once

#include <cstdint>
#include <optional>

namespace vantorel {

/// What to report for a key that has no virtual key code; no key of the table bears it.
inline constexpr std::uint16_t kUnknownVirtualKeyCode = 0xFFFF;

/// The bits of the modifier word (AppKit's modifier flags).
namespace modifier_bits {
inline constexpr std::uint64_t kCapsLock = 0x10000;
inline constexpr std::uint64_t kShift = 0x20000;
inline constexpr std::uint64_t kControl = 0x40000;
inline constexpr std::uint64_t kOption = 0x80000;
inline constexpr std::uint64_t kCommand = 0x100000;
inline constexpr std::uint64_t kNumericPad = 0x200000;
inline constexpr std::uint64_t kHelp = 0x400000;
inline constexpr std::uint64_t kFunction = 0x800000;
} // namespace modifier_bits

/// The modifiers that are down (Caps Lock: switched on) while a key is pressed.
struct HeldModifiers {
    bool capsLock = false;
    bool shift = false;
    bool control = false;
    bool option = false;
    bool command = false;
    friend bool operator==(const HeldModifiers&, const HeldModifiers&) = default;
};

/// The 16-bit virtual key code of the key at the position that evdev calls `evdevCode` (an X key code less 8), whatever
/// the layout; empty for a position that the home platform's keyboards do not have. Any thread.
std::optional<std::uint16_t> virtualKeyCode(unsigned evdevCode);

/// True for the keys that only change modifiers (Shift, Control, Option, Command, Caps Lock, Fn): pressing one is no
/// key-down event. Any thread.
bool isModifierKey(std::uint16_t virtualKey);

/// The modifier word of a key-down event: the held modifiers, with the number pad bit for keys of the number pad and
/// arrows, the function bit for function, arrow and navigation keys, and the help bit for Help. The device-dependent
/// low 16 bits are always clear: left and right are not told apart. Any thread.
std::uint64_t modifierFlags(const HeldModifiers& held, std::uint16_t virtualKey);

} // namespace vantorel
