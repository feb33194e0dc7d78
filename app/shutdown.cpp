// Vantorel. MIT licence, see LICENSE.
// The end of the application: it asks the server to stop, and does not wait for it.
#include "app/app_delegate.h"
#include "app/log.h"
#include "app/preference_keys.h"
#include "app/require.h"

namespace vantorel {

void AppDelegate::applicationWillTerminate() {
    const Rect frame = require(window(), "window").frame();
    platform().userDefaults().setString(platform().stringFromRect(frame), kWindowFrameKey);

    if (connectionCheckTimer())
        connectionCheckTimer()->invalidate();

    if (serverProcess() && serverProcess()->isRunning()) {
        logLine("🛑 Stopping Go server...");
        serverProcess()->terminate();
        platform().globalQueue().async([process = serverProcess()] {
            process->waitUntilExit();
            logLine("✅ Go server stopped");
        });
    }
}

} // namespace vantorel
