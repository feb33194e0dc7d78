// Vantorel. MIT licence, see LICENSE.
// What is true on this system of the grants that the application asks for.

#include "platform/linux/grants.h"

#include <utility>

#include "platform/linux/key_session.h"
#include "platform/linux/queue.h"

namespace vantorel::gtk {

namespace {

class OpenScreenCapture : public ScreenCaptureAccess {
public:
    bool preflight() override { return true; }
    void request() override {}
};

class OpenAudioCapture : public AudioCaptureAccess {
public:
    AuthorizationStatus authorizationStatus() override { return AuthorizationStatus::authorized; }
    void requestAccess(std::function<void(bool granted)> completion) override {
        mainQueue().async([completion = std::move(completion)] { completion(true); });
    }
};

class SessionAccessibility : public Accessibility {
public:
    bool isProcessTrusted() override { return keyReach() == KeyReach::everyProgram; }
    // There is nobody to ask: what can be watched depends on the kind of session.
    bool isProcessTrustedWithOptions(bool /*prompt*/) override { return isProcessTrusted(); }
};

} // namespace

std::unique_ptr<ScreenCaptureAccess> makeScreenCaptureAccess() { return std::make_unique<OpenScreenCapture>(); }

std::unique_ptr<AudioCaptureAccess> makeAudioCaptureAccess() { return std::make_unique<OpenAudioCapture>(); }

std::unique_ptr<Accessibility> makeAccessibility() { return std::make_unique<SessionAccessibility>(); }

} // namespace vantorel::gtk
