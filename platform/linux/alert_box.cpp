// Vantorel. MIT licence, see LICENSE.
// The window of an alert.
#include "platform/linux/alert_box.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "platform/linux/alert.h"
#include "platform/linux/application.h"
#include "platform/linux/window.h"
#include "platform/linux/x11.h"

namespace vantorel::gtk {
namespace {

constexpr int kMargin = 20;
constexpr int kGap = 12;
constexpr int kLeastTextWidth = 300;
constexpr int kMostTextHeight = 320;
constexpr int kCharactersInLine = 56;
/// From this length on a text gets a scroll bar.
constexpr std::size_t kLongText = 900;
constexpr int kLongTextLines = 14;

const char* iconOf(AlertStyle style) {
    switch (style) {
    case AlertStyle::warning:
        return "dialog-warning";
    case AlertStyle::informational:
        return "dialog-information";
    case AlertStyle::critical:
        return "dialog-error";
    }
    return "dialog-information";
}

GtkWidget* makeIcon(AlertStyle style) {
    std::string name = iconOf(style);
    // Newer icon themes have these in one colour only.
    GtkIconTheme* theme = gtk_icon_theme_get_for_display(gdk_display_get_default());
    if (gtk_icon_theme_has_icon(theme, name.c_str()) == FALSE)
        name += "-symbolic";
    GtkWidget* icon = gtk_image_new_from_icon_name(name.c_str());
    gtk_image_set_pixel_size(GTK_IMAGE(icon), 48);
    gtk_widget_set_valign(icon, GTK_ALIGN_START);
    return icon;
}

GtkWidget* makeLabel(const std::string& text) {
    GtkWidget* label = gtk_label_new(alertText(text).c_str());
    gtk_label_set_wrap(GTK_LABEL(label), TRUE);
    gtk_label_set_wrap_mode(GTK_LABEL(label), PANGO_WRAP_WORD_CHAR);
    gtk_label_set_max_width_chars(GTK_LABEL(label), kCharactersInLine);
    gtk_label_set_xalign(GTK_LABEL(label), 0);
    gtk_label_set_yalign(GTK_LABEL(label), 0);
    return label;
}

GtkWidget* makeInformativeText(const std::string& text) {
    GtkWidget* label = makeLabel(text);
    gtk_label_set_selectable(GTK_LABEL(label), TRUE);
    if (text.size() < kLongText && std::count(text.begin(), text.end(), '\n') < kLongTextLines)
        return label;

    GtkWidget* scroller = gtk_scrolled_window_new();
    gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroller), GTK_POLICY_NEVER, GTK_POLICY_AUTOMATIC);
    gtk_scrolled_window_set_propagate_natural_height(GTK_SCROLLED_WINDOW(scroller), TRUE);
    gtk_scrolled_window_set_propagate_natural_width(GTK_SCROLLED_WINDOW(scroller), TRUE);
    gtk_scrolled_window_set_max_content_height(GTK_SCROLLED_WINDOW(scroller), kMostTextHeight);
    gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scroller), label);
    return scroller;
}

/// Puts the box into the middle of its parent, or of the screen when it has none, and within the screen.
void centre(GtkWindow* box) {
    GdkSurface* own = gtk_native_get_surface(GTK_NATIVE(box));
    GtkWindow* parent = gtk_window_get_transient_for(box);
    const auto screen = x11::workArea(own);
    const auto over = parent == nullptr ? screen : x11::clientArea(gtk_native_get_surface(GTK_NATIVE(parent)));
    const auto client = x11::clientArea(own);
    if (!screen || !over || !client)
        return;
    // The server may not know the box's size yet.
    GtkRequisition needed = {};
    gtk_widget_get_preferred_size(GTK_WIDGET(box), nullptr, &needed);
    const Size size = {std::max(client->size.width, static_cast<double>(needed.width)),
                       std::max(client->size.height, static_cast<double>(needed.height))};
    const auto extents = x11::frameExtents(own).value_or(x11::FrameExtents{});
    x11::moveClientTo(own, boxCorner(size, extents, *over, *screen), extents);
}

/// The topmost window of the application: the newest alert, or the main window while it is on the screen.
GtkWindow* parentFor(GtkApp& app) {
    if (GtkWindow* alert = app.modals().topWindow())
        return alert;
    const NativeWindow* main = app.frontWindow();
    // Window managers hide the dialogs of a minimised window together with it.
    return main != nullptr && main->isVisible() && !main->isMinimized() ? main->gtkWindow() : nullptr;
}

} // namespace

Point boxCorner(Size client, const x11::FrameExtents& extents, const Rect& over, const Rect& screen) {
    const auto along = [](double size, double before, double after, double begin, double length, double screenBegin,
                          double screenLength) {
        const double least = screenBegin + before;
        const double most = screenBegin + screenLength - after - size;
        return std::max(least, std::min(most, std::floor(begin + (length - size) / 2)));
    };
    return {along(client.width, extents.left, extents.right, over.origin.x, over.size.width, screen.origin.x,
                  screen.size.width),
            along(client.height, extents.top, extents.bottom, over.origin.y, over.size.height, screen.origin.y,
                  screen.size.height)};
}

