// Vantorel. MIT licence, see LICENSE.
// What GTK draws with: without a graphics processor, drawing by the processor directly costs a fraction of emulated GL.
#pragma once

#include <string>

#include "platform/foundation.h"

namespace vantorel::gtk {

/// Variables to set before GTK starts, for a machine with or without a graphics processor. Values that the user has set
/// in `inherited` are kept.
Environment graphicsVariables(const Environment& inherited, bool hasGraphicsProcessor);

/// Whether the machine has a device that GL can be accelerated with. Looks at the device files, starts nothing.
bool hasGraphicsProcessor(const std::string& devices = "/dev");

} // namespace vantorel::gtk
