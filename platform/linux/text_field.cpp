// Vantorel. MIT licence, see LICENSE.
// Text fields: the label's and the entry's looks.
#include "platform/linux/text_field.h"

#include <array>

#include "platform/linux/main_thread.h"

namespace vantorel::gtk {
namespace {

constexpr int kTextMargin = 6;

/// GTK takes C strings of valid UTF-8 only.
std::string showable(const std::string& text) {
    return GText(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()))).get();
}

GtkWidget* makeLabel() {
    // The role "status" makes screen readers announce a change of the text without moving there.
    GtkWidget* label = GTK_WIDGET(g_object_new(GTK_TYPE_LABEL, "accessible-role", GTK_ACCESSIBLE_ROLE_STATUS, nullptr));
    gtk_label_set_single_line_mode(GTK_LABEL(label), TRUE);
    gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_END);
    gtk_label_set_xalign(GTK_LABEL(label), 0);
    return label;
}

GtkWidget* makeEntry() {
    GtkWidget* entry = gtk_entry_new_with_buffer(makeUnlimitedBuffer().get());
    // The natural width comes from the frame, not from a number of characters.
    gtk_editable_set_width_chars(GTK_EDITABLE(entry), 1);
    GtkWidget* text = GTK_WIDGET(gtk_editable_get_delegate(GTK_EDITABLE(entry)));
    gtk_widget_set_margin_start(text, kTextMargin);
    gtk_widget_set_margin_end(text, kTextMargin);
    return entry;
}

} // namespace

GtkTextField::GtkTextField(Rect frame) : ViewOf(frame) {
    // Text that the user made larger than the frame grows as far as the parent's edge.
    gtk_widget_set_overflow(core().widget(), GTK_OVERFLOW_VISIBLE);
    makeControl();
}

void GtkTextField::makeControl() {
    core().setContent(editable_ ? makeEntry() : makeLabel());
    applyStyle();
}

void GtkTextField::setEditable(bool editable) {
    assertMainThread();
    if (editable == editable_)
        return;
    const std::string text = stringValue();
    editable_ = editable;
    makeControl();
    setStringValue(text);
}

void GtkTextField::setBordered(bool bordered) {
    assertMainThread();
    bordered_ = bordered;
    applyStyle();
}

void GtkTextField::setBackgroundColor(const Color& color) {
    assertMainThread();
    background_ = color;
    applyStyle();
}

void GtkTextField::setSystemFont(double points) {
    assertMainThread();
    points_ = points;
    applyStyle();
}

void GtkTextField::setTextColor(const Color& color) {
    assertMainThread();
    if (textColor_ == color)
        return;
    textColor_ = color;
    applyStyle();
}

void GtkTextField::applyStyle() {
    std::string declarations;
    // An entry fills its frame, whatever height the theme would like. Its edge is drawn inside, because screen readers
    // are told the size without border and padding.
    if (editable_)
        declarations += "min-height: 0; padding: 0; border: none;";
    if (editable_ && bordered_)
        declarations += "box-shadow: inset 0 0 0 1px alpha(currentColor, 0.3);";
    if (!bordered_)
        declarations += "border: none; box-shadow: none; outline: none;";
    if (background_)
        declarations += "background: " + cssColor(rgbaOf(*background_)) + ";";
    if (textColor_)
        declarations += "color: " + cssColor(rgbaOf(*textColor_)) + ";";
    if (points_) {
        std::array<char, G_ASCII_DTOSTR_BUF_SIZE> number{};
        declarations += std::string("font-size: ") +
                        g_ascii_formatd(number.data(), static_cast<int>(number.size()), "%.2f", *points_) + "pt;";
    }
    style_.set(control(), declarations);
}

void GtkTextField::setStringValue(const std::string& text) {
    assertMainThread();
    if (editable_) {
        gtk_editable_set_text(GTK_EDITABLE(control()), showable(text).c_str());
    } else {
        gtk_label_set_text(GTK_LABEL(control()), showable(text).c_str());
    }
}

std::string GtkTextField::stringValue() const {
    assertMainThread();
    return editable_ ? gtk_editable_get_text(GTK_EDITABLE(control())) : gtk_label_get_text(GTK_LABEL(control()));
}

std::shared_ptr<TextField> makeTextField(Rect frame) { return std::make_shared<GtkTextField>(frame); }

} // namespace vantorel::gtk
