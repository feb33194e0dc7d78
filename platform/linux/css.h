// Vantorel. MIT licence, see LICENSE.
// Colours and style sheets: the palette's shades, and one style of its own for a widget.
#pragma once

#include <gtk/gtk.h>

#include <string>

#include "platform/color.h"
#include "platform/linux/object.h"

namespace vantorel::gtk {

/// The shade for `color`. The palette's shades have a contrast of at least 4.5 to 1 on the light strip they are shown
/// on, whatever the desktop's scheme.
GdkRGBA rgbaOf(const Color& color);

/// `color` as a style sheet spells it, whatever the locale.
std::string cssColor(const GdkRGBA& color);

/// The contrast of two opaque colours, from 1 (none) to 21.
double contrast(const GdkRGBA& one, const GdkRGBA& other);

/// Near black or white, whichever reads better on `background`.
GdkRGBA readableOn(const GdkRGBA& background);

/// Square menus without a shadow where the display cannot blend windows; they would stand in black frames there.
void styleMenusFor(GdkDisplay* display);

/// Style declarations for one widget, above the theme's and the user's. Children inherit what CSS lets them inherit.
class Style {
public:
    Style() = default;
    Style(const Style&) = delete;
    Style& operator=(const Style&) = delete;
    Style(Style&&) = delete;
    ~Style();

    /// Replaces the declarations of `widget` ("color: red; border: none;").
    void set(GtkWidget* widget, const std::string& declarations);

private:
    void release();

    Object<GtkWidget> widget_;
    Object<GtkCssProvider> provider_;
};

} // namespace vantorel::gtk
