// Vantorel. MIT licence, see LICENSE.
// Installing the two key monitors: one for key presses in other applications, one for those in the shell's own windows.
#include "app/app_delegate.h"
#include "app/log.h"
#include "app/weakly.h"
#include "hotkeys/hotkey_table.h"
#include "hotkeys/key_handler.h"

namespace vantorel {

namespace {

/// Trust decides whether the system delivers other applications' keys; the monitors are registered in any case.
void logTrust(bool trusted) {
    if (trusted) {
        logLine("✅ Accessibility permissions granted");
        return;
    }
    logLine("⚠️ WARNING: Accessibility permissions NOT granted!");
    logLine("⚠️ Global hotkeys will NOT work until you grant permissions");
    logLine("⚠️ Go to: System Settings → Privacy & Security → Accessibility");
    logLine("⚠️ Add Vantorel.app and enable it");
}

// The platform keeps monitors installed for the life of the process, so their handles are only looked at.

void installGlobalMonitor(EventMonitors& monitors, const KeyHandler& handler) {
    logLine("🔧 Registering global event monitor...");
    const auto monitor = monitors.addGlobalMonitorForKeyDown([handler](const KeyEvent& event) {
        logLine("🌍 Global event (outside app): keyCode=" + std::to_string(event.keyCode));
        handler(event);
    });
    logLine(monitor ? "✅ Global event monitor registered successfully" : "❌ Failed to register global event monitor!");
}

void installLocalMonitor(EventMonitors& monitors, const KeyHandler& handler) {
    logLine("🔧 Registering local event monitor...");
    const auto monitor = monitors.addLocalMonitorForKeyDown([handler](const KeyEvent& event) {
        logLine("🏠 Local event (inside app): keyCode=" + std::to_string(event.keyCode));
        handler(event);
        // Never swallowed: a hotkey goes on into the window like any other key.
        return &event;
    });
    logLine(monitor ? "✅ Local event monitor registered successfully" : "❌ Failed to register local event monitor!");
}

void logTable(const HotkeyTable& table) {
    logLine("📋 Registered keyCodes: " + keyCodeList(table));
    logLine("📋 Hotkey mappings:");
    for (const auto& [keyCode, name] : table)
        logLine("   " + std::to_string(keyCode) + " -> " + name);
}

} // namespace

void AppDelegate::setupGlobalHotkeys() {
    logLine("⌨️ Setting up global hotkeys...");
    logTrust(platform().accessibility().isProcessTrusted());

    const HotkeyTable table = hotkeyTable();
    const KeyHandler handler(
        table, weakly(weak_from_this(), [](AppDelegate& self, const std::string& name) { self.triggerHotkey(name); }));
    installGlobalMonitor(platform().eventMonitors(), handler);
    installLocalMonitor(platform().eventMonitors(), handler);
    logLine("✅ Global and local hotkeys registered (Shift + Ctrl + Option + Cmd + key)");
    logTable(table);
}

} // namespace vantorel
