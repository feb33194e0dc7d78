// Vantorel. MIT licence, see LICENSE.
// Whether a page that the engine calls loaded came over whole.
#pragma once

#include <webkit/webkit.h>

#include <functional>

namespace vantorel::gtk {

/// Calls `next`, at once or later on the main thread, with false when the page of `view` is shorter than its server
/// said. libsoup 3.2 takes the end of a connection for the end of the page when the server had announced to close it,
/// whatever length was announced, and so does the engine.
void checkWhole(WebKitWebView* view, std::function<void(bool whole)> next);

} // namespace vantorel::gtk
