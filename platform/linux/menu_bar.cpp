// Vantorel. MIT licence, see LICENSE.
// GTK's menu bar in a window.
#include "platform/linux/menu_bar.h"

#include <algorithm>

namespace vantorel::gtk {
namespace {

std::vector<GtkWidget*> menusOf(GtkWidget* bar) {
    std::vector<GtkWidget*> menus;
    for (GtkWidget* item = gtk_widget_get_first_child(bar); item != nullptr; item = gtk_widget_get_next_sibling(item)) {
        for (GtkWidget* part = gtk_widget_get_first_child(item); part != nullptr;
             part = gtk_widget_get_next_sibling(part)) {
            if (GTK_IS_POPOVER(part))
                menus.push_back(part);
        }
    }
    return menus;
}

/// GTK 4.8 takes the start of a menu for its left edge in every language; later versions know better.
bool startsAtItsLeftEdge(GtkWidget* menu) {
    const GdkGravity anchor = gdk_popup_get_surface_anchor(GDK_POPUP(gtk_native_get_surface(GTK_NATIVE(menu))));
    return anchor == GDK_GRAVITY_NORTH_WEST || anchor == GDK_GRAVITY_SOUTH_WEST;
}

} // namespace

GtkWidget* menuBarOf(GtkWidget* window) {
    for (GtkWidget* child = gtk_widget_get_first_child(window); child != nullptr;
         child = gtk_widget_get_next_sibling(child)) {
        if (GTK_IS_POPOVER_MENU_BAR(child) && gtk_widget_get_visible(child) != FALSE)
            return child;
    }
    return nullptr;
}

bool hasOpenMenu(GtkWidget* bar) {
    const std::vector<GtkWidget*> menus = menusOf(bar);
    return std::any_of(menus.begin(), menus.end(),
                       [](GtkWidget* menu) { return gtk_widget_get_visible(menu) != FALSE; });
}

std::vector<SignalConnection> mirrorMenus(GtkWidget* bar) {
    std::vector<SignalConnection> connections;
    if (bar == nullptr || gtk_widget_get_direction(bar) != GTK_TEXT_DIR_RTL)
        return connections;
    for (GtkWidget* menu : menusOf(bar)) {
        // Where GTK puts a menu can be asked only once it has put one somewhere.
        connections.push_back(connect<void()>(menu, "map", [bar, menu] {
            if (gtk_widget_get_halign(menu) != GTK_ALIGN_START || !startsAtItsLeftEdge(menu))
                return;
            for (GtkWidget* each : menusOf(bar)) {
                gtk_widget_set_halign(each, GTK_ALIGN_END);
            }
        }));
    }
    return connections;
}

} // namespace vantorel::gtk
