// Vantorel. MIT licence, see LICENSE.
// The main queue on the default main context, and the global queue on threads of its own.
#pragma once

#include "platform/dispatch.h"

namespace vantorel::gtk {

/// Blocks run in the main loop, nested loops of modal alerts included, with the priority of ordinary events.
Queue& mainQueue();

/// Blocks run on detached threads that never hold up the end of the process.
Queue& globalQueue();

} // namespace vantorel::gtk
