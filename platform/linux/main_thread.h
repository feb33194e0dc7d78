// Vantorel. MIT licence, see LICENSE.
// The main-thread rule of the seam, checked in debug builds.
#pragma once

#include <cassert>
#include <unistd.h>

namespace vantorel::gtk {

/// Whether the caller is the process's first thread, the one that runs GTK.
inline bool onMainThread() { return ::gettid() == ::getpid(); }

/// Ends a debug build that calls from another thread; nothing in a release build.
inline void assertMainThread() { assert(onMainThread() && "this object of the platform is for the main thread"); }

} // namespace vantorel::gtk
