// Vantorel. MIT licence, see LICENSE.
// The application's own environment.
#pragma once

#include <memory>

#include "platform/foundation.h"

namespace vantorel::gtk {

/// The environment of the process at this moment. Of variables that are there twice the first one counts. Call on the
/// main thread, while no other thread changes the environment.
Environment currentEnvironment();

/// Hands out `snapshot`: the environment that the user gave, without what the toolkit's start-up put into it. Take it
/// first thing in the process.
std::unique_ptr<ProcessInfo> makeProcessInfo(Environment snapshot);

/// The same with the environment as it is at the call.
std::unique_ptr<ProcessInfo> makeProcessInfo();

} // namespace vantorel::gtk
