// Vantorel. MIT licence, see LICENSE.
// The system's permissions, asked for once per user: screen recording, microphone, accessibility.
//
// Answers change nothing but the log: a feature whose grant is missing simply does not work.
#include "app/app_delegate.h"
#include "app/log.h"
#include "app/preference_keys.h"

namespace vantorel {

void AppDelegate::requestPermissions() {
    if (platform().userDefaults().boolForKey(kHasRequestedPermissionsKey)) {
        logLine("✅ Permissions already requested in previous launch");
        return;
    }
    logLine("🔐 First launch - requesting system permissions...");

    ScreenCaptureAccess& screenCapture = platform().screenCaptureAccess();
    if (screenCapture.preflight()) {
        logLine("✅ Screen recording already authorized");
    } else {
        logLine("🖥️ Requesting screen recording access...");
        screenCapture.request();
    }
    requestMicrophonePermission();
    platform().userDefaults().setBool(true, kHasRequestedPermissionsKey);
}

void AppDelegate::requestMicrophonePermission() {
    const AuthorizationStatus status = platform().audioCaptureAccess().authorizationStatus();
    if (status != AuthorizationStatus::notDetermined) {
        // The check mark stands before a denial too; readers of the log rely on the line as it is.
        logLine(status == AuthorizationStatus::authorized ? "✅ Microphone status: authorized"
                                                          : "✅ Microphone status: denied/restricted");
        requestAccessibilityPermission();
        return;
    }
    logLine("🎤 Requesting microphone access...");
    // Held strongly: the accessibility step has to follow the user's answer.
    platform().audioCaptureAccess().requestAccess([self = shared_from_this()](bool granted) {
        self->platform().mainQueue().async([self, granted] {
            logLine(granted ? "✅ Microphone access granted" : "❌ Microphone access denied");
            self->requestAccessibilityPermission();
        });
    });
}

void AppDelegate::requestAccessibilityPermission() {
    const bool trusted = platform().accessibility().isProcessTrustedWithOptions(true);
    logLine(trusted ? "✅ Accessibility already authorized" : "🔑 Accessibility access requested (system prompt shown)");
}

} // namespace vantorel
