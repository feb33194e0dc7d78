// Vantorel. MIT licence, see LICENSE.
// How far key presses can be watched in this session.
#pragma once

#include <string>

namespace vantorel::gtk {

enum class KeyReach {
    /// Only what GTK delivers to the application's own windows: no X server, or one without the RECORD extension.
    ownWindows,
    /// What the X server sees under a Wayland compositor: the application and other X programs, while they have the
    /// keyboard.
    xPrograms,
    /// Every key press of the session.
    everyProgram,
};

/// Looks at the session's kind and the display's extensions. Main thread, after GTK was initialised.
KeyReach keyReach();

/// The X display that the application's own windows are on; empty when they are on another kind of display.
std::string xDisplayName();

} // namespace vantorel::gtk
