// Vantorel. MIT licence, see LICENSE.
// Repeating timers over NSTimer.
#pragma once

#include <functional>
#include <memory>

#include "platform/foundation.h"

namespace vantorel::mac {

std::shared_ptr<Timer> scheduleRepeatingTimer(double seconds, std::function<void()> block);

}  // namespace vantorel::mac
