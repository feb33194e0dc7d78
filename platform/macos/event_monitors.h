// Vantorel. MIT licence, see LICENSE.
// Key presses of the system and of the application over NSEvent's monitors.
#pragma once

#include <memory>

#include "platform/appkit.h"

namespace vantorel::mac {

std::unique_ptr<EventMonitors> makeEventMonitors();

}  // namespace vantorel::mac
