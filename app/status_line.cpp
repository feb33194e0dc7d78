// Vantorel. MIT licence, see LICENSE.
// The status strip at the top of the window, and the two ways to report: its text, and an error alert.
#include "app/app_delegate.h"
#include "app/require.h"
#include "app/status_strip.h"
#include "app/weakly.h"

namespace vantorel {

namespace {

constexpr CalibratedRgb kStripColor{0.95, 0.95, 0.95, 1.0};
constexpr double kStatusFontPoints = 11;

Rect stripFrame(Rect content) {
    return {{0, content.size.height - kStatusStripHeight}, {content.size.width, kStatusStripHeight}};
}

Rect labelFrame(Rect strip) { return {{10, 5}, {strip.size.width - 20, 20}}; }

} // namespace

void AppDelegate::createStatusBar() {
    const Rect content = require(require(window(), "window").contentView(), "content view").bounds();
    setStatusBar(platform().makeView(stripFrame(content)));
    View& strip = require(statusBar(), "statusBar");
    strip.setAutoresizingMask(Autoresizing::widthSizable | Autoresizing::minYMargin);
    strip.setWantsLayer(true);
    if (Layer* const layer = strip.layer())
        layer->setBackgroundColor(kStripColor);

    setStatusLabel(platform().makeTextField(labelFrame(strip.bounds())));
    TextField& label = require(statusLabel(), "statusLabel");
    label.setAutoresizingMask(static_cast<unsigned>(Autoresizing::widthSizable));
    label.setEditable(false);
    label.setBordered(false);
    label.setBackgroundColor(SystemColor::clear);
    label.setSystemFont(kStatusFontPoints);
    label.setStringValue("🔄 Starting server...");

    strip.addSubview(statusLabel());
    if (const auto contentView = require(window(), "window").contentView())
        contentView->addSubview(statusBar());
}

void AppDelegate::updateStatus(const std::string& text, const Color& color) {
    platform().mainQueue().async(weakly(weak_from_this(), [text, color](AppDelegate& self) {
        require(self.statusLabel(), "statusLabel").setStringValue(text);
        require(self.statusLabel(), "statusLabel").setTextColor(color);
    }));
}

void AppDelegate::showError(const std::string& title, const std::string& message) {
    platform().mainQueue().async([&platform = platform(), title, message] {
        const std::shared_ptr<Alert> alert = platform.makeAlert();
        alert->setMessageText(title);
        alert->setInformativeText(message);
        alert->setAlertStyle(AlertStyle::critical);
        alert->addButtonWithTitle("OK");
        alert->runModal();
    });
}

} // namespace vantorel