AlertBox::AlertBox(GtkApp& app, const AlertContent& content, std::function<void(long)> answered)
    : answered_(std::move(answered)),
      window_(Object<GtkWidget>::share(
          GTK_WIDGET(g_object_new(GTK_TYPE_WINDOW, "accessible-role", GTK_ACCESSIBLE_ROLE_ALERT_DIALOG, nullptr)))) {
    gtk_window_set_title(window(), kShortName);
    gtk_window_set_modal(window(), TRUE);
    gtk_window_set_resizable(window(), FALSE);
    gtk_window_set_application(window(), app.application());
    gtk_window_set_transient_for(window(), parentFor(app));

    GtkWidget* column = gtk_box_new(GTK_ORIENTATION_VERTICAL, kMargin);
    gtk_widget_set_margin_start(column, kMargin);
    gtk_widget_set_margin_end(column, kMargin);
    gtk_widget_set_margin_top(column, kMargin);
    gtk_widget_set_margin_bottom(column, kMargin);
    GtkWidget* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, kMargin);
    gtk_box_append(GTK_BOX(row), makeIcon(content.style));
    gtk_box_append(GTK_BOX(row), makeTexts(content));
    gtk_box_append(GTK_BOX(column), row);
    gtk_box_append(GTK_BOX(column), makeButtons(content.buttons));
    gtk_window_set_child(window(), column);

    connectKeys(content.escapeCode);
    connections_.push_back(connect<gboolean()>(window(), "close-request", [this]() -> gboolean {
        answered_(kModalAborted);
        return TRUE;
    }));
    // Some window managers place dialogs by other rules.
    connections_.push_back(connect<void()>(window(), "map", [this] { centre(window()); }));
    gtk_window_set_default_widget(window(), defaultButton_);
    gtk_window_set_focus(window(), field_ != nullptr ? field_ : defaultButton_);
    gtk_window_present(window());
}

AlertBox::~AlertBox() {
    connections_.clear();
    gtk_window_destroy(window());
}

GtkWidget* AlertBox::makeTexts(const AlertContent& content) {
    GtkWidget* texts = gtk_box_new(GTK_ORIENTATION_VERTICAL, kGap);
    gtk_widget_set_size_request(texts, kLeastTextWidth, -1);
    gtk_widget_set_hexpand(texts, TRUE);

    GtkWidget* message = makeLabel(content.messageText);
    const std::unique_ptr<PangoAttrList, void (*)(PangoAttrList*)> bold(pango_attr_list_new(), pango_attr_list_unref);
    pango_attr_list_insert(bold.get(), pango_attr_weight_new(PANGO_WEIGHT_BOLD));
    gtk_label_set_attributes(GTK_LABEL(message), bold.get());
    gtk_box_append(GTK_BOX(texts), message);

    if (!content.informativeText.empty()) {
        gtk_box_append(GTK_BOX(texts), makeInformativeText(content.informativeText));
    }
    if (content.accessory != nullptr) {
        if (GtkWidget* field = accessoryWidget(*content.accessory))
            gtk_box_append(GTK_BOX(texts), field);
        gtk_accessible_update_property(GTK_ACCESSIBLE(field_), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                       alertText(content.informativeText).c_str(), -1);
    }
    return texts;
}

GtkWidget* AlertBox::accessoryWidget(TextField& field) {
    ViewCore* core = coreOf(field);
    if (core == nullptr)
        return nullptr;
    core->requireFrameSize();
    field_ = core->content();
    if (GTK_IS_ENTRY(field_))
        gtk_entry_set_activates_default(GTK_ENTRY(field_), TRUE);
    gtk_widget_set_halign(core->widget(), GTK_ALIGN_START);
    return core->widget();
}

GtkWidget* AlertBox::makeButtons(const std::vector<std::string>& titles) {
    GtkWidget* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, kGap);
    gtk_box_set_homogeneous(GTK_BOX(row), TRUE);
    gtk_widget_set_halign(row, GTK_ALIGN_END);
    long code = kAlertFirstButtonReturn;
    for (const std::string& title : titles) {
        GtkWidget* button = gtk_button_new_with_label(alertText(title).c_str());
        gtk_widget_set_size_request(button, 80, -1);
        connections_.push_back(connect<void()>(button, "clicked", [this, code] { answered_(code); }));
        // The first button stands at the end of the row, the next ones before it.
        gtk_box_prepend(GTK_BOX(row), button);
        if (code == kAlertFirstButtonReturn) {
            defaultButton_ = button;
            gtk_widget_add_css_class(button, "suggested-action");
        }
        ++code;
    }
    return row;
}

void AlertBox::connectKeys(long escapeCode) {
    GtkEventController* keys = gtk_event_controller_key_new();
    connections_.push_back(connect<gboolean(guint, guint, GdkModifierType)>(
        keys, "key-pressed", [this, escapeCode](guint key, guint, GdkModifierType modifiers) -> gboolean {
            if (key != GDK_KEY_Escape || (modifiers & gtk_accelerator_get_default_mod_mask()) != 0)
                return FALSE;
            answered_(escapeCode);
            return TRUE;
        }));
    gtk_widget_add_controller(window_.get(), keys);
}

} // namespace vantorel::gtk
