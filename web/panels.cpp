// Vantorel. MIT licence, see LICENSE.
// What the page asks of the user: native panels for alert, confirm and prompt; new windows go to the user's browser.
#include "app/app_delegate.h"
#include "app/log.h"

namespace vantorel {

namespace {

constexpr Rect kPromptFieldFrame{{0, 0}, {300, 24}};

std::shared_ptr<Alert> makePanel(Platform& platform, const std::string& text) {
    std::shared_ptr<Alert> panel = platform.makeAlert();
    panel->setMessageText("Vantor");
    panel->setInformativeText(text);
    return panel;
}

/// "OK" comes first, so that Return answers it; "Cancel" answers to Escape.
void addOkAndCancel(Alert& panel) {
    panel.addButtonWithTitle("OK");
    panel.addButtonWithTitle("Cancel");
}

} // namespace

std::shared_ptr<WebView> AppDelegate::createWebView(WebView& /*view*/, const std::optional<std::string>& address) {
    if (address) {
        logLine("🌐 Opening URL in browser: " + *address);
        platform().workspace().openUrl(*address);
    }
    return nullptr;
}

void AppDelegate::runAlertPanel(WebView& /*view*/, const std::string& message, std::function<void()> completion) {
    const std::shared_ptr<Alert> panel = makePanel(platform(), message);
    panel->setAlertStyle(AlertStyle::informational);
    panel->addButtonWithTitle("OK");
    panel->runModal();
    completion();
}

void AppDelegate::runConfirmPanel(WebView& /*view*/, const std::string& message, std::function<void(bool)> completion) {
    const std::shared_ptr<Alert> panel = makePanel(platform(), message);
    panel->setAlertStyle(AlertStyle::warning);
    addOkAndCancel(*panel);
    completion(panel->runModal() == kAlertFirstButtonReturn);
}

void AppDelegate::runTextInputPanel(WebView& /*view*/, const std::string& prompt,
                                    const std::optional<std::string>& defaultText,
                                    std::function<void(std::optional<std::string>)> completion) {
    const std::shared_ptr<Alert> panel = makePanel(platform(), prompt);
    addOkAndCancel(*panel);
    const std::shared_ptr<TextField> field = platform().makeTextField(kPromptFieldFrame);
    field->setStringValue(defaultText.value_or(""));
    panel->setAccessoryView(field);
    if (panel->runModal() == kAlertFirstButtonReturn) {
        completion(field->stringValue());
    } else {
        completion(std::nullopt);
    }
}

} // namespace vantorel
