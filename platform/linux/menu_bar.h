// Vantorel. MIT licence, see LICENSE.
// GTK's menu bar in a window: which one it is, its menus, and where they open.
#pragma once

#include <gtk/gtk.h>

#include <vector>

#include "platform/linux/object.h"

namespace vantorel::gtk {

/// The menu bar that shows in `window`; null while there is none.
GtkWidget* menuBarOf(GtkWidget* window);

/// Whether a menu of the menu bar `bar` is open.
bool hasOpenMenu(GtkWidget* bar);

/// Makes the menus of `bar` (may be null) open towards the window's middle where text runs from right to left. Lasts as
/// long as the connections.
std::vector<SignalConnection> mirrorMenus(GtkWidget* bar);

} // namespace vantorel::gtk
