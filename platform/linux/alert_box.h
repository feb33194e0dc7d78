// Vantorel. MIT licence, see LICENSE.
// The window of an alert, from its being shown to its being gone.
#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/appkit.h"
#include "platform/linux/object.h"
#include "platform/linux/x11.h"

namespace vantorel::gtk {

class GtkApp;

/// What an alert's window shows.
struct AlertContent {
    std::string messageText;
    std::string informativeText;
    AlertStyle style = AlertStyle::warning;
    std::vector<std::string> buttons;
    /// May be null; must outlive the box.
    TextField* accessory = nullptr;
    /// What Escape answers.
    long escapeCode = 0;
};

/// Where the client area of a box begins that stands in the middle of `over` and, as far as it fits, within `screen`.
Point boxCorner(Size client, const x11::FrameExtents& extents, const Rect& over, const Rect& screen);

class AlertBox {
public:
    /// Shows the box. `answered` is called with a code when a button was pressed or the box was asked to close, perhaps
    /// more than once. The box goes away when released.
    AlertBox(GtkApp& app, const AlertContent& content, std::function<void(long)> answered);
    AlertBox(const AlertBox&) = delete;
    AlertBox& operator=(const AlertBox&) = delete;
    ~AlertBox();

    GtkWindow* window() const { return GTK_WINDOW(window_.get()); }

private:
    GtkWidget* makeTexts(const AlertContent& content);
    GtkWidget* makeButtons(const std::vector<std::string>& titles);
    GtkWidget* accessoryWidget(TextField& field);
    void connectKeys(long escapeCode);

    std::function<void(long)> answered_;
    Object<GtkWidget> window_;
    GtkWidget* defaultButton_ = nullptr;
    /// The accessory's own control, which gets the keyboard first; null without an accessory.
    GtkWidget* field_ = nullptr;
    std::vector<SignalConnection> connections_;
};

} // namespace vantorel::gtk
