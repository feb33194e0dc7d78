// Vantorel. MIT licence, see LICENSE.
// The judge of key presses: logs each one and passes hotkeys on.
#pragma once

#include <functional>
#include <string>

#include "hotkeys/hotkey_table.h"
#include "platform/appkit.h"

namespace vantorel {

/// What both monitors call for a key press. A value: every monitor has its own copy. Main thread.
class KeyHandler {
public:
    /// `onHotkey` gets the command name of each press of a hotkey, repeats included.
    KeyHandler(HotkeyTable table, std::function<void(const std::string&)> onHotkey);

    void operator()(const KeyEvent& event) const;

private:
    HotkeyTable table_;
    std::function<void(const std::string&)> onHotkey_;
};

} // namespace vantorel
