// Vantorel. MIT licence, see LICENSE.
// The seam to CoreGraphics: permission to capture the screen.
#pragma once

namespace vantorel {

class ScreenCaptureAccess {
public:
    virtual ~ScreenCaptureAccess() = default;

    /// Whether the application may capture the screen; asks nobody. True where the system has no such grant.
    virtual bool preflight() = 0;
    /// Asks the system for the grant, which may show its own prompt. Returns at once.
    virtual void request() = 0;
};

} // namespace vantorel
