// Vantorel. MIT licence, see LICENSE.
// What is true on this system of the grants that the application asks for.
#pragma once

#include <memory>

#include "platform/application_services.h"
#include "platform/av_foundation.h"
#include "platform/core_graphics.h"

namespace vantorel::gtk {

/// Always allowed: the desktop has no such grant for programs of the user's own session.
std::unique_ptr<ScreenCaptureAccess> makeScreenCaptureAccess();

/// Always authorized, for the same reason.
std::unique_ptr<AudioCaptureAccess> makeAudioCaptureAccess();

/// Trusted when key presses of every program of the session can be watched.
std::unique_ptr<Accessibility> makeAccessibility();

} // namespace vantorel::gtk
