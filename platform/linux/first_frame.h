// Vantorel. MIT licence, see LICENSE.
// When a new page has drawn for the first time.
#pragma once

#include <webkit/webkit.h>

#include <functional>

namespace vantorel::gtk {

/// Calls `next` once, later on the main thread: when the page in `view` has drawn a frame, or when it is known that
/// nobody will tell, as after another load or the death of its process. A hidden page draws when it is shown again.
void whenDrawn(WebKitWebView* view, std::function<void()> next);

} // namespace vantorel::gtk
