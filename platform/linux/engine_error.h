// Vantorel. MIT licence, see LICENSE.
// Errors of GLib, libsoup and the web engine in the words of the seam.
#pragma once

#include <glib.h>

#include <string>

#include "platform/platform_error.h"

namespace vantorel::gtk {

/// The seam's error for `error`; the printed form names domain and code.
PlatformError platformError(const GError& error);

/// An error of the backend's own, `text` for people and for the log.
PlatformError platformError(const std::string& text);

/// A request got no answer in time.
PlatformError timedOutError();

/// A load gave way to another one.
PlatformError cancelledError();

/// An address with a port that the engine talks to nobody on.
PlatformError refusedError();

/// The server closed the connection before the end of its answer.
PlatformError connectionLostError();

/// The process that the page lived in is gone.
PlatformError pageProcessGoneError();

} // namespace vantorel::gtk
