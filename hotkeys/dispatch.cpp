// Vantorel. MIT licence, see LICENSE.
// From a hotkey's name to the page, which passes it on over the socket that it keeps open to the server.
#include "app/app_delegate.h"
#include "app/log.h"
#include "app/require.h"
#include "hotkeys/hotkey_script.h"

namespace vantorel {

std::string hotkeyScript(std::string_view name) {
    std::string script = "if (window.ws && window.ws.readyState === WebSocket.OPEN) {\n"
                         "    window.ws.send(JSON.stringify({\n"
                         "        type: 'trigger_hotkey',\n"
                         "        hotkey: '";
    script.append(name);
    script += "'\n"
              "    }));\n"
              "    console.log('✅ Hotkey sent: ";
    script.append(name);
    script += "');\n"
              "} else {\n"
              "    console.error('❌ WebSocket not connected');\n"
              "}";
    return script;
}

void AppDelegate::triggerHotkey(const std::string& name) {
    logLine("📤 Triggering hotkey via WebSocket: " + name);
    require(webView(), "webView")
        .evaluateJavaScript(hotkeyScript(name), [name](const std::optional<PlatformError>& error) {
            if (error) {
                logLine("❌ Error triggering hotkey: " + error->localizedDescription);
            } else {
                // Says that the script ran; whether the socket was open is on the page's console.
                logLine("✅ Hotkey " + name + " sent successfully");
            }
        });
}

} // namespace vantorel
