// Vantorel. MIT licence, see LICENSE.
// Privacy grants of the fake: what the system would answer, and what it was asked.
#pragma once

#include <functional>
#include <vector>

#include "platform/application_services.h"
#include "platform/av_foundation.h"
#include "platform/core_graphics.h"
#include "tests/unit/fake/record.h"

namespace vantorel::fake {

class FakeScreenCaptureAccess final : public ScreenCaptureAccess {
public:
    explicit FakeScreenCaptureAccess(Record& record) : record_(record) {}

    bool preflight() override;
    void request() override;
    bool allowed = false;

private:
    Record& record_;
};

class FakeAudioCaptureAccess final : public AudioCaptureAccess {
public:
    explicit FakeAudioCaptureAccess(Record& record) : record_(record) {}

    AuthorizationStatus authorizationStatus() override;
    void requestAccess(std::function<void(bool granted)> completion) override;

    AuthorizationStatus status = AuthorizationStatus::notDetermined;
    std::size_t requestCount() const { return completions_.size(); }
    /// The user answers the request at `index`: its completion is called on a thread of its own.
    void answer(bool granted, std::size_t index = 0);
    /// Lets the completions go, as the end of the platform does.
    void forget() { completions_.clear(); }

private:
    Record& record_;
    std::vector<std::function<void(bool)>> completions_;
};

class FakeAccessibility final : public Accessibility {
public:
    explicit FakeAccessibility(Record& record) : record_(record) {}

    bool isProcessTrusted() override;
    bool isProcessTrustedWithOptions(bool prompt) override;
    bool trusted = false;

private:
    Record& record_;
};

} // namespace vantorel::fake
