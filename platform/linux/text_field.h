// Vantorel. MIT licence, see LICENSE.
// A single line of text: a label that gives way to the window's width, or an entry while it is editable.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/linux/view.h"

namespace vantorel::gtk {

class GtkTextField : public ViewOf<TextField> {
public:
    explicit GtkTextField(Rect frame);

    void setEditable(bool editable) override;
    void setBordered(bool bordered) override;
    void setBackgroundColor(const Color& color) override;
    void setSystemFont(double points) override;
    void setStringValue(const std::string& text) override;
    std::string stringValue() const override;
    void setTextColor(const Color& color) override;

    /// The entry or label itself. Belongs to the field; setEditable makes a new one.
    GtkWidget* control() const { return core().content(); }

private:
    void makeControl();
    void applyStyle();

    bool editable_ = true;
    bool bordered_ = true;
    std::optional<double> points_;
    std::optional<Color> background_;
    std::optional<Color> textColor_;
    Style style_;
};

std::shared_ptr<TextField> makeTextField(Rect frame);

/// A buffer for entries without GtkEntry's limit of 65534 bytes.
Object<GtkEntryBuffer> makeUnlimitedBuffer();

} // namespace vantorel::gtk
