// Vantorel. MIT licence, see LICENSE.
// Whether the server answers: one HTTP probe for each tick of the connection timer, its outcome on the status strip.
#include "app/app_delegate.h"
#include "app/weakly.h"

namespace vantorel {

namespace {

constexpr double kProbeTimeoutSeconds = 1.0;
constexpr int kHttpOk = 200;

bool isUp(const UrlResult& result) { return !result.error && result.statusCode == kHttpOk; }

void showProbeResult(AppDelegate& app, const UrlResult& result) {
    if (isUp(result)) {
        app.updateStatus("✅ Connected to server on port " + std::to_string(app.websocketPort()),
                         SystemColor::systemGreen);
    } else {
        app.updateStatus("⚠️ Server running but not responding...", SystemColor::orange);
    }
}

} // namespace

void AppDelegate::checkServerConnection() {
    if (!isServerRunning())
        return;
    UrlRequest request;
    request.address = "http://localhost:" + std::to_string(websocketPort());
    request.timeoutSeconds = kProbeTimeoutSeconds;

    Queue& mainQueue = platform().mainQueue();
    platform()
        .sharedUrlSession()
        .dataTask(request,
                  [&mainQueue, weak = weak_from_this()](const UrlResult& result) {
                      mainQueue.async(weakly(weak, [result](AppDelegate& self) { showProbeResult(self, result); }));
                  })
        ->resume();
}

} // namespace vantorel
