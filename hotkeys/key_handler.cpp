// Vantorel. MIT licence, see LICENSE.
// The judge of key presses. Every press is on the log, ordinary typing included: that is how a chord that does not work
// is found out.
#include "hotkeys/key_handler.h"

#include <utility>

#include "app/log.h"

namespace vantorel {

namespace {

struct Modifier {
    std::uint64_t bit;
    const char* name;
};

constexpr Modifier kShift{0x20000, "Shift"};
constexpr Modifier kControl{0x40000, "Ctrl"};
constexpr Modifier kOption{0x80000, "Option"};
constexpr Modifier kCommand{0x100000, "Cmd"};
/// In the order of the log. Other bits (Caps Lock, Fn, number pad, left or right) do not matter.
constexpr Modifier kChord[] = {kShift, kControl, kOption, kCommand};

/// Logs the state of the chord's modifiers and whatever is missing; true when nothing is.
bool allModifiersPressed(std::uint64_t flags) {
    std::string state = "   Modifiers: ";
    std::string_view separator;
    bool complete = true;
    for (const Modifier& modifier : kChord) {
        const bool pressed = (flags & modifier.bit) != 0;
        state.append(separator).append(modifier.name).append(pressed ? "=true" : "=false");
        separator = ", ";
        complete = complete && pressed;
    }
    logLine(state);
    for (const Modifier& modifier : kChord) {
        if ((flags & modifier.bit) == 0)
            logLine(std::string("   ⚠️ Missing: ") + modifier.name);
    }
    return complete;
}

} // namespace

KeyHandler::KeyHandler(HotkeyTable table, std::function<void(const std::string&)> onHotkey)
    : table_(std::move(table)),
      onHotkey_(std::move(onHotkey)) {}

void KeyHandler::operator()(const KeyEvent& event) const {
    const std::string keyCode = std::to_string(event.keyCode);
    logLine("🔔 Key event detected: keyCode=" + keyCode + ", modifiers=" + std::to_string(event.modifierFlags) +
            ", characters=" + event.characters.value_or("nil"));
    if (!allModifiersPressed(event.modifierFlags)) {
        logLine("   ❌ Not all modifiers pressed - ignoring");
        return;
    }
    logLine("   ✅ All modifiers present!");

    const auto hotkey = table_.find(event.keyCode);
    if (hotkey == table_.end()) {
        logLine("⚠️ Unknown keyCode: " + keyCode + " with all modifiers");
        logLine("   Available keyCodes: " + keyCodeList(table_));
        return;
    }
    logLine("🔥 Hotkey detected: " + hotkey->second + " (keyCode: " + keyCode + ")");
    onHotkey_(hotkey->second);
}

} // namespace vantorel
