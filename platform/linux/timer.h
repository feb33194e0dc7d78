// Vantorel. MIT licence, see LICENSE.
// Repeating timers of the main loop.
#pragma once

#include <functional>
#include <memory>

#include "platform/foundation.h"

namespace vantorel::gtk {

/// Calls `block` on the main thread every `seconds` (a millisecond at least), the first time after `seconds`. Firings
/// keep to the grid of the first one: a late firing delays none of the next, and those that were missed are left out.
std::shared_ptr<Timer> scheduleRepeatingTimer(double seconds, std::function<void()> block);

} // namespace vantorel::gtk
