// Vantorel. MIT licence, see LICENSE.
// The system's privacy grants: screen capture, microphone, accessibility.
#pragma once

#include <memory>

#include "platform/application_services.h"
#include "platform/av_foundation.h"
#include "platform/core_graphics.h"

namespace vantorel::mac {

std::unique_ptr<ScreenCaptureAccess> makeScreenCaptureAccess();
std::unique_ptr<AudioCaptureAccess> makeAudioCaptureAccess();
std::unique_ptr<Accessibility> makeAccessibility();

}  // namespace vantorel::mac
