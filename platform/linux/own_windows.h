// Vantorel. MIT licence, see LICENSE.
// Asking an X connection for its windows, and the server for the window with the keyboard.
#pragma once

#include <X11/Xlib.h>

#include "platform/linux/window_numbers.h"

namespace vantorel::gtk {

/// The numbers of every window that is made through `connection`. Any thread.
WindowNumbers windowNumbersOf(const Display* connection);

/// Whether the keyboard belongs to one of `own` now: the window with the input focus, or where the focus follows the
/// pointer the one below it. One question to the server, or a few.
bool hasKeyboard(Display* display, const WindowNumbers& own);

} // namespace vantorel::gtk
