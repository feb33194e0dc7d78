// Vantorel. MIT licence, see LICENSE.
// Privacy grants of the fake.
#include "tests/unit/fake/fake_grants.h"

#include <string>
#include <utility>

#include "tests/unit/fake/describe.h"

namespace vantorel::fake {

bool FakeScreenCaptureAccess::preflight() {
    record_.addOnMain("screenCaptureAccess.preflight()");
    return allowed;
}

void FakeScreenCaptureAccess::request() { record_.addOnMain("screenCaptureAccess.request()"); }

AuthorizationStatus FakeAudioCaptureAccess::authorizationStatus() {
    record_.addOnMain("audioCaptureAccess.authorizationStatus()");
    return status;
}

void FakeAudioCaptureAccess::requestAccess(std::function<void(bool granted)> completion) {
    record_.addOnMain("audioCaptureAccess.requestAccess()");
    completions_.push_back(std::move(completion));
}

void FakeAudioCaptureAccess::answer(bool granted, std::size_t index) {
    const auto completion = completions_.at(index);
    onBackgroundThread([&completion, granted] { completion(granted); });
    completions_.at(index) = [](bool) {};
}

bool FakeAccessibility::isProcessTrusted() {
    record_.addOnMain("accessibility.isProcessTrusted()");
    return trusted;
}

bool FakeAccessibility::isProcessTrustedWithOptions(bool prompt) {
    record_.addOnMain("accessibility.isProcessTrustedWithOptions(" + shown(prompt) + ")");
    return trusted;
}

} // namespace vantorel::fake
