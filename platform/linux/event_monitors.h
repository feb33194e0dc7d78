// Vantorel. MIT licence, see LICENSE.
// Monitors of key presses, of the whole session and of the application.
#pragma once

#include <memory>

#include "platform/appkit.h"

namespace vantorel::gtk {

/// On X11 presses come from the server's RECORD extension: also those in the application's own windows, whatever the
/// page does with them, and a local monitor cannot drop any. Elsewhere local monitors get what GTK delivers, and there
/// are no global ones.
std::unique_ptr<EventMonitors> makeEventMonitors();

} // namespace vantorel::gtk
