// Vantorel. MIT licence, see LICENSE.
// Application-modal message boxes over NSAlert.
#import "platform/macos/alert.h"

#import "platform/macos/view.h"

namespace vantorel::mac {

namespace {

class MacAlert : public Alert {
public:
    void setMessageText(const std::string& text) override { alert_.messageText = toNSString(text); }
    void setInformativeText(const std::string& text) override { alert_.informativeText = toNSString(text); }
    void setAlertStyle(AlertStyle style) override { alert_.alertStyle = static_cast<NSAlertStyle>(style); }
    void addButtonWithTitle(const std::string& title) override { [alert_ addButtonWithTitle:toNSString(title)]; }
    void setAccessoryView(std::shared_ptr<TextField> field) override {
        field_ = std::move(field);
        NSView* const view = nsViewOf(field_.get());
        alert_.accessoryView = view;
        // Without this the first button has the keyboard and the user has to click into the field.
        alert_.window.initialFirstResponder = view;
    }
    long runModal() override { return static_cast<long>([alert_ runModal]); }

private:
    NSAlert* alert_ = [[NSAlert alloc] init];
    std::shared_ptr<TextField> field_;
};

}  // namespace

std::shared_ptr<Alert> makeAlert() {
    return std::make_shared<MacAlert>();
}

}  // namespace vantorel::mac
