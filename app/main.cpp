// Vantorel. MIT licence, see LICENSE.
// The entry point: one application object, one controller, one event loop.
#include <cstdlib>

#include "app/app_delegate.h"
#include "app/log.h"
#include "app/require.h"

int main() {
    // At exit, for where the platform ends the process by itself run does not return.
    std::atexit([] {
        constexpr double kLastLinesSeconds = 1.0;
        vantorel::flushLog(kLastLinesSeconds);
    });

    // Never destroyed: threads that wait for the server's end or for its output may use it while the process ends.
    static vantorel::Platform* const platform = vantorel::makeNativePlatform().release();
    vantorel::Application& app = vantorel::require(platform->application(), "application");
    const auto delegate = std::make_shared<vantorel::AppDelegate>(*platform);
    app.setDelegate(delegate);
    return app.run();
}
