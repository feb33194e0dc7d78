// Vantorel. MIT licence, see LICENSE.
// The About panel.
#include "app/app_delegate.h"
#include "ui/about_text.h"

namespace vantorel {

std::string aboutText(std::int64_t port) {
    return "Unified macOS Application with Go Server\n"
           "\n"
           "Version 2.0\n"
           "\n"
           "Features:\n"
           "• Integrated Go backend server\n"
           "• Always-on-Top mode (Cmd+T)\n"
           "• Hide in Screenshots (Cmd+H)\n"
           "• Zoom controls (Cmd+0, Cmd++, Cmd+-)\n"
           "• Auto-save window position and size\n"
           "• Real-time connection status\n"
           "\n"
           "Server Port: " +
           std::to_string(port);
}

void AppDelegate::showAbout() {
    const std::shared_ptr<Alert> alert = platform().makeAlert();
    alert->setMessageText("Vantor");
    alert->setInformativeText(aboutText(websocketPort()));
    alert->setAlertStyle(AlertStyle::informational);
    alert->addButtonWithTitle("OK");
    alert->runModal();
}

} // namespace vantorel
