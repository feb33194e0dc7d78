// Vantorel. MIT licence, see LICENSE.
// Alerts: a modal window with texts, a field and buttons, and a main loop of its own while it is up.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/appkit.h"
#include "platform/linux/text_field.h"

namespace vantorel::gtk {

class GtkApp;

/// `text` as an alert can lay it out at once: valid UTF-8, with a mark at the end where it was cut.
std::string alertText(const std::string& text);

/// What Escape answers in an alert with these buttons: the code of the one titled "Cancel"; of the only one; else
/// kModalAborted.
long escapeCode(const std::vector<std::string>& buttons);

class GtkAlert : public Alert {
public:
    /// `app` must outlive the alert.
    explicit GtkAlert(GtkApp& app) : app_(app) {}

    void setMessageText(const std::string& text) override;
    void setInformativeText(const std::string& text) override;
    void setAlertStyle(AlertStyle style) override;
    void addButtonWithTitle(const std::string& title) override;
    void setAccessoryView(std::shared_ptr<TextField> field) override;
    long runModal() override;

private:
    GtkApp& app_;
    std::string messageText_;
    std::string informativeText_;
    AlertStyle style_ = AlertStyle::warning;
    std::vector<std::string> buttons_;
    std::shared_ptr<TextField> accessory_;
};

std::shared_ptr<Alert> makeAlert(GtkApp& app);

} // namespace vantorel::gtk
